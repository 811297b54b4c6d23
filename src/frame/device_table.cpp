#include "frame/device_table.h"

#include "frame/error_state.h"

#include <device_glue.h>

#include <algorithm>
#include <atomic>
#include <mutex>

namespace tarn {

namespace {

struct DeviceTable
{
    std::array<DeviceRecord, deviceLimit> records;
    std::atomic<bool> built{false};
    std::mutex building;
};

/// Per device number: filled by the first frame that runs there. Threads may fill an entry at once, with equal values.
struct DeviceCache
{
    std::atomic<bool> cached{false};
    std::atomic<bool> doubleCapable{false};
    std::atomic<int> capability{0};
};

/// Never destroyed: routines may run until the very end of the process.
DeviceTable& deviceTable()
{
    static auto& table = *new DeviceTable;
    return table;
}

std::array<DeviceCache, deviceLimit> cache;

cudaDeviceProp readProperties(int device)
{
    cudaDeviceProp properties{};
    velk::CudaErrorGuard guard;
    guard.check(cudaGetDeviceProperties(&properties, device));
    return properties;
}

DeviceRecord readDevice(int device)
{
    DeviceRecord record;
    record.id = device;
    record.properties = readProperties(device);
    record.name = record.properties.name;
    record.capability.major = record.properties.major;
    record.capability.minor = record.properties.minor;
    record.capability.value = 10 * record.properties.major + record.properties.minor;
    return record;
}

const DeviceRecord& deviceRecord(int device)
{
    DeviceTable& table = deviceTable();
    if (!table.built.load(std::memory_order_acquire)) {
        const std::lock_guard<std::mutex> lock(table.building);
        if (!table.built.load(std::memory_order_relaxed)) {
            const int count = supportedDeviceCount();
            for (int i = 0; i < count; ++i)
                table.records[i] = readDevice(i);
            table.built.store(true, std::memory_order_release);
        }
    }
    return table.records.at(device);
}

/// The placeholder that CUDA lists on a machine without a device.
bool isPlaceholder(const cudaDeviceProp& properties)
{
    return properties.major < 1 || (properties.major == 9999 && properties.minor == 9999);
}

} // namespace

int currentDevice()
{
    int device = 0;
    velk::CudaErrorGuard guard;
    guard.check(cudaGetDevice(&device));
    return device;
}

int supportedDeviceCount()
{
    int count = 0;
    velk::CudaErrorGuard guard;
    const cudaError_t result = cudaGetDeviceCount(&count);
    if (result == cudaErrorNoDevice || result == cudaErrorInsufficientDriver)
        return 0;
    guard.check(result);
    if (count == 1 && isPlaceholder(readProperties(0)))
        return 0;
    return std::min(count, deviceLimit);
}

int bindThreadDevice()
{
    const int device = currentDevice();
    DeviceCache& entry = cache.at(device);
    if (!entry.cached.load(std::memory_order_acquire)) {
        const int capability = deviceCapability(device).value;
        entry.doubleCapable.store(capability >= 13, std::memory_order_relaxed);
        entry.capability.store(capability, std::memory_order_relaxed);
        entry.cached.store(true, std::memory_order_release);
    }
    return device;
}

bool supportsDouble(int device) { return cache.at(device).doubleCapable.load(std::memory_order_relaxed); }

int currentCapability() { return cache.at(currentDevice()).capability.load(std::memory_order_relaxed); }

CapabilityTriple deviceCapability(int device) { return deviceRecord(device).capability; }

std::string deviceName(int device) { return deviceRecord(device).name; }

std::size_t deviceGlobalMemory(int device) { return deviceRecord(device).properties.totalGlobalMem; }

bool deviceCanOverlap(int device) { return platform::overlapsCopies(deviceRecord(device).properties); }

std::array<int, 3> maxGridSize()
{
    const auto& limits = deviceRecord(currentDevice()).properties.maxGridSize;
    return {limits[0], limits[1], limits[2]};
}

std::size_t maxCopyPitch() { return 0x7fffffff; }

} // namespace tarn
