#include "counters.h"

#include <sstream>
#include <utility>

namespace tarn::ptx {

namespace {

constexpr std::pair<const char*, std::int64_t Counters::*> members[] = {
    {"launches", &Counters::launches},
    {"blocks", &Counters::blocks},
    {"threads", &Counters::threads},
    {"instructions", &Counters::instructions},
    {"barriers", &Counters::barriers},
    {"load_requests", &Counters::loadRequests},
    {"load_sectors", &Counters::loadSectors},
    {"least_load_sectors", &Counters::leastLoadSectors},
    {"store_requests", &Counters::storeRequests},
    {"store_sectors", &Counters::storeSectors},
    {"least_store_sectors", &Counters::leastStoreSectors},
    {"load_batches", &Counters::loadBatches},
    {"batched_loads", &Counters::batchedLoads},
    {"shared_requests", &Counters::sharedRequests},
    {"shared_passes", &Counters::sharedPasses},
    {"least_shared_passes", &Counters::leastSharedPasses},
};

} // namespace

void Counters::add(const Counters& other)
{
    for (const auto& [name, member] : members)
        this->*member += other.*member;
}

void CounterTable::add(const std::string& kernel, const Counters& counters)
{
    const std::lock_guard<std::mutex> lock(mutex_);
    table_[kernel].add(counters);
}

std::map<std::string, Counters> CounterTable::read() const
{
    const std::lock_guard<std::mutex> lock(mutex_);
    return table_;
}

std::string CounterTable::json() const
{
    std::ostringstream text;
    const char* separator = "{";
    for (const auto& [kernel, counters] : read()) {
        text << std::exchange(separator, ",") << "\n \"" << kernel << "\": {";
        const char* comma = "";
        for (const auto& [name, member] : members)
            text << std::exchange(comma, ", ") << '"' << name << "\": " << counters.*member;
        text << '}';
    }
    text << (*separator == '{' ? "{}\n" : "\n}\n");
    return text.str();
}

} // namespace tarn::ptx
