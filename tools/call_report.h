// The report of the drop-in library: which routines programs called, and where the calls went.
#pragma once

#include <string>

namespace tarn::tool {

/// A table over all processes of a log that TARN_BLAS_LOG named, one line of JSON each; says so if there are none.
/// Raises Failure.
std::string callReport(const std::string& log);

} // namespace tarn::tool
