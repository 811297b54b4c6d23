#include "launch.h"

#include "calls.h"
#include "error.h"

namespace tarn::soft {

static bool possible(const SoftdevDevice& device, dim3 grid, dim3 block)
{
    constexpr unsigned maxBlockThreads = 1024;
    const auto fits = [](unsigned extent, int limit) { return extent != 0 && extent <= static_cast<unsigned>(limit); };
    return fits(grid.x, device.maxGrid[0]) && fits(grid.y, device.maxGrid[1]) && fits(grid.z, device.maxGrid[2]) &&
           fits(block.x, maxBlockThreads) && fits(block.y, maxBlockThreads) && fits(block.z, maxBlockThreads) &&
           std::uint64_t{block.x} * block.y * block.z <= maxBlockThreads;
}

cudaError_t queueLaunch(const char* name, dim3 grid, dim3 block, bool fits,
                        const std::function<Work(Device&)>& makeWork)
{
    if (unloaded())
        return cudaErrorCudartUnloading;
    if (const int code = announceLaunch(name, grid, block))
        return latch(static_cast<cudaError_t>(code));
    Device* device = machine().current();
    if (!device)
        return latch(machine().absence());
    if (const cudaError_t stuck = device->queue.stuck())
        return latch(stuck);
    if (!fits || !possible(device->record, grid, block))
        return latch(cudaErrorInvalidConfiguration);
    const cudaError_t failure = announceExecution(name);
    device->submit(failure == cudaSuccess ? makeWork(*device) : Work{[failure] { return failure; }, 0, false});
    return cudaSuccess;
}

} // namespace tarn::soft
