// The device that the library runs on, as the tool describes it.
#pragma once

#include <cstdint>
#include <string>

namespace tarn::tool {

/// Whether this build has the software device in place of CUDA.
extern const bool isSoftwareDevice;

struct DeviceFacts
{
    std::string name;
    int major, minor; ///< of its capability
    int multiprocessors;
    std::uint64_t memory; ///< in bytes
};

/// Of a device that counts from 0. Raises Failure.
DeviceFacts deviceFacts(int device);

/// "NVIDIA H200, capability 9.0, 132 multiprocessors, 139.8 GiB"
std::string describe(const DeviceFacts& device);

/// The device that is current on the calling thread. Raises Failure.
int currentDevice();

/// Number of devices, 0 where there is none or no driver.
int deviceCount();

} // namespace tarn::tool
