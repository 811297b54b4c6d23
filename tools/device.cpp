#include "device.h"

#include "failure.h"

#include <cuda_runtime.h>

#include <fmt/format.h>

namespace tarn::tool {

std::string describeDevice(int device)
{
    cudaDeviceProp properties{};
    if (const cudaError_t error = cudaGetDeviceProperties(&properties, device); error != cudaSuccess)
        throw Failure(fmt::format("device {}: {}", device, cudaGetErrorString(error)));
    return fmt::format("{}, capability {}.{}, {} multiprocessors, {:.1f} GiB", properties.name, properties.major,
                       properties.minor, properties.multiProcessorCount, double(properties.totalGlobalMem) / (1 << 30));
}

int currentDevice()
{
    int device = 0;
    check(tarnGetExecutingDevice(&device), "tarnGetExecutingDevice");
    return device;
}

int deviceCount()
{
    int count = 0;
    return tarnGetDeviceCount(&count) == tarnNoError ? count : 0;
}

} // namespace tarn::tool
