#pragma once
/// What nvcc leaves in an object for the runtime: images of its kernels for several architectures.

#include <string>

namespace tarn::soft {

/// The PTX text of a fat binary. Throws std::runtime_error if there is none.
std::string ptxOfFatBinary(const void* fatBinary);

} // namespace tarn::soft
