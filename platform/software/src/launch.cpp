#include <algorithm>
#include <chrono>
#include <string>

#include "calls.h"
#include "error.h"
#include "machine.h"
#include "parallel.h"

using namespace tarn::soft;

namespace {

using Clock = std::chrono::steady_clock;

constexpr unsigned maxBlockThreads = 1024;

/// Estimated run time of one block, in ns, before anything is known about it.
constexpr std::int64_t blockCost = 2000;

/// Blocks run one after the other for this long before the rest is spread over the cores: a small grid is done by then,
/// and a large one has told how long its blocks take.
constexpr std::int64_t trialTime = 3'000; // ns

struct Launch
{
    dim3 grid, block;
    std::function<void()> runBlock;

    std::int64_t blocks() const { return std::int64_t{grid.x} * grid.y * grid.z; }

    /// Coordinates of the block that runs as number `index`. The blocks of a plane run in small squares, so that
    /// kernels which walk rows here and columns there, as transpositions do, stay within few pages at a time.
    uint3 place(std::uint64_t index) const
    {
        constexpr unsigned side = 4;
        const std::uint64_t plane = std::uint64_t{grid.x} * grid.y, band = std::uint64_t{grid.x} * side;
        const auto z = static_cast<unsigned>(index / plane);
        index %= plane;
        const unsigned y0 = static_cast<unsigned>(index / band) * side;
        index %= band;
        const unsigned height = std::min(side, grid.y - y0);
        const unsigned x0 = static_cast<unsigned>(index / (side * height)) * side;
        index %= side * height;
        const unsigned width = std::min(side, grid.x - x0);
        return {x0 + static_cast<unsigned>(index % width), y0 + static_cast<unsigned>(index / width), z};
    }

    void runOne(std::int64_t index) const
    {
        tarnSoftBlock() = {place(static_cast<std::uint64_t>(index)), block, grid};
        runBlock();
    }

    void runAll() const
    {
        const auto start = Clock::now();
        std::int64_t done = 0, elapsed = 0;
        while (done < blocks() && elapsed < trialTime) {
            runOne(done++);
            elapsed = std::chrono::nanoseconds(Clock::now() - start).count();
        }
        if (done == blocks())
            return;
        const std::int64_t first = done, grain = 1 + trialTime * done / elapsed;
        forRanges(blocks() - first, grain, [&](std::int64_t begin, std::int64_t end) {
            for (std::int64_t index = begin; index < end; ++index)
                runOne(first + index);
        });
    }
};

bool possible(const SoftdevDevice& device, dim3 grid, dim3 block, dim3 kernelBlock)
{
    const auto fits = [](unsigned extent, int limit) { return extent != 0 && extent <= static_cast<unsigned>(limit); };
    return fits(grid.x, device.maxGrid[0]) && fits(grid.y, device.maxGrid[1]) && fits(grid.z, device.maxGrid[2]) &&
           block.x == kernelBlock.x && block.y == kernelBlock.y && block.z == kernelBlock.z &&
           fits(block.x, maxBlockThreads) && fits(block.y, maxBlockThreads) && fits(block.z, maxBlockThreads) &&
           std::uint64_t{block.x} * block.y * block.z <= maxBlockThreads;
}

thread_local SoftBlock currentBlock;

} // namespace

extern "C" __attribute__((visibility("default"))) SoftBlock& tarnSoftBlock() noexcept { return currentBlock; }

cudaError_t softdevLaunch(const char* name, dim3 grid, dim3 block, dim3 kernelBlock, std::function<void()> runBlock)
{
    if (unloaded())
        return cudaErrorCudartUnloading;
    if (const int code = announceLaunch(name, grid, block))
        return latch(static_cast<cudaError_t>(code));
    Device* device = machine().current();
    if (!device)
        return latch(cudaErrorNoDevice);
    if (!possible(device->record, grid, block, kernelBlock))
        return latch(cudaErrorInvalidConfiguration);
    if (const cudaError_t failure = announceExecution(name)) {
        device->submit({[failure] { return failure; }, 0, false});
        return cudaSuccess;
    }
    Launch launch{grid, block, std::move(runBlock)};
    const std::int64_t cost = launch.blocks() * blockCost;
    device->submit({[launch = std::move(launch)] { return launch.runAll(), cudaSuccess; }, cost, false});
    return cudaSuccess;
}

cudaError_t softdevDeviceView(const void* address, void** view) noexcept
{
    *view = nullptr;
    if (!address)
        return cudaSuccess;
    Device* device = unloaded() ? nullptr : machine().current();
    if (!device || !device->memory.holds(address, 0))
        return cudaErrorInvalidValue;
    *view = device->memory.arena().inner(address);
    return cudaSuccess;
}

cudaError_t softdevFail(cudaError_t code) noexcept { return latch(code); }
