// What the library knows of the devices: read once per process, asked everywhere.
#pragma once

#include <cuda_runtime.h>

#include <array>
#include <cstddef>
#include <string>

namespace tarn {

/// The library serves the device numbers 0 to 15.
inline constexpr int deviceLimit = 16;

/// Compute capability; value is major * 10 + minor, and all comparisons use it.
struct CapabilityTriple
{
    int major = 0;
    int minor = 0;
    int value = 0;
};

/// One device; id is -1 in an unfilled record.
struct DeviceRecord
{
    int id = -1;
    std::string name;
    cudaDeviceProp properties{};
    CapabilityTriple capability;
};

/// The calling thread's current CUDA device.
int currentDevice();

/// Number of devices that can be used, at most deviceLimit; a single device that is only the placeholder of a machine
/// without one does not count. Raises on a CUDA error.
int supportedDeviceCount();

/// Current device of the thread, whose capability is cached from then on: heads of frames call it.
int bindThreadDevice();

/// True if a bound device has double precision: capability 1.3 or more.
bool supportsDouble(int device);

/// Capability value of the thread's current, bound device.
int currentCapability();

/// Queries of the table, which is built at first use; they raise on a CUDA error.
CapabilityTriple deviceCapability(int device);
std::string deviceName(int device);
std::size_t deviceGlobalMemory(int device); ///< bytes
bool deviceCanOverlap(int device);          ///< copies run beside kernels
std::array<int, 3> maxGridSize();           ///< blocks per grid dimension, of the thread's current device
std::size_t maxCopyPitch();                 ///< bytes; two-dimensional copies need pitches below this

} // namespace tarn
