#pragma once
/// What launches cost a GPU's memory: exact counts, by kernel.

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace tarn::ptx {

/// Requests are instructions of a warp that reach memory; sectors are pieces of 32 bytes.
struct Counters
{
    std::int64_t launches = 0, blocks = 0, threads = 0;                      ///< threads: of all blocks
    std::int64_t instructions = 0;                                           ///< of warps
    std::int64_t barriers = 0;                                               ///< of blocks
    std::int64_t loadRequests = 0, loadSectors = 0, leastLoadSectors = 0;    ///< of device memory
    std::int64_t storeRequests = 0, storeSectors = 0, leastStoreSectors = 0; ///< atomics too
    std::int64_t loadBatches = 0, batchedLoads = 0; ///< a batch: loads up to the first use of what one of them brings
    std::int64_t sharedRequests = 0, sharedPasses = 0, leastSharedPasses = 0; ///< passes over the banks

    void add(const Counters& other);
};

/// Counters of all launches of the process, by kernel.
class CounterTable
{
public:
    void add(const std::string& kernel, const Counters& counters);
    std::map<std::string, Counters> read() const;

    /// The table as JSON: an object of objects.
    std::string json() const;

private:
    mutable std::mutex mutex_;
    std::map<std::string, Counters> table_;
};

} // namespace tarn::ptx
