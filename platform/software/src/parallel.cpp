#include "parallel.h"

#include <oneapi/tbb/blocked_range.h>
#include <oneapi/tbb/parallel_for.h>

#include <sched.h>

#include <thread>

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

/// Moves the calling thread to another core, if it is on this one and may run elsewhere. It may run anywhere
/// afterwards, as before.
void leaveCore(int core)
{
    cpu_set_t allowed;
    if (sched_getcpu() != core || sched_getaffinity(0, sizeof allowed, &allowed) != 0)
        return;
    cpu_set_t others = allowed;
    CPU_CLR(static_cast<unsigned>(core), &others);
    if (CPU_COUNT(&others) == 0)
        return;
    sched_setaffinity(0, sizeof others, &others);
    sched_setaffinity(0, sizeof allowed, &allowed);
}

} // namespace

void forRanges(std::int64_t count, std::int64_t grain,
               const std::function<void(std::int64_t begin, std::int64_t end)>& body)
{
    char starts, ends;
    release(&starts);
    const std::thread::id caller = std::this_thread::get_id();
    const int callersCore = sched_getcpu();
    tbb::parallel_for(tbb::blocked_range<std::int64_t>(0, count, static_cast<std::size_t>(grain)),
                      [&](const tbb::blocked_range<std::int64_t>& range) {
                          acquire(&starts);
                          // Where idle threads of a CPU BLAS poll for work all cores look busy, and a worker may wake
                          // up on the caller's: the two would share it until the system moves one, some 20 ms later.
                          if (std::this_thread::get_id() != caller)
                              leaveCore(callersCore);
                          body(range.begin(), range.end());
                          release(&ends);
                      });
    acquire(&ends);
}

} // namespace tarn::soft
