#include "parallel.h"

#include <algorithm>
#include <cstring>

#include <oneapi/tbb/blocked_range.h>
#include <oneapi/tbb/parallel_for.h>

// There only in programs that run under the thread sanitizer.
extern "C" __attribute__((weak)) void __tsan_acquire(void* address);
extern "C" __attribute__((weak)) void __tsan_release(void* address);

namespace tarn::soft {

namespace {

// The scheduler synchronises inside a library that the sanitizer does not see through, so this file is compiled without
// it and tells it what holds: what stood before forRanges happens before every range, and every range before what
// follows.
void acquire(void* order)
{
    if (__tsan_acquire)
        __tsan_acquire(order);
}

void release(void* order)
{
    if (__tsan_release)
        __tsan_release(order);
}

constexpr std::size_t parallelBytes = std::size_t{4} << 20; ///< a copy below this size is faster on one core
constexpr std::size_t sliceBytes = std::size_t{1} << 20;    ///< least share of a core

template <class Slice>
void forSlices(std::size_t bytes, const Slice& slice)
{
    if (bytes < parallelBytes) {
        slice(0, bytes);
        return;
    }
    const auto count = static_cast<std::int64_t>((bytes + sliceBytes - 1) / sliceBytes);
    forRanges(count, 1, [&](std::int64_t begin, std::int64_t end) {
        const std::size_t first = static_cast<std::size_t>(begin) * sliceBytes;
        slice(first, std::min(bytes, static_cast<std::size_t>(end) * sliceBytes) - first);
    });
}

/// The rows of a rectangle of Width bytes each: with one element each it is a row of a matrix.
template <std::size_t Width>
void copyNarrowRows(char* dst, std::size_t dstPitch, const char* src, std::size_t srcPitch, std::size_t height)
{
    for (std::size_t row = 0; row != height; ++row)
        std::memcpy(dst + row * dstPitch, src + row * srcPitch, Width);
}

/// The rows of a rectangle, one after the other.
void copyRowsInTurn(char* dst, std::size_t dstPitch, const char* src, std::size_t srcPitch, std::size_t width,
                    std::size_t height)
{
    switch (width) {
    case 4:
        return copyNarrowRows<4>(dst, dstPitch, src, srcPitch, height);
    case 8:
        return copyNarrowRows<8>(dst, dstPitch, src, srcPitch, height);
    case 16:
        return copyNarrowRows<16>(dst, dstPitch, src, srcPitch, height);
    default:
        for (std::size_t row = 0; row != height; ++row)
            std::memcpy(dst + row * dstPitch, src + row * srcPitch, width);
    }
}

} // namespace

void forRanges(std::int64_t count, std::int64_t grain,
               const std::function<void(std::int64_t begin, std::int64_t end)>& body)
{
    char starts, ends;
    release(&starts);
    tbb::parallel_for(tbb::blocked_range<std::int64_t>(0, count, static_cast<std::size_t>(grain)),
                      [&](const tbb::blocked_range<std::int64_t>& range) {
                          acquire(&starts);
                          body(range.begin(), range.end());
                          release(&ends);
                      });
    acquire(&ends);
}

void copyMemory(char* dst, const char* src, std::size_t bytes)
{
    forSlices(bytes, [=](std::size_t first, std::size_t size) { std::memcpy(dst + first, src + first, size); });
}

void copyRows(char* dst, std::size_t dstPitch, const char* src, std::size_t srcPitch, std::size_t width,
              std::size_t height)
{
    if (dstPitch == width && srcPitch == width) {
        copyMemory(dst, src, width * height);
        return;
    }
    if (width * height < parallelBytes) {
        copyRowsInTurn(dst, dstPitch, src, srcPitch, width, height);
        return;
    }
    const auto grain = static_cast<std::int64_t>(sliceBytes / width + 1);
    forRanges(static_cast<std::int64_t>(height), grain, [=](std::int64_t begin, std::int64_t end) {
        const auto first = static_cast<std::size_t>(begin), last = static_cast<std::size_t>(end);
        copyRowsInTurn(dst + first * dstPitch, dstPitch, src + first * srcPitch, srcPitch, width, last - first);
    });
}

void fillMemory(char* dst, int value, std::size_t bytes)
{
    forSlices(bytes, [=](std::size_t first, std::size_t size) { std::memset(dst + first, value, size); });
}

} // namespace tarn::soft
