#pragma once
/// The schedule of one device.

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <mutex>
#include <random>
#include <set>
#include <thread>

#include "checks.h"
#include "cuda_runtime.h"

namespace tarn::soft {

/// Place of a piece of work in the order of issue, counted from 1.
using Ticket = std::uint64_t;

/// How queues run their work; see softdev.h.
struct Modes
{
    bool hold = checked;
    bool eager = false;
    unsigned order = 0; ///< seed; 0: of issue
#ifdef TARN_EMULATED_GPU
    bool sticky = true;
#else
    bool sticky = false;
#endif
};

/// One piece of queued work.
struct Work
{
    std::function<cudaError_t()> run; ///< what it returns other than cudaSuccess is an execution failure
    std::int64_t cost;                ///< estimated run time, ns
    bool late;                        ///< at the tail of the queue, wait until more is queued or somebody waits
};

/// Work in the order of issue, which is also the order of execution: with the legacy default stream every stream waits
/// for the default stream and the default stream for all, so that one queue for all streams is a legal schedule. Other
/// legal ones can be drawn (setOrder).
///
/// Whoever executes holds the role of executor, one thread at a time. The device's own thread takes it when there is
/// work worth waking it for; a thread that waits takes it when it is free, so that a short call costs no switch of
/// threads. An execution failure is kept until a wait that covers it returns it, or for good if failures are sticky.
class Queue
{
public:
    Queue() = default;
    ~Queue();
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;

    /// Appends work of a stream, null being the default stream, and returns at once.
    Ticket submit(Work work, cudaStream_t stream = nullptr);

    /// Waits for everything that the stream waits for, runs `body`, and returns a failure among all that.
    cudaError_t runNow(const std::function<void()>& body, cudaStream_t stream = nullptr);

    /// Waits until the work with this ticket is done. Returns the failure of an execution up to it, once.
    cudaError_t wait(Ticket ticket);

    /// Waits until the work with this ticket is done and, unless work is held back, until nothing else is under way:
    /// the caller is about to compute on the cores that the device computes on. A CPU BLAS shares one set of threads
    /// between callers, who spin until they get them; taking turns is faster than that.
    cudaError_t settle(Ticket ticket);

    /// Waits for everything issued so far.
    cudaError_t waitAll();

    /// The same, but leaves a failure for the next wait.
    void drain();

    /// Lets late work run although nobody waits for it: its stream is gone.
    void releaseLate();

    void setModes(const Modes& modes);
    void forgetError();

    /// The failure that stays, where failures are sticky and one has happened; else cudaSuccess.
    cudaError_t stuck() const { return sticky_ ? error_.load() : cudaSuccess; }

private:
    struct Entry
    {
        Ticket ticket;
        Work work;
        cudaStream_t stream;
        const char* call;
    };

    void deviceThread();
    void executeNext(std::unique_lock<std::mutex>& lock);
    std::size_t chooseNext();
    void complete(Ticket ticket, cudaError_t result);
    void leaveExecutorRole();
    bool runnable() const;
    void wakeIfWorthwhile();
    void wakeDeviceThread();
    bool done(Ticket ticket) const { return completed_ >= ticket || completedAhead_.count(ticket) != 0; }
    void waitUntilDone(std::unique_lock<std::mutex>& lock, Ticket ticket);
    void waitUntilAllDone(std::unique_lock<std::mutex>& lock);
    void waitForExecutor(std::unique_lock<std::mutex>& lock, Ticket ticket);
    cudaError_t takeError(Ticket ticket);

    std::mutex mutex_;
    std::deque<Entry> entries_;
    Ticket issued_ = 0;
    std::atomic<Ticket> completed_{0}; ///< this and all before it are done
    std::set<Ticket> completedAhead_;  ///< done before one that was issued earlier
    std::int64_t pendingCost_ = 0;     ///< of the entries, ns
    bool executing_ = false;           ///< some thread has the role of executor
    bool urgent_ = false;              ///< the entries are to run soon, however small they are
    Modes modes_;
    std::minstd_rand random_;

    std::condition_variable done_;
    int waiters_ = 0;
    Ticket nextAwaited_ =
        std::numeric_limits<Ticket>::max(); ///< completing this ticket or a later one is news to a waiter

    std::condition_variable wake_;
    std::thread thread_;
    bool awake_ = false;
    bool stopping_ = false;

    std::atomic<bool> sticky_{Modes().sticky};
    std::atomic<cudaError_t> error_{cudaSuccess};
    Ticket errorTicket_ = 0;
};

} // namespace tarn::soft
