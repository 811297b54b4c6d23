#include "softdev_controls.h"

const SoftdevControls* softdevControls()
{
    static constexpr SoftdevControls controls = {
        softdevDefaultDevice, softdevSetDevices,    softdevSetVersions, softdevSetHold,
        softdevSetEager,      softdevSetOrder,      softdevSetSticky,   softdevSetPoison,
        softdevChecked,       softdevLogStart,      softdevLogTake,     softdevFailCall,
        softdevFailExecution, softdevClearFailures, softdevLive,        softdevResetPeak};
    return &controls;
}
