#pragma once
/// What nvcc leaves in an object for the runtime: images of its kernels for several architectures.

#include <string>

namespace tarn::soft {

/// The PTX text of a fat binary, of several the one for the newest architecture, or for the one that TARN_EMULATED_ARCH
/// names (such as 90) in the environment. Throws std::runtime_error if there is none.
std::string ptxOfFatBinary(const void* fatBinary);

} // namespace tarn::soft
