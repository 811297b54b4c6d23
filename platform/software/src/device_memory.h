#pragma once
/// The memory of one device: what is allocated in its arena.

#include <atomic>
#include <cstddef>
#include <map>
#include <mutex>
#include <utility>

#include "arena.h"
#include "free_space.h"

namespace tarn::soft {

/// Allocations of all devices together; bytes are those that were asked for.
struct MemoryCounts
{
    std::size_t allocations = 0, bytes = 0, peakBytes = 0;
};

MemoryCounts deviceMemoryCounts();
void resetPeakBytes();
void setPoison(bool poison);

/// Allocator over an arena. Its methods may be called from any thread.
class DeviceMemory
{
public:
    /// Alignment of every allocation, in bytes, and the unit in which capacity is counted.
    static constexpr std::size_t alignment = 256;

    explicit DeviceMemory(std::size_t capacity);

    /// Address of `bytes` fresh bytes, bytes > 0; null if they do not fit.
    void* allocate(std::size_t bytes);

    /// Ends the allocation that starts at `address`; false if none does. A checked build aborts, with a message, if
    /// something wrote past its ends.
    bool release(void* address);

    /// Whether [address, address + bytes) lies inside one live allocation.
    bool holds(const void* address, std::size_t bytes) const;

    /// Start and bytes of the live allocation that holds the address; no bytes if none does.
    std::pair<const void*, std::size_t> allocationAt(const void* address) const;

    /// The addresses of the device; any may be asked about.
    const Arena& arena() const { return arena_; }

private:
    std::size_t blockBytes(std::size_t bytes) const;
    std::map<std::size_t, std::size_t>::const_iterator before(std::size_t offset) const;
    void verifyGuards(const char* memory, std::size_t bytes) const;

    const std::size_t capacity_;
    Arena arena_;
    mutable std::mutex mutex_;
    FreeSpace free_;
    std::map<std::size_t, std::size_t> live_; ///< offset -> bytes
    std::size_t used_ = 0;                    ///< bytes, each allocation rounded up to the alignment
};

} // namespace tarn::soft
