#include "machine.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <unistd.h>

namespace tarn::soft {

namespace {

struct CurrentDevice
{
    unsigned generation;
    int index;
};

thread_local CurrentDevice currentDevice{0, 0};

std::atomic<bool> machineIsGone{false};
Machine theMachine;

} // namespace

Machine& machine() { return theMachine; }

bool unloaded() { return machineIsGone.load(std::memory_order_relaxed); }

Device::Device(const SoftdevDevice& deviceRecord, int deviceIndex)
    : record(deviceRecord), index(deviceIndex), memory(deviceRecord.memory)
{}

cudaDeviceProp Device::properties() const
{
    cudaDeviceProp prop{};
    std::strncpy(prop.name, record.name.c_str(), sizeof prop.name - 1);
    prop.totalGlobalMem = record.memory;
    prop.sharedMemPerBlock = 48 * 1024;
    prop.regsPerBlock = 65536;
    prop.warpSize = 32;
    prop.memPitch = maxCopyPitch;
    prop.maxThreadsPerBlock = 1024;
    const int maxThreadsDim[3] = {1024, 1024, 64};
    std::copy(std::begin(maxThreadsDim), std::end(maxThreadsDim), prop.maxThreadsDim);
    std::copy(std::begin(record.maxGrid), std::end(record.maxGrid), prop.maxGridSize);
    prop.major = record.major;
    prop.minor = record.minor;
    prop.multiProcessorCount = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    prop.asyncEngineCount = record.asyncEngines;
    return prop;
}

void Device::submit(Work work)
{
    const Ticket ticket = queue.submit(std::move(work));
    Ticket last = lastDefault_;
    while (last < ticket && !lastDefault_.compare_exchange_weak(last, ticket)) {
    }
}

/// As many as TARN_SOFTWARE_DEVICES says, else one: a machine to try on how processes are dealt over several.
static std::vector<SoftdevDevice> devicesAtFirst()
{
    const char* text = std::getenv("TARN_SOFTWARE_DEVICES");
    constexpr int most = 16;
    return std::vector<SoftdevDevice>(std::size_t(std::clamp(text ? std::atoi(text) : 1, 1, most)),
                                      softdevDefaultDevice());
}

Machine::Machine() : process_(getpid()) { setDevices(devicesAtFirst()); }

Machine::~Machine()
{
    machineIsGone = true;
    // A forked child has no device threads, and whatever they held or waited for stays so: nothing of it can be undone.
    if (getpid() != process_) {
        static auto* kept = new std::vector<std::unique_ptr<Slot>>;
        kept->swap(slots_);
    }
}

int Machine::deviceCount()
{
    const std::lock_guard lock(mutex_);
    return static_cast<int>(slots_.size());
}

cudaError_t Machine::absence()
{
    if (deviceCount() != 0)
        return cudaSuccess;
    return versions.driver == 0 ? cudaErrorInsufficientDriver : cudaErrorNoDevice;
}

cudaError_t Machine::lastingError()
{
    if (const cudaError_t none = absence())
        return none;
    const Slot& current = *slots_[static_cast<std::size_t>(currentIndex())];
    const Device* ready = current.device.load(std::memory_order_acquire);
    return ready ? ready->queue.stuck() : cudaSuccess;
}

Device* Machine::device(int index)
{
    if (index < 0 || index >= static_cast<int>(slots_.size()))
        return nullptr;
    Slot& slot = *slots_[static_cast<std::size_t>(index)];
    if (Device* ready = slot.device.load(std::memory_order_acquire))
        return ready;
    const std::lock_guard lock(mutex_);
    if (!slot.owned) {
        slot.owned = std::make_unique<Device>(slot.record, index);
        slot.owned->queue.setModes(modes_);
        slot.device.store(slot.owned.get(), std::memory_order_release);
    }
    return slot.owned.get();
}

int Machine::currentIndex() const
{
    return currentDevice.generation == generation_.load(std::memory_order_relaxed) ? currentDevice.index : 0;
}

void Machine::setCurrent(int index) { currentDevice = {generation_.load(std::memory_order_relaxed), index}; }

template <class Visit>
void Machine::forDevices(const Visit& visit)
{
    for (const auto& slot : slots_)
        if (Device* device = slot->device.load(std::memory_order_acquire))
            visit(*device);
}

Device* Machine::owner(const void* address)
{
    Device* found = nullptr;
    forDevices([&](Device& device) {
        if (device.memory.arena().owns(address))
            found = &device;
    });
    return found;
}

bool Machine::touchesDevice(const void* address, std::size_t bytes)
{
    bool touches = false;
    forDevices([&](Device& device) { touches = touches || device.memory.arena().overlaps(address, bytes); });
    return touches;
}

void Machine::drain()
{
    forDevices([](Device& device) { device.queue.drain(); });
}

void Machine::forgetExecutionErrors()
{
    forDevices([](Device& device) { device.queue.forgetError(); });
}

void Machine::changeModes(const std::function<void(Modes&)>& change)
{
    const std::lock_guard lock(mutex_);
    change(modes_);
    forDevices([&](Device& device) { device.queue.setModes(modes_); });
}

void Machine::setDevices(const std::vector<SoftdevDevice>& records)
{
    const std::lock_guard lock(mutex_);
    slots_.clear();
    for (const SoftdevDevice& record : records) {
        slots_.push_back(std::make_unique<Slot>());
        slots_.back()->record = record;
    }
    ++generation_;
}

} // namespace tarn::soft
