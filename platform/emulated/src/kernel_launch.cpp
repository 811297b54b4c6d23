#include "kernel_launch.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <mutex>

#include <sys/mman.h>

#include "calls.h"
#include "checks.h"
#include "launch.h"
#include "parallel.h"
#include "ptx/thread_block.h"

namespace tarn::soft {

namespace {

/// The shadow of a device's memory: for every word of the arena the launches' last uses of it.
class Shadow
{
public:
    explicit Shadow(std::size_t arenaBytes) : bytes_(arenaBytes / 4 * sizeof(ptx::ShadowWord))
    {
        void* const mapped =
            mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (mapped == MAP_FAILED)
            throw std::bad_alloc();
        words_ = static_cast<ptx::ShadowWord*>(mapped);
    }
    ~Shadow() { munmap(words_, bytes_); }
    Shadow(const Shadow&) = delete;
    Shadow& operator=(const Shadow&) = delete;

    ptx::ShadowWord* words() const { return words_; }

    /// The number of the next launch: none that stands in the shadow.
    unsigned nextSerial()
    {
        if (++serial_ >> 18 != 0) {
            serial_ = 1;
            madvise(words_, bytes_, MADV_DONTNEED);
        }
        return serial_;
    }

private:
    std::size_t bytes_;
    ptx::ShadowWord* words_;
    unsigned serial_ = 0;
};

/// The memory of a device as its kernels see it.
class DeviceView : public ptx::Memory
{
public:
    explicit DeviceView(Device& device) : memory_(device.memory)
    {
        if (!device.companion)
            device.companion = std::make_shared<Shadow>(memory_.arena().bytes());
        shadow_ = static_cast<Shadow*>(device.companion.get());
    }

    ptx::Allocation find(std::uint64_t address) override
    {
        const auto* const at = reinterpret_cast<const void*>(address);
        const auto [begin, bytes] = memory_.allocationAt(at);
        if (bytes == 0)
            return {};
        const auto first = reinterpret_cast<std::uint64_t>(begin);
        return {first, first + bytes, memory_.arena().inner(begin),
                shadow_->words() + memory_.arena().offsetOf(begin) / 4};
    }

    unsigned nextSerial() { return shadow_->nextSerial(); }

private:
    DeviceMemory& memory_;
    Shadow* shadow_;
};

bool checksAreOn()
{
    static const bool on = [] {
        const char* const value = std::getenv("TARN_EMULATED_CHECKS");
        return !value || std::strcmp(value, "0") != 0;
    }();
    return on;
}

/// Null unless somebody wants the counters. They are written when the process ends.
ptx::CounterTable* counterTable()
{
    static ptx::CounterTable* const table = [] {
        if (!std::getenv("TARN_EMULATED_COUNTERS"))
            return static_cast<ptx::CounterTable*>(nullptr);
        std::atexit([] { std::ofstream(std::getenv("TARN_EMULATED_COUNTERS")) << counterTable()->json(); });
        return new ptx::CounterTable;
    }();
    return table;
}

cudaError_t codeOf(ptx::Fault::Kind kind)
{
    switch (kind) {
    case ptx::Fault::Kind::address:
        return cudaErrorIllegalAddress;
    case ptx::Fault::Kind::misaligned:
        return cudaErrorMisalignedAddress;
    default:
        return cudaErrorLaunchFailure;
    }
}

/// Runs all blocks, over the cores. Of several faults the first one is reported.
cudaError_t run(ptx::Launch launch, Device& device)
{
    DeviceView view(device);
    launch.memory = &view;
    launch.serial = view.nextSerial();
    const std::int64_t blocks = std::int64_t{launch.grid.x} * launch.grid.y * launch.grid.z;
    std::atomic<cudaError_t> result{cudaSuccess};
    forRanges(blocks, 1 + blocks / 16, [&](std::int64_t begin, std::int64_t end) {
        ptx::ThreadBlock threads(launch);
        try {
            for (std::int64_t index = begin; index < end && result == cudaSuccess; ++index) {
                const auto i = static_cast<unsigned>(index);
                const unsigned plane = launch.grid.x * launch.grid.y;
                threads.run({i % launch.grid.x, i % plane / launch.grid.x, i / plane});
            }
        } catch (const ptx::Fault& fault) {
            cudaError_t none = cudaSuccess;
            if (result.compare_exchange_strong(none, codeOf(fault.kind)))
                std::fprintf(stderr, "emulated GPU: %s\n", fault.what());
        }
        threads.deliverCounters();
    });
    if (launch.counters) {
        ptx::Counters one;
        one.launches = 1;
        launch.counters->add(launch.kernel->name, one);
    }
    return result;
}

} // namespace

cudaError_t launchKernel(const RegisteredKernel& kernel, dim3 grid, dim3 block, void** arguments)
{
    constexpr std::int64_t cost = 20'000; // ns, a guess: an interpreter is slow
    return queueLaunch(kernel.name.c_str(), grid, block, true, [&](Device& device) {
        ptx::Launch launch{kernel.code,
                           {grid.x, grid.y, grid.z},
                           {block.x, block.y, block.z},
                           {},
                           nullptr,
                           0,
                           poisonWord,
                           checksAreOn() && !someCallFailed(),
                           counterTable()};
        launch.parameters.resize(std::size_t(kernel.code->parameterBytes));
        for (std::size_t i = 0; i < kernel.code->parameters.size(); ++i) {
            const ptx::Parameter& parameter = kernel.code->parameters[i];
            std::memcpy(launch.parameters.data() + parameter.offset, arguments[i], std::size_t(parameter.bytes));
        }
        return Work{[launch = std::move(launch), module = kernel.module, &device] { return run(launch, device); }, cost,
                    false};
    });
}

} // namespace tarn::soft
