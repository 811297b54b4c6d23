#include <limits>

#include "cuda_call.h"
#include "host_memory.h"

using namespace tarn::soft;

namespace {

/// Columns of a pitched allocation start at multiples of this, in bytes.
constexpr std::size_t pitchUnit = 512;

cudaError_t allocate(Device& device, void** address, std::size_t bytes)
{
    *address = nullptr;
    if (bytes == 0)
        return cudaSuccess;
    *address = device.memory.allocate(bytes);
    return *address ? cudaSuccess : cudaErrorMemoryAllocation;
}

} // namespace

extern "C" {

cudaError_t cudaMalloc(void** devPtr, std::size_t size)
{
    return CudaCall("cudaMalloc", devPtr, size).onDevice([&](Device& device) {
        return devPtr ? allocate(device, devPtr, size) : cudaErrorInvalidValue;
    });
}

cudaError_t cudaMallocPitch(void** devPtr, std::size_t* pitch, std::size_t width, std::size_t height)
{
    return CudaCall("cudaMallocPitch", devPtr, pitch, width, height).onDevice([&](Device& device) {
        if (!devPtr || !pitch)
            return cudaErrorInvalidValue;
        if (width > std::numeric_limits<std::size_t>::max() - pitchUnit)
            return cudaErrorMemoryAllocation;
        const std::size_t padded = (width + pitchUnit - 1) / pitchUnit * pitchUnit;
        std::size_t bytes;
        if (__builtin_mul_overflow(padded, height, &bytes))
            return cudaErrorMemoryAllocation;
        const cudaError_t result = allocate(device, devPtr, bytes);
        if (result == cudaSuccess)
            *pitch = padded;
        return result;
    });
}

cudaError_t cudaFree(void* devPtr)
{
    return CudaCall("cudaFree", devPtr).onDevice([&](Device&) {
        if (!devPtr)
            return cudaSuccess;
        Device* owner = machine().owner(devPtr);
        if (!owner || !owner->memory.holds(devPtr, 0))
            return cudaErrorInvalidValue;
        const cudaError_t failure = owner->queue.waitAll();
        return owner->memory.release(devPtr) ? failure : cudaErrorInvalidValue;
    });
}

cudaError_t cudaMallocHost(void** ptr, std::size_t size)
{
    return CudaCall("cudaMallocHost", ptr, size).onDevice([&](Device&) {
        if (!ptr)
            return cudaErrorInvalidValue;
        *ptr = nullptr;
        if (size == 0)
            return cudaSuccess;
        *ptr = allocatePageLocked(size);
        return *ptr ? cudaSuccess : cudaErrorMemoryAllocation;
    });
}

cudaError_t cudaFreeHost(void* ptr)
{
    return CudaCall("cudaFreeHost", ptr).onDevice([&](Device&) {
        if (!ptr)
            return cudaSuccess;
        // Queued copies may still read or write the block.
        machine().drain();
        return releasePageLocked(ptr) ? cudaSuccess : cudaErrorInvalidValue;
    });
}
}
