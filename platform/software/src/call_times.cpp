#include "call_times.h"

#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <string>

namespace tarn::soft {

thread_local const char* currentCall = "";

namespace {

/// Seconds by call.
class CallTimes
{
public:
    void add(const char* call, double seconds)
    {
        const std::lock_guard lock(mutex_);
        seconds_[call] += seconds;
    }

    void write(const char* file)
    {
        const std::lock_guard lock(mutex_);
        std::ofstream out(file);
        const char* separator = "{";
        for (const auto& [call, seconds] : seconds_) {
            out << separator << '"' << call << "\": " << seconds;
            separator = ", ";
        }
        out << (seconds_.empty() ? "{}\n" : "}\n");
    }

private:
    std::mutex mutex_;
    std::map<std::string, double> seconds_;
};

/// The table, null if nobody wants it. Never destroyed: work may run while the process ends.
CallTimes* times()
{
    static CallTimes* const table = [] {
        if (!std::getenv("TARN_SOFTDEV_TIMES"))
            return static_cast<CallTimes*>(nullptr);
        std::atexit([] { times()->write(std::getenv("TARN_SOFTDEV_TIMES")); });
        return new CallTimes;
    }();
    return table;
}

} // namespace

CallTime::CallTime(const char* call) : call_(times() ? call : nullptr)
{
    if (call_)
        start_ = std::chrono::steady_clock::now();
}

CallTime::~CallTime()
{
    if (call_)
        times()->add(call_, std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count());
}

} // namespace tarn::soft
