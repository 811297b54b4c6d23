#pragma once
/// The controls as a table, for programs that find out only when they run whether there is something to control.

#include "softdev.h"

struct SoftdevControls
{
    decltype(&softdevDefaultDevice) defaultDevice;
    decltype(&softdevSetDevices) setDevices;
    decltype(&softdevSetVersions) setVersions;
    decltype(&softdevSetHold) setHold;
    decltype(&softdevSetEager) setEager;
    decltype(&softdevSetOrder) setOrder;
    decltype(&softdevSetSticky) setSticky;
    decltype(&softdevSetPoison) setPoison;
    decltype(&softdevChecked) checked;
    decltype(&softdevLogStart) logStart;
    decltype(&softdevLogTake) logTake;
    decltype(&softdevFailCall) failCall;
    decltype(&softdevFailExecution) failExecution;
    decltype(&softdevClearFailures) clearFailures;
    decltype(&softdevLive) live;
    decltype(&softdevResetPeak) resetPeak;
};

/// The emulated GPU exports it; a GPU's runtime does not.
extern "C" const SoftdevControls* softdevControls();
