#pragma once
/// Where the time of the device goes: TARN_SOFTDEV_TIMES=FILE writes, when the process ends, the seconds that queued
/// work ran for, by the name of the call that queued it, as a JSON object.

#include <chrono>

namespace tarn::soft {

/// The call that this thread has announced last; a name that lives as long as the process.
extern thread_local const char* currentCall;

/// Adds the time from construction to destruction to that of a call, if anybody wants to know.
class CallTime
{
public:
    explicit CallTime(const char* call);
    ~CallTime();
    CallTime(const CallTime&) = delete;
    CallTime& operator=(const CallTime&) = delete;

private:
    const char* call_;
    std::chrono::steady_clock::time_point start_;
};

} // namespace tarn::soft
