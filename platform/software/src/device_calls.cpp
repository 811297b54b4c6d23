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
    const cudaError_t absence = unloaded() ? cudaSuccess : machine().absence();
    return absence == cudaSuccess ? latched : absence;
}

const char* cudaGetErrorString(cudaError_t error)
{
    switch (error) {
    case cudaSuccess:
        return "no error";
    case cudaErrorInvalidValue:
        return "invalid argument";
    case cudaErrorMemoryAllocation:
        return "out of memory";
    case cudaErrorInitializationError:
        return "initialization error";
    case cudaErrorCudartUnloading:
        return "driver shutting down";
    case cudaErrorInvalidConfiguration:
        return "invalid configuration argument";
    case cudaErrorInvalidPitchValue:
        return "invalid pitch argument";
    case cudaErrorInvalidDevicePointer:
        return "invalid device pointer";
    case cudaErrorInvalidMemcpyDirection:
        return "invalid copy direction for memcpy";
    case cudaErrorInsufficientDriver:
        return "CUDA driver version is insufficient for CUDA runtime version";
    case cudaErrorNoDevice:
        return "no CUDA-capable device is detected";
    case cudaErrorInvalidDevice:
        return "invalid device ordinal";
    case cudaErrorInvalidResourceHandle:
        return "invalid resource handle";
    case cudaErrorIllegalAddress:
        return "an illegal memory access was encountered";
    case cudaErrorLaunchOutOfResources:
        return "too many resources requested for launch";
    case cudaErrorLaunchFailure:
        return "unspecified launch failure";
    case cudaErrorNotSupported:
        return "operation not supported";
    case cudaErrorUnknown:
        return "unknown error";
    }
    return "unrecognized error code";
}
}
