#pragma once
/// Work spread over the cores.

#include <cstddef>
#include <cstdint>
#include <functional>

namespace tarn::soft {

/// Calls body(begin, end) for ranges of at least `grain` indices that together make up [0, count), on any threads, and
/// returns when all are done.
void forRanges(std::int64_t count, std::int64_t grain,
               const std::function<void(std::int64_t begin, std::int64_t end)>& body);

/// memcpy; one core cannot draw the memory's full bandwidth, so large copies use several.
void copyMemory(char* dst, const char* src, std::size_t bytes);

/// Copies `height` rows of `width` bytes whose starts lie a pitch apart, in bytes.
void copyRows(char* dst, std::size_t dstPitch, const char* src, std::size_t srcPitch, std::size_t width,
              std::size_t height);

/// memset, over several cores if large.
void fillMemory(char* dst, int value, std::size_t bytes);

} // namespace tarn::soft
