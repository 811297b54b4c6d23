// How a call is answered: by the device if it gains from it, else by the CPU library with the caller's own arguments.
#pragma once

#include "cpu_library.h"
#include "device.h"
#include "limits.h"
#include "report.h"
#include "routine.h"

#include <type_traits>

namespace tarn::dropin {

/// The limits and what the arguments tell; a look at the arrays may still decide otherwise.
template <class Call>
bool isForDevice(const Call& call)
{
    const Limit& limit = limitOf(call.kind());
    return call.flops() >= limit.flops && call.flops() >= limit.flopsPerByte * call.bytes() && call.wellFormed();
}

template <class Call, class Cpu>
auto leaveWork(const Call& call, Cpu* cpu, int) -> decltype(call.setOptimalWork(cpu))
{
    call.setOptimalWork(cpu);
}

/// Of a family without workspace.
template <class Call, class Cpu>
void leaveWork(const Call&, Cpu*, long)
{}

template <class Call, class Cpu>
Outcome runOnDevice(Routine& routine, const Call& call, Cpu* cpu)
{
    if (!deviceIsUp())
        return Outcome::declined;
    void* device = routine.device.load(std::memory_order_relaxed);
    if (!device)
        routine.device = device = libraryFunction(routine.deviceName);
    if (!device)
        return Outcome::declined;
    const Suspension suspension;
    const DeviceScope scope;
    const auto run = [&] { return call.run(reinterpret_cast<typename Call::Device*>(device)); };
    Outcome outcome = run();
    if (outcome == Outcome::failed && comesUpAgain())
        outcome = run();
    if (outcome == Outcome::answered)
        leaveWork(call, cpu, 0);
    return outcome;
}

/// A call that is large enough for a second look, or that is to be counted. isWhole: the CPU routine may stand on
/// others that the drop-in answers, which are then not asked again.
template <bool isWhole, class Call, class... Args>
[[gnu::noinline]] void answerAtLength(Routine& routine, const Call& call, void (*cpu)(Args...), Args... args)
{
    if (suspended)
        return cpu(args...);
    const double start = reporting ? now() : 0;
    Way way = Way::cpu;
    if (isForDevice(call)) {
        const Outcome outcome = runOnDevice(routine, call, cpu);
        way = outcome == Outcome::answered ? Way::device : outcome == Outcome::failed ? Way::fellBack : Way::cpu;
    }
    if (way == Way::fellBack || (way == Way::cpu && isWhole)) {
        const Suspension suspension;
        cpu(args...);
    } else if (way == Way::cpu) {
        cpu(args...);
    }
    if (reporting)
        count(routine.tally, way, now() - start, call.flops(), call.size());
}

/// The way of most calls, and so a short one.
template <bool isWhole, class Call, class... Args>
[[gnu::always_inline]] inline void answer(Routine& routine, std::atomic<void*>& known, const char* symbol,
                                          const Call& call, Args... args)
{
    void* address = known.load(std::memory_order_relaxed);
    if (!address)
        known = address = cpuRoutine(symbol, __builtin_return_address(0));
    const auto cpu = reinterpret_cast<void (*)(Args...)>(address);
    if (call.flops() < limitOf(call.kind()).flops && !reporting)
        return cpu(args...);
    answerAtLength<isWhole>(routine, call, cpu, args...);
}

/// Answers a Fortran name; args are its arguments.
template <class Device, class Call, class... Args>
[[gnu::always_inline]] inline void fortran(Routine& routine, const Call& call, Args... args)
{
    static_assert(std::is_same_v<Device, typename Call::Device>);
    answer<false>(routine, routine.cpu, routine.symbol, call, args...);
}

/// Answers a CBLAS name. Some CPU libraries build these on the Fortran names.
template <class Call, class... Args>
[[gnu::always_inline]] inline void cblas(Routine& routine, const Call& call, Args... args)
{
    answer<true>(routine, routine.cpuCblas, routine.cblas, call, args...);
}

} // namespace tarn::dropin
