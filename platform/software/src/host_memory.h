#pragma once
/// Page-locked host memory. Every host page here is as good as page-locked; what counts is which ranges were asked for
/// as such, since asynchronous copies are asynchronous for those only.

#include <cstddef>

namespace tarn::soft {

struct HostMemoryCounts
{
    std::size_t allocations = 0, bytes = 0;
};

HostMemoryCounts hostMemoryCounts();

/// Page-aligned host memory of `bytes` > 0 bytes; null if there is none.
void* allocatePageLocked(std::size_t bytes);

/// Ends the allocation that starts at `address`; false if none does.
bool releasePageLocked(void* address);

enum class HostRange
{
    pageable,
    pageLocked,
    crossing, ///< starts in a page-locked allocation and ends outside it
};

HostRange classifyHostRange(const void* address, std::size_t bytes);

} // namespace tarn::soft
