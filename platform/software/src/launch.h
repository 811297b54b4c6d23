#pragma once
/// What every launch passes through, whatever runs its blocks.

#include <functional>

#include "machine.h"

namespace tarn::soft {

/// Queues the work that makeWork(device) gives on the default stream of the current device, as a launch of the kernel
/// `name`: announced, counted against the failures to come, and refused with cudaErrorInvalidConfiguration if a grid
/// extent is 0 or above the device's limit, if the block is empty or has more than 1024 threads, or unless it `fits`
/// the kernel.
cudaError_t queueLaunch(const char* name, dim3 grid, dim3 block, bool fits,
                        const std::function<Work(Device&)>& makeWork);

} // namespace tarn::soft
