#include "calls.h"

#include <algorithm>
#include <mutex>

#include "machine.h"

namespace tarn::soft {

std::atomic<bool> callsObserved{false};

namespace {

enum class Failing
{
    call,
    execution
};

/// One failure to come: the call after `remaining` more matching ones fails.
struct FailureRule
{
    Failing kind;
    std::string name;
    long long remaining;
    int code;
    bool fromThenOn;

    bool matches(const std::string& called, bool isLaunch) const
    {
        return isLaunch ? called.compare(0, name.size(), name) == 0 : name.empty() || called == name;
    }
};

std::mutex mutex;
bool recording = false;
std::vector<SoftdevCall> recorded;
std::vector<FailureRule> rules;
std::atomic<bool> failed{false};

void updateObserved() { callsObserved = recording || !rules.empty(); }

/// Counts a call against every rule of its kind; the first rule that is due gives the code.
int countCall(Failing kind, const std::string& name, bool isLaunch)
{
    int code = 0;
    for (FailureRule& rule : rules) {
        if (rule.kind != kind || !rule.matches(name, isLaunch))
            continue;
        --rule.remaining;
        if (code == 0 && (rule.remaining == 0 || (rule.fromThenOn && rule.remaining < 0)))
            code = rule.code;
    }
    rules.erase(std::remove_if(rules.begin(), rules.end(),
                               [](const FailureRule& rule) { return rule.remaining <= 0 && !rule.fromThenOn; }),
                rules.end());
    updateObserved();
    failed = failed || code != 0;
    return code;
}

void addRule(FailureRule rule)
{
    const std::lock_guard lock(mutex);
    rules.push_back(std::move(rule));
    updateObserved();
}

} // namespace

int observeCall(SoftdevCall call, bool isLaunch)
{
    call.device = machine().currentIndex();
    const std::lock_guard lock(mutex);
    const int code = countCall(Failing::call, call.name, isLaunch);
    if (recording)
        recorded.push_back(std::move(call));
    return code;
}

bool someCallFailed() { return failed; }

int announceLaunch(const char* name, dim3 grid, dim3 block)
{
    currentCall = name;
    if (!callsObserved.load(std::memory_order_relaxed))
        return 0;
    return observeCall({name, {grid.x, grid.y, grid.z, block.x, block.y, block.z}, {}, 0}, true);
}

cudaError_t announceExecution(const char* name)
{
    if (!callsObserved.load(std::memory_order_relaxed))
        return cudaSuccess;
    const std::lock_guard lock(mutex);
    return static_cast<cudaError_t>(countCall(Failing::execution, name, true));
}

} // namespace tarn::soft

using namespace tarn::soft;

void softdevLogStart()
{
    const std::lock_guard lock(mutex);
    recorded.clear();
    recording = true;
    updateObserved();
}

std::vector<SoftdevCall> softdevLogTake()
{
    const std::lock_guard lock(mutex);
    recording = false;
    updateObserved();
    return std::exchange(recorded, {});
}

void softdevFailCall(const char* name, int nth, int code, bool fromThenOn)
{
    addRule({Failing::call, name ? name : "", nth, code, fromThenOn});
}

void softdevFailExecution(const char* kernelPrefix, int nth, int code)
{
    addRule({Failing::execution, kernelPrefix ? kernelPrefix : "", nth, code, false});
}

void softdevClearFailures() noexcept
{
    {
        const std::lock_guard lock(mutex);
        rules.clear();
        failed = false;
        updateObserved();
    }
    machine().forgetExecutionErrors();
}
