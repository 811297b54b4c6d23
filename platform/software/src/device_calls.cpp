#include <algorithm>
#include <iterator>
#include <utility>

#include "cuda_call.h"

using namespace tarn::soft;

extern "C" {

cudaError_t cudaRuntimeGetVersion(int* version)
{
    return CudaCall("cudaRuntimeGetVersion", version).run([&] {
        if (!version)
            return cudaErrorInvalidValue;
        *version = machine().versions.runtime;
        return cudaSuccess;
    });
}

cudaError_t cudaDriverGetVersion(int* version)
{
    return CudaCall("cudaDriverGetVersion", version).run([&] {
        if (!version)
            return cudaErrorInvalidValue;
        *version = machine().versions.driver;
        return cudaSuccess;
    });
}

cudaError_t cudaGetDeviceCount(int* count)
{
    return CudaCall("cudaGetDeviceCount", count).run([&] {
        if (!count)
            return cudaErrorInvalidValue;
        *count = machine().deviceCount();
        return machine().absence();
    });
}

cudaError_t cudaGetDeviceProperties(cudaDeviceProp* prop, int device)
{
    return CudaCall("cudaGetDeviceProperties", prop, device).run([&] {
        if (!prop)
            return cudaErrorInvalidValue;
        if (const cudaError_t absence = machine().absence())
            return absence;
        const Device* asked = machine().device(device);
        if (!asked)
            return cudaErrorInvalidDevice;
        *prop = asked->properties();
        return cudaSuccess;
    });
}

cudaError_t cudaGetDevice(int* device)
{
    return CudaCall("cudaGetDevice", device).run([&] {
        if (!device)
            return cudaErrorInvalidValue;
        if (const cudaError_t absence = machine().absence())
            return absence;
        *device = machine().currentIndex();
        return cudaSuccess;
    });
}

cudaError_t cudaSetDevice(int device)
{
    return CudaCall("cudaSetDevice", device).run([&] {
        if (const cudaError_t absence = machine().absence())
            return absence;
        if (device < 0 || device >= machine().deviceCount())
            return cudaErrorInvalidDevice;
        machine().setCurrent(device);
        return cudaSuccess;
    });
}

cudaError_t cudaDeviceSynchronize()
{
    return CudaCall("cudaDeviceSynchronize").onDevice([](Device& device) { return device.queue.waitAll(); });
}

cudaError_t cudaGetLastError()
{
    if (const int code = announceCall("cudaGetLastError"))
        return static_cast<cudaError_t>(code);
    const cudaError_t latched = takeLatched();
    const cudaError_t lasting = unloaded() ? cudaSuccess : machine().lastingError();
    return lasting == cudaSuccess ? latched : lasting;
}

const char* cudaGetErrorString(cudaError_t error)
{
    static const std::pair<cudaError_t, const char*> texts[] = {
        {cudaSuccess, "no error"},
        {cudaErrorInvalidValue, "invalid argument"},
        {cudaErrorMemoryAllocation, "out of memory"},
        {cudaErrorInitializationError, "initialization error"},
        {cudaErrorCudartUnloading, "driver shutting down"},
        {cudaErrorInvalidConfiguration, "invalid configuration argument"},
        {cudaErrorInvalidPitchValue, "invalid pitch argument"},
        {cudaErrorInvalidDevicePointer, "invalid device pointer"},
        {cudaErrorInvalidMemcpyDirection, "invalid copy direction for memcpy"},
        {cudaErrorInsufficientDriver, "CUDA driver version is insufficient for CUDA runtime version"},
        {cudaErrorNoDevice, "no CUDA-capable device is detected"},
        {cudaErrorInvalidDevice, "invalid device ordinal"},
        {cudaErrorInvalidResourceHandle, "invalid resource handle"},
        {cudaErrorIllegalAddress, "an illegal memory access was encountered"},
        {cudaErrorLaunchOutOfResources, "too many resources requested for launch"},
        {cudaErrorMisalignedAddress, "misaligned address"},
        {cudaErrorLaunchFailure, "unspecified launch failure"},
        {cudaErrorNotSupported, "operation not supported"},
        {cudaErrorUnknown, "unknown error"},
    };
    const auto* const found =
        std::find_if(std::begin(texts), std::end(texts), [=](const auto& entry) { return entry.first == error; });
    return found == std::end(texts) ? "unrecognized error code" : found->second;
}
}
