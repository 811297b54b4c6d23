#include "memory_copy.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "parallel.h"

// The sanitizers watch memcpy; stores past the caches they would not see.
#if defined(__SSE2__) && !defined(__SANITIZE_THREAD__) && !defined(__SANITIZE_ADDRESS__)
#    define TARN_SOFTDEV_STREAMS
#    include <emmintrin.h>
#endif

namespace tarn::soft {

namespace {

constexpr std::size_t parallelBytes = std::size_t{4} << 20; ///< a copy below this size is faster on one core
constexpr std::size_t sliceBytes = std::size_t{1} << 20;    ///< least share of a core
constexpr std::size_t streamedWidth = 1024;                 ///< shorter rows of a large copy go through the caches

/// memcpy of part of a large copy. It stores past the caches, which saves reading what is overwritten: a third of the
/// traffic.
#ifdef TARN_SOFTDEV_STREAMS
void copyPastCaches(char* dst, const char* src, std::size_t bytes)
{
    constexpr std::size_t line = 64, ahead = 8 * line;
    const std::size_t head = std::min<std::size_t>(bytes, -reinterpret_cast<std::uintptr_t>(dst) % line);
    std::memcpy(dst, src, head);
    std::size_t done = head;
    for (; done + line <= bytes; done += line) {
        _mm_prefetch(src + done + ahead, _MM_HINT_T0);
        const auto* from = reinterpret_cast<const __m128i*>(src + done);
        auto* to = reinterpret_cast<__m128i*>(dst + done);
        const __m128i a = _mm_loadu_si128(from), b = _mm_loadu_si128(from + 1);
        const __m128i c = _mm_loadu_si128(from + 2), d = _mm_loadu_si128(from + 3);
        _mm_stream_si128(to, a);
        _mm_stream_si128(to + 1, b);
        _mm_stream_si128(to + 2, c);
        _mm_stream_si128(to + 3, d);
    }
    _mm_sfence();
    std::memcpy(dst + done, src + done, bytes - done);
}
#else
void copyPastCaches(char* dst, const char* src, std::size_t bytes) { std::memcpy(dst, src, bytes); }
#endif

/// slice(first, size) for slices of `bytes` bytes, over the cores.
template <class Slice>
void forSlices(std::size_t bytes, const Slice& slice)
{
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

/// Rows of a large rectangle.
void copyManyRows(char* dst, std::size_t dstPitch, const char* src, std::size_t srcPitch, std::size_t width,
                  std::size_t height)
{
    if (width < streamedWidth)
        copyRowsInTurn(dst, dstPitch, src, srcPitch, width, height);
    else
        for (std::size_t row = 0; row != height; ++row)
            copyPastCaches(dst + row * dstPitch, src + row * srcPitch, width);
}

} // namespace

void copyMemory(char* dst, const char* src, std::size_t bytes)
{
    if (bytes < parallelBytes)
        std::memcpy(dst, src, bytes);
    else
        forSlices(bytes, [=](std::size_t first, std::size_t size) { copyPastCaches(dst + first, src + first, size); });
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
        copyManyRows(dst + first * dstPitch, dstPitch, src + first * srcPitch, srcPitch, width, last - first);
    });
}

void fillMemory(char* dst, int value, std::size_t bytes)
{
    if (bytes < parallelBytes)
        std::memset(dst, value, bytes);
    else
        forSlices(bytes, [=](std::size_t first, std::size_t size) { std::memset(dst + first, value, size); });
}

} // namespace tarn::soft
