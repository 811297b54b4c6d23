// Pictures of singular values: each over its index, on a logarithmic axis of whole decades.
#pragma once

#include "singular_values.h"

#include <string>

namespace tarn::tool {

/// An SVG picture, with noise() as a line. The axis reaches down to noise() and to the values that are above a
/// thousandth of it; those below stand as triangles at its foot, and their number is told.
std::string svgPlot(const Spectrum& spectrum, const std::string& title);

/// The same in text: `lines` values, evenly spread from the first to the last, each with a bar, or with a "<" if it is
/// below the axis.
std::string textPlot(const Spectrum& spectrum, int lines);

} // namespace tarn::tool
