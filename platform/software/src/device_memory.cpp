#include "device_memory.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>

#include "checks.h"

namespace tarn::soft {

namespace {

/// Freed memory that may stay resident, in bytes: a routine that takes and returns the same large workspace again and
/// again should not pay for its pages each time.
constexpr std::size_t residentLimit = checked ? std::numeric_limits<std::size_t>::max() : std::size_t{1} << 30;

std::atomic<bool> poisoning{checked};
std::mutex countsMutex;
MemoryCounts counts;

void countAllocation(std::size_t bytes)
{
    const std::lock_guard lock(countsMutex);
    ++counts.allocations;
    counts.bytes += bytes;
    counts.peakBytes = std::max(counts.peakBytes, counts.bytes);
}

void countRelease(std::size_t bytes)
{
    const std::lock_guard lock(countsMutex);
    --counts.allocations;
    counts.bytes -= bytes;
}

std::size_t roundUp(std::size_t bytes)
{
    return (bytes + DeviceMemory::alignment - 1) / DeviceMemory::alignment * DeviceMemory::alignment;
}

/// Address space for a capacity. A GPU maps scattered pages into one range; here the spare space is what keeps
/// fragmentation from refusing memory that is there.
std::size_t arenaBytes(std::size_t capacity) { return 2 * roundUp(capacity) + (std::size_t{64} << 20); }

} // namespace

MemoryCounts deviceMemoryCounts()
{
    const std::lock_guard lock(countsMutex);
    return counts;
}

void resetPeakBytes()
{
    const std::lock_guard lock(countsMutex);
    counts.peakBytes = counts.bytes;
}

void setPoison(bool poison) { poisoning = poison || checked; }

DeviceMemory::DeviceMemory(std::size_t capacity)
    : capacity_(capacity), arena_(arenaBytes(capacity)), free_(arena_.bytes())
{}

std::size_t DeviceMemory::blockBytes(std::size_t bytes) const { return guardBytes + roundUp(bytes) + guardBytes; }

void* DeviceMemory::allocate(std::size_t bytes)
{
    std::size_t offset;
    {
        const std::lock_guard lock(mutex_);
        if (bytes > capacity_ || roundUp(bytes) > capacity_ - used_)
            return nullptr;
        const auto block = free_.take(blockBytes(bytes));
        if (!block)
            return nullptr;
        offset = *block + guardBytes;
        live_.emplace(offset, bytes);
        used_ += roundUp(bytes);
    }
    countAllocation(bytes);
    char* address = arena_.outer(offset);
    char* memory = arena_.inner(address);
    if (poisoning.load(std::memory_order_relaxed))
        poison(memory, bytes);
    if (checked) {
        setGuard(memory - guardBytes, guardBytes);
        setGuard(memory + bytes, roundUp(bytes) - bytes + guardBytes);
    }
    return address;
}

bool DeviceMemory::release(void* address)
{
    const std::size_t offset = arena_.offsetOf(address);
    const std::lock_guard lock(mutex_);
    const auto found = live_.find(offset);
    if (found == live_.end())
        return false;
    const std::size_t bytes = found->second;
    live_.erase(found);
    used_ -= roundUp(bytes);
    countRelease(bytes);
    if (checked) {
        verifyGuards(arena_.inner(address), bytes);
        poison(arena_.inner(address), bytes);
    }
    const std::size_t block = blockBytes(bytes);
    const bool keep = free_.resident() < residentLimit && block <= residentLimit - free_.resident();
    if (!keep)
        arena_.discard(offset - guardBytes, block);
    free_.give(offset - guardBytes, block, keep ? block : 0);
    return true;
}

void DeviceMemory::verifyGuards(const char* memory, std::size_t bytes) const
{
    const std::size_t behind = roundUp(bytes) - bytes + guardBytes;
    const std::size_t before = firstBrokenByte(memory - guardBytes, guardBytes);
    const std::size_t after = firstBrokenByte(memory + bytes, behind);
    if (before == guardBytes && after == behind)
        return;
    if (before != guardBytes)
        std::fprintf(stderr, "softdev: device allocation of %zu bytes was written %zu bytes before its start\n", bytes,
                     guardBytes - before);
    else
        std::fprintf(stderr, "softdev: device allocation of %zu bytes was written %zu bytes past its end\n", bytes,
                     after + 1);
    std::abort();
}

/// The last allocation that starts at or before the offset; the end if there is none. The caller holds the mutex.
std::map<std::size_t, std::size_t>::const_iterator DeviceMemory::before(std::size_t offset) const
{
    const auto above = live_.upper_bound(offset);
    return above == live_.begin() ? live_.end() : std::prev(above);
}

bool DeviceMemory::holds(const void* address, std::size_t bytes) const
{
    if (!arena_.owns(address))
        return false;
    const std::size_t offset = arena_.offsetOf(address);
    const std::lock_guard lock(mutex_);
    const auto found = before(offset);
    if (found == live_.end())
        return false;
    const auto [begin, size] = *found;
    return offset - begin <= size && bytes <= size - (offset - begin);
}

std::pair<const void*, std::size_t> DeviceMemory::allocationAt(const void* address) const
{
    if (!arena_.owns(address))
        return {nullptr, 0};
    const std::size_t offset = arena_.offsetOf(address);
    const std::lock_guard lock(mutex_);
    const auto found = before(offset);
    if (found == live_.end() || offset - found->first >= found->second)
        return {nullptr, 0};
    return {arena_.outer(found->first), found->second};
}

} // namespace tarn::soft
