#pragma once
/// Failure of CUDA calls: the latch that each host thread has.

#include "cuda_runtime.h"

namespace tarn::soft {

/// Returns `code`; a failure is kept for the calling thread's next cudaGetLastError.
cudaError_t latch(cudaError_t code) noexcept;

/// Reads and clears the calling thread's latch.
cudaError_t takeLatched() noexcept;

} // namespace tarn::soft
