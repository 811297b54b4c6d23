#include "device.h"

#include "failure.h"

#include <cuda_runtime.h>

#include <fmt/format.h>

namespace tarn::tool {

const bool isSoftwareDevice = TARN_SOFTWARE_DEVICE;

DeviceFacts deviceFacts(int device)
{
    cudaDeviceProp properties{};
    if (const cudaError_t error = cudaGetDeviceProperties(&properties, device); error != cudaSuccess)
        throw Failure(fmt::format("device {}: {}", device, cudaGetErrorString(error)));
    return {properties.name, properties.major, properties.minor, properties.multiProcessorCount,
            properties.totalGlobalMem};
}

std::string describe(const DeviceFacts& device)
{
    return fmt::format("{}, capability {}.{}, {} multiprocessors, {:.1f} GiB", device.name, device.major, device.minor,
                       device.multiprocessors, double(device.memory) / (1 << 30));
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
