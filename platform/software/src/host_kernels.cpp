/// What the launch glue uses. Kernels are compiled for the CPU: a launch is a loop over its blocks, spread over the
/// cores.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <typeinfo>
#include <unordered_map>

#include "cpu_turn.h"
#include "error.h"
#include "launch.h"
#include "parallel.h"
#include "seats.h"
#include "softdev_launch.h"

using namespace tarn::soft;

namespace {

using Clock = std::chrono::steady_clock;

/// A launch that takes less than this on one core, in ns, is not spread over more: idle cores would have to be woken,
/// and a CPU BLAS may be about to need them.
constexpr std::int64_t worthSpreading = 10'000;

/// Run time of the blocks that a core takes at a time, in ns.
constexpr std::int64_t share = 3'000;

using BlockTime = std::atomic<std::int64_t>;

/// How long one block of a kernel ran in its last launch, in ns; before the first one, a guess. Kernels are told apart
/// by the type of what runs their blocks.
BlockTime& blockTimeOf(const std::function<void()>& runBlock)
{
    constexpr std::int64_t guess = 2'000;
    static std::mutex mutex;
    // Never destroyed: the last launches may run while the process ends.
    static auto& times = *new std::unordered_map<const std::type_info*, BlockTime>;
    const std::lock_guard lock(mutex);
    return times.try_emplace(&runBlock.target_type(), guess).first->second;
}

struct Launch
{
    dim3 grid, block;
    std::function<void()> runBlock;
    BlockTime& blockTime;

    std::int64_t blocks() const { return std::int64_t{grid.x} * grid.y * grid.z; }

    /// Estimated run time on one core, in ns.
    std::int64_t cost() const { return blocks() * blockTime; }

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

    /// Runs the blocks with numbers from begin to end - 1 and returns how long that took, in ns.
    std::int64_t run(std::int64_t begin, std::int64_t end) const
    {
        const auto start = Clock::now();
        for (std::int64_t index = begin; index < end; ++index) {
            tarnSoftBlock() = {place(static_cast<std::uint64_t>(index)), block, grid};
            runBlock();
        }
        return std::chrono::nanoseconds(Clock::now() - start).count();
    }

    /// A launch that is expected to be short runs block by block, unless it turns out long; what is left then, or all
    /// of a long one, is spread over the cores.
    void runAll() const
    {
        std::int64_t done = 0;
        std::atomic<std::int64_t> time{0};
        if (cost() < worthSpreading)
            for (; done < blocks() && time < worthSpreading; ++done)
                time += run(done, done + 1);
        if (done < blocks()) {
            const std::int64_t perBlock = done == 0 ? blockTime.load() : time / done;
            forRanges(blocks() - done, 1 + share / (1 + perBlock),
                      [&](std::int64_t begin, std::int64_t end) { time += run(done + begin, done + end); });
        }
        blockTime = time / blocks();
    }
};

// Initialised as a constant: that tarnSoftBlock is `const` would let a compiler move stores before an initialisation.
thread_local SoftBlock currentBlock{};

} // namespace

__attribute__((visibility("default"))) SoftBlock& tarnSoftBlock() noexcept { return currentBlock; }

cudaError_t softdevLaunch(const char* name, dim3 grid, dim3 block, dim3 kernelBlock, std::function<void()> runBlock)
{
    const bool fits = block.x == kernelBlock.x && block.y == kernelBlock.y && block.z == kernelBlock.z;
    return queueLaunch(name, grid, block, fits, [&](Device&) {
        BlockTime& blockTime = blockTimeOf(runBlock);
        Launch launch{grid, block, std::move(runBlock), blockTime};
        const std::int64_t cost = launch.cost();
        return Work{[launch = std::move(launch)] { return launch.runAll(), cudaSuccess; }, cost, false};
    });
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

void softdevTakeCpuTurn() { takeCpuTurn(); }

void softdevLeaveCpuTurn() noexcept { leaveCpuTurn(); }

int softdevSeats() noexcept { return seats(); }

bool softdevTakeSeat() { return takeSeat(); }

void softdevLeaveSeat() noexcept { leaveSeat(); }
