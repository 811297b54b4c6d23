// Which devices there are, and which one the calling thread uses.
#include "frame/routine.h"
#include "tarn_lapack.h"

using namespace tarn;

tarnStatus tarnGetDeviceCount(int* dev)
{
    return serviceFrame([&] {
        require(dev != nullptr, -1);
        *dev = supportedDeviceCount();
    });
}

tarnStatus tarnSelectDevice(int dev)
{
    return serviceFrame([&] {
        require(dev >= 0 && dev < supportedDeviceCount(), -1);
        if (const cudaError_t result = cudaSetDevice(dev); result != cudaSuccess)
            throw velk::CudaRuntimeException(result);
    });
}

tarnStatus tarnGetExecutingDevice(int* dev)
{
    if (!isInitialized())
        return record(tarnNotInitialized);
    return serviceFrame([&] {
        bindThreadDevice();
        require(dev != nullptr, -1);
        *dev = currentDevice();
    });
}
