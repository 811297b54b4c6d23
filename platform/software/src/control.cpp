#include "checks.h"
#include "handles.h"
#include "host_memory.h"
#include "machine.h"

using namespace tarn::soft;

SoftdevDevice softdevDefaultDevice()
{
    return {"tarn software device", 9, 0, std::size_t{8} << 30, {2147483647, 65535, 65535}, 2};
}

bool softdevSetDevices(const std::vector<SoftdevDevice>& devices)
{
    const SoftdevLive live = softdevLive();
    if (live.allocations != 0 || live.streams != 0 || live.handles != 0)
        return false;
    machine().drain();
    machine().setDevices(devices);
    return true;
}

void softdevSetVersions(int runtime, int driver, int cublas) noexcept
{
    machine().versions = {runtime, driver, cublas};
}

void softdevSetHold(bool hold) noexcept
{
    machine().changeModes([=](Modes& modes) { modes.hold = hold; });
}

void softdevSetEager(bool eager) noexcept
{
    machine().changeModes([=](Modes& modes) { modes.eager = eager; });
}

void softdevSetOrder(unsigned seed) noexcept
{
    machine().changeModes([=](Modes& modes) { modes.order = seed; });
}

void softdevSetSticky(bool sticky) noexcept
{
    machine().changeModes([=](Modes& modes) { modes.sticky = sticky; });
}

void softdevSetPoison(bool poison) noexcept { setPoison(poison); }

bool softdevChecked() noexcept { return checked; }

SoftdevLive softdevLive() noexcept
{
    const MemoryCounts device = deviceMemoryCounts();
    const HostMemoryCounts host = hostMemoryCounts();
    return {device.allocations, device.bytes,     device.peakBytes,    host.allocations,
            host.bytes,         streams().size(), blasHandles().size()};
}

void softdevResetPeak() noexcept { resetPeakBytes(); }
