#pragma once
/// The devices of the machine, and which of them is current on each thread.

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include <sys/types.h>

#include "device_memory.h"
#include "queue.h"
#include "softdev.h"

namespace tarn::soft {

/// Largest pitch of a copy, in bytes.
constexpr std::size_t maxCopyPitch = 0x7fffffff;

/// One device.
class Device
{
public:
    Device(const SoftdevDevice& record, int index);

    const SoftdevDevice record;
    const int index;
    DeviceMemory memory;
    Queue queue;
    std::shared_ptr<void> companion; ///< what runs the kernels keeps here; touched by the executor of work alone

    cudaDeviceProp properties() const;

    /// Queues work on the default stream.
    void submit(Work work);

    /// Waits for the last work of the default stream, and with it for all that was issued before.
    cudaError_t waitDefaultStream() { return queue.wait(lastDefault_); }

private:
    std::atomic<Ticket> lastDefault_{0};
};

struct Versions
{
    int runtime = 13000, driver = 13000, cublas = 130000;
};

class Machine
{
public:
    Machine();
    ~Machine();

    /// What every call that needs a device returns while the machine has none: cudaErrorInsufficientDriver without a
    /// driver (version 0), else cudaErrorNoDevice. cudaSuccess if it has one.
    cudaError_t absence();

    /// What cudaGetLastError returns again and again: the absence of devices, or the failure that the current device,
    /// if it was brought up, is stuck with.
    cudaError_t lastingError();

    /// Number of devices. Devices are brought up by the first call that asks for one, not by this one.
    int deviceCount();

    /// A device by index; null if there is none.
    Device* device(int index);

    /// The calling thread's device; null if the machine has none.
    Device* current() { return device(currentIndex()); }
    int currentIndex() const;
    void setCurrent(int index);

    /// The device that an address belongs to; null for host memory.
    Device* owner(const void* address);

    /// Whether a range that should be host memory touches the memory of a device.
    bool touchesDevice(const void* address, std::size_t bytes);

    /// Waits for all devices that were brought up. Their failures stay for a call of their own.
    void drain();

    void forgetExecutionErrors();

    /// change(Modes&), for the devices that there are and that will be.
    void changeModes(const std::function<void(Modes&)>& change);

    /// Replaces the devices. Nothing may be alive on them.
    void setDevices(const std::vector<SoftdevDevice>& records);

    Versions versions;

private:
    struct Slot
    {
        SoftdevDevice record;
        std::unique_ptr<Device> owned;
        std::atomic<Device*> device{nullptr};
    };

    template <class Visit>
    void forDevices(const Visit& visit);

    const pid_t process_;
    std::mutex mutex_;
    std::vector<std::unique_ptr<Slot>> slots_;
    Modes modes_;
    std::atomic<unsigned> generation_{1}; ///< counts the sets of devices; a thread's choice is good for one of them
};

Machine& machine();

/// Whether the machine is gone, because the process or the library ends.
bool unloaded();

} // namespace tarn::soft
