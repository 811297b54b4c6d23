#pragma once
/// The log of calls and the injection of failures. Every entry point announces itself here with its arguments; while
/// nobody records and nothing is to fail, that costs one relaxed load.

#include <atomic>
#include <limits>
#include <optional>
#include <type_traits>

#include "call_times.h"
#include "cublas_api.h"
#include "softdev.h"

namespace tarn::soft {

/// A scalar argument that is passed by address and logged by value.
template <class T>
struct ScalarArgument
{
    const T* value;
};

template <class T>
ScalarArgument<T> scalar(const T* value)
{
    return {value};
}

/// Arguments of one call in the form in which the log keeps them.
class CallArguments
{
public:
    explicit CallArguments(SoftdevCall& call) : call_(call) {}

    template <class T>
    void add(T value)
    {
        if constexpr (std::is_pointer_v<T>)
            call_.ints.push_back(static_cast<long long>(reinterpret_cast<std::uintptr_t>(value)));
        else
            call_.ints.push_back(static_cast<long long>(value));
    }
    template <class T>
    void add(ScalarArgument<T> argument)
    {
        constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
        if constexpr (std::is_arithmetic_v<T>) {
            call_.reals.push_back(argument.value ? double(*argument.value) : unknown);
        } else {
            call_.reals.push_back(argument.value ? double(argument.value->x) : unknown);
            call_.reals.push_back(argument.value ? double(argument.value->y) : unknown);
        }
    }

private:
    SoftdevCall& call_;
};

/// Whether anybody records calls or wants some to fail.
extern std::atomic<bool> callsObserved;

/// Logs a call and counts it against the failures to come. Returns the code that it must fail with, or 0.
int observeCall(SoftdevCall call, bool isLaunch);

/// What an entry point does first: the code that it must return instead of working, or 0.
template <class... Args>
int announceCall(const char* name, Args... args)
{
    currentCall = name;
    if (!callsObserved.load(std::memory_order_relaxed))
        return 0;
    SoftdevCall call{name, {}, {}, 0};
    CallArguments arguments(call);
    (arguments.add(args), ...);
    return observeCall(std::move(call), false);
}

/// The same for a kernel launch.
int announceLaunch(const char* name, dim3 grid, dim3 block);

/// Counts a launch against the executions that are to fail: the code that this one must end with, or cudaSuccess.
cudaError_t announceExecution(const char* name);

/// Whether a call or an execution has been made to fail since softdevClearFailures: later work may then rightly find
/// what should have been written missing.
bool someCallFailed();

} // namespace tarn::soft
