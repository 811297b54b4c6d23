// The controls in the CUDA build: those of the emulated GPU, where its runtime stands in for the toolkit's. On a GPU
// there is nothing to control: tests that need it skip themselves (WithControls), and the calls do nothing.
#include "support/device.h"

#include <dlfcn.h>

#include <softdev_controls.h>

namespace {

const SoftdevControls* controls()
{
    static const auto find = reinterpret_cast<decltype(&softdevControls)>(dlsym(RTLD_DEFAULT, "softdevControls"));
    return find ? find() : nullptr;
}

/// What control(arguments...) returns, or where there is none a value made of nothing.
template <class Control, class... Args>
auto control(Control SoftdevControls::*member, const Args&... arguments)
{
    using Result = decltype((controls()->*member)(arguments...));
    return controls() ? (controls()->*member)(arguments...) : Result();
}

} // namespace

bool test::findControls() { return controls() != nullptr; }

SoftdevDevice softdevDefaultDevice() { return control(&SoftdevControls::defaultDevice); }
bool softdevSetDevices(const std::vector<SoftdevDevice>& devices)
{
    return control(&SoftdevControls::setDevices, devices);
}
void softdevSetVersions(int runtime, int driver, int cublas) noexcept
{
    control(&SoftdevControls::setVersions, runtime, driver, cublas);
}
void softdevSetHold(bool hold) noexcept { control(&SoftdevControls::setHold, hold); }
void softdevSetEager(bool eager) noexcept { control(&SoftdevControls::setEager, eager); }
void softdevSetOrder(unsigned seed) noexcept { control(&SoftdevControls::setOrder, seed); }
void softdevSetSticky(bool sticky) noexcept { control(&SoftdevControls::setSticky, sticky); }
void softdevSetPoison(bool poison) noexcept { control(&SoftdevControls::setPoison, poison); }
bool softdevChecked() noexcept { return control(&SoftdevControls::checked); }
void softdevLogStart() { control(&SoftdevControls::logStart); }
std::vector<SoftdevCall> softdevLogTake() { return control(&SoftdevControls::logTake); }
void softdevFailCall(const char* name, int nth, int code, bool fromThenOn)
{
    control(&SoftdevControls::failCall, name, nth, code, fromThenOn);
}
void softdevFailExecution(const char* kernelPrefix, int nth, int code)
{
    control(&SoftdevControls::failExecution, kernelPrefix, nth, code);
}
void softdevClearFailures() noexcept { control(&SoftdevControls::clearFailures); }
SoftdevLive softdevLive() noexcept { return control(&SoftdevControls::live); }
void softdevResetPeak() noexcept { control(&SoftdevControls::resetPeak); }
