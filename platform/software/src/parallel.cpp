#include "parallel.h"

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

} // namespace tarn::soft
