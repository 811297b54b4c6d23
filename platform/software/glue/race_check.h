// The race check: under the thread sanitizer every thread of a block is a fiber of its own to the sanitizer, so that
// accesses of two threads between the same two syncs are reported with their source lines, like those of host threads.
// One host thread still runs them one after the other. Blocks are not checked against each other. Without the
// sanitizer, or where the check is not enabled, nothing of this remains.
#pragma once

#ifdef __SANITIZE_THREAD__

#    include <pthread.h>
#    include <sanitizer/tsan_interface.h>

#    include <cstddef>
#    include <mutex>
#    include <string>
#    include <vector>

extern "C" void AnnotateBenignRaceSized(const char* file, int line, const volatile void* address, std::size_t size,
                                        const char* description);

namespace tarn::race {

/// Whether this build can check.
inline constexpr bool built = true;

/// Whether launches are checked. Set before the first launch; a checked kernel takes some thousand times as long.
inline bool enabled = false;

/// The threads of the block that runs. Blocks take turns, so that few fibers serve all: the sanitizer's cost of a
/// barrier grows with the square of their number.
///
/// What orders fibers are two gates. In phase group e, the phases between two syncs, every fiber enters by gate e mod 2
/// and leaves through the other one; whoever leaves is thereby ordered before whoever enters in group e + 1. The
/// bookkeeping itself is the host thread's: fibers touch nothing of it but the gates' addresses.
class BlockThreads
{
public:
    /// Those of the block that the calling host thread runs, null outside of runBlock.
    static BlockThreads*& current()
    {
        static thread_local BlockThreads* threads = nullptr;
        return threads;
    }

    /// runKernel() as one block.
    template <class RunKernel>
    static void runBlock(const RunKernel& runKernel)
    {
        BlockThreads& threads = theOnly();
        const std::lock_guard<std::mutex> turn(threads.turn_);
        ignoreStackBelow(static_cast<char*>(__builtin_frame_address(0)));
        threads.group_ = 0;
        threads.hasRun_ = false;
        threads.entered_.assign(threads.entered_.size(), -1);
        __tsan_release(&threads.gates_[0]);
        current() = &threads;
        runKernel();
        current() = nullptr;
        __tsan_acquire(&threads.gates_[0]);
        __tsan_acquire(&threads.gates_[1]);
    }

    /// phase() as thread t.
    template <class Phase>
    void runThread(int t, const Phase& phase)
    {
        while (int(fibers_.size()) <= t)
            addFiber();
        const bool enters = entered_[std::size_t(t)] != group_;
        entered_[std::size_t(t)] = group_;
        hasRun_ = true;
        void* const host = __tsan_get_current_fiber();
        void *const in = &gates_[group_ % 2], *const out = &gates_[(group_ + 1) % 2];
        __tsan_switch_to_fiber(fibers_[std::size_t(t)], __tsan_switch_to_fiber_no_sync);
        if (enters)
            __tsan_acquire(in);
        phase();
        __tsan_release(out);
        __tsan_switch_to_fiber(host, __tsan_switch_to_fiber_no_sync);
    }

    void sync()
    {
        group_ += hasRun_;
        hasRun_ = false;
    }

private:
    BlockThreads() = default;

    /// Never destroyed: a launch may run until the very end of the process.
    static BlockThreads& theOnly()
    {
        static BlockThreads& threads = *new BlockThreads;
        return threads;
    }

    /// The fiber of the next thread, under the name by which reports call it.
    void addFiber()
    {
        void* const fiber = __tsan_create_fiber(0);
        __tsan_set_fiber_name(fiber, ("device thread " + std::to_string(fibers_.size())).c_str());
        fibers_.push_back(fiber);
        entered_.push_back(-1);
    }

    /// Locals of a kernel and of its phases are registers on a GPU. Here they share the host thread's stack, where the
    /// same address serves one thread after the other. __shared__ arrays lie elsewhere, above all frames.
    static void ignoreStackBelow(char* frame)
    {
        static thread_local char* ignoredTo = lowEndOfStack();
        if (!ignoredTo || frame <= ignoredTo)
            return;
        AnnotateBenignRaceSized(__FILE__, __LINE__, ignoredTo, std::size_t(frame - ignoredTo),
                                "registers of device threads");
        ignoredTo = frame;
    }

    /// Null if it cannot be known.
    static char* lowEndOfStack()
    {
        pthread_attr_t attributes;
        void* low = nullptr;
        std::size_t size = 0;
        if (pthread_getattr_np(pthread_self(), &attributes) != 0)
            return nullptr;
        pthread_attr_getstack(&attributes, &low, &size);
        pthread_attr_destroy(&attributes);
        return static_cast<char*>(low);
    }

    std::mutex turn_;
    std::vector<void*> fibers_;
    std::vector<int> entered_; ///< group in which each thread was last ordered behind the others
    char gates_[2] = {};
    int group_ = 0;
    bool hasRun_ = false; ///< a phase has run since the last sync
};

/// run() as one block of threads.
template <class Run>
void block(const Run& run)
{
    if (enabled)
        BlockThreads::runBlock(run);
    else
        run();
}

/// phase() as thread t of the block.
template <class Phase>
inline __attribute__((always_inline)) void thread(int t, const Phase& phase)
{
    if (BlockThreads* const threads = BlockThreads::current())
        threads->runThread(t, phase);
    else
        phase();
}

/// The barrier of the block.
inline void sync()
{
    if (BlockThreads* const threads = BlockThreads::current())
        threads->sync();
}

} // namespace tarn::race

#else

namespace tarn::race {

inline constexpr bool built = false;

template <class Run>
void block(const Run& run)
{
    run();
}

template <class Phase>
inline __attribute__((always_inline)) void thread(int, const Phase& phase)
{
    phase();
}

inline void sync() {}

} // namespace tarn::race

#endif
