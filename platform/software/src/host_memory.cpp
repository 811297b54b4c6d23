#include "host_memory.h"

#include <cstdint>
#include <cstdlib>
#include <iterator>
#include <map>
#include <mutex>

namespace tarn::soft {

namespace {

constexpr std::size_t pageBytes = 4096;

std::mutex mutex;
std::map<std::uintptr_t, std::size_t> live; ///< address -> bytes
std::size_t liveBytes = 0;

} // namespace

HostMemoryCounts hostMemoryCounts()
{
    const std::lock_guard lock(mutex);
    return {live.size(), liveBytes};
}

void* allocatePageLocked(std::size_t bytes)
{
    void* address = nullptr;
    if (posix_memalign(&address, pageBytes, bytes) != 0)
        return nullptr;
    const std::lock_guard lock(mutex);
    live.emplace(reinterpret_cast<std::uintptr_t>(address), bytes);
    liveBytes += bytes;
    return address;
}

bool releasePageLocked(void* address)
{
    {
        const std::lock_guard lock(mutex);
        const auto found = live.find(reinterpret_cast<std::uintptr_t>(address));
        if (found == live.end())
            return false;
        liveBytes -= found->second;
        live.erase(found);
    }
    std::free(address);
    return true;
}

HostRange classifyHostRange(const void* address, std::size_t bytes)
{
    const auto first = reinterpret_cast<std::uintptr_t>(address);
    const std::lock_guard lock(mutex);
    const auto above = live.upper_bound(first);
    if (above == live.begin())
        return HostRange::pageable;
    const auto [begin, size] = *std::prev(above);
    if (first - begin >= size)
        return HostRange::pageable;
    return bytes <= size - (first - begin) ? HostRange::pageLocked : HostRange::crossing;
}

} // namespace tarn::soft
