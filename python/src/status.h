// Statuses of the library as exceptions of Python, and the library's start.
#pragma once

#include "tarn_lapack.h"

#include <cuda_runtime.h>

namespace tarn::python {

/// Brings the library up if it is not; raises RuntimeError where it cannot, as without a device.
void initialize();

/// 0, or the positive info of a tarnDataError. Raises for every other status: MemoryError, ValueError for an argument,
/// else RuntimeError, with the name of the routine.
int infoOf(tarnStatus status, const char* routine);

/// Raises MemoryError or RuntimeError for an error of the CUDA runtime.
void checkCuda(cudaError_t error);

} // namespace tarn::python
