#include "error.h"

#include <utility>

namespace tarn::soft {

static thread_local cudaError_t latched = cudaSuccess;

cudaError_t latch(cudaError_t code) noexcept
{
    if (code != cudaSuccess)
        latched = code;
    return code;
}

cudaError_t takeLatched() noexcept { return std::exchange(latched, cudaSuccess); }

} // namespace tarn::soft
