#include "cuda_call.h"
#include "handles.h"

using namespace tarn::soft;

extern "C" {

cudaError_t cudaStreamCreate(cudaStream_t* stream)
{
    return CudaCall("cudaStreamCreate", stream).onDevice([&](Device& device) {
        if (!stream)
            return cudaErrorInvalidValue;
        *stream = streams().add({&device, 0});
        return cudaSuccess;
    });
}

cudaError_t cudaStreamDestroy(cudaStream_t stream)
{
    return CudaCall("cudaStreamDestroy", stream).run([&] {
        const auto gone = streams().remove(stream);
        if (!gone)
            return cudaErrorInvalidResourceHandle;
        gone->device->queue.releaseLate();
        return cudaSuccess;
    });
}

cudaError_t cudaStreamSynchronize(cudaStream_t stream)
{
    return CudaCall("cudaStreamSynchronize", stream).onDevice([&](Device& device) {
        if (!stream)
            return device.waitDefaultStream();
        const auto known = streams().find(stream);
        return known ? known->device->queue.settle(known->last) : cudaErrorInvalidResourceHandle;
    });
}
}
