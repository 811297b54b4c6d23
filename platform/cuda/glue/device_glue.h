// What the library needs of a provider beyond the calls of the CUDA runtime and cuBLAS. Here: the CUDA toolkit.
#pragma once

#include <cuda_runtime.h>

#include <cassert>
#include <mutex>

#ifdef CUDA_API_PER_THREAD_DEFAULT_STREAM
#    error "Copies are ordered against kernels by the legacy default stream: build without per-thread default streams"
#endif

namespace tarn::platform {

/// True if the device can copy between host and device while a kernel runs.
inline bool overlapsCopies(const cudaDeviceProp& properties)
{
#if CUDART_VERSION >= 13000
    return properties.asyncEngineCount != 0;
#else
    return properties.deviceOverlap != 0;
#endif
}

/// Whether the device computes on the cores that the host computes on.
inline constexpr bool sharesCores = false;

/// The turn of one calling thread to compute with all threads of the CPU BLAS.
class CpuTurn
{
public:
    CpuTurn() : lock_(turn()) {}

private:
    /// Never destroyed: routines may run while the process ends.
    static std::mutex& turn()
    {
        static auto& mutex = *new std::mutex;
        return mutex;
    }

    const std::lock_guard<std::mutex> lock_;
};

/// The place of one calling thread among those that work at a time: any number, since the device has cores of its own.
struct Seat
{};

#ifdef __CUDACC__
/// Queues Kernel, written for blocks of the shape Shape (a tarn::Block), on the default stream. A refused launch leaves
/// its code in the CUDA error state of the thread.
template <auto Kernel, class Shape, class... Args>
void launch(dim3 grid, [[maybe_unused]] dim3 block, Args... args)
{
    assert(block.x == Shape::x && block.y == Shape::y && block.z == 1);
    Kernel<<<grid, dim3(Shape::x, Shape::y)>>>(args...);
}
#endif

} // namespace tarn::platform
