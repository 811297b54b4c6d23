#include "queue.h"

#include "call_times.h"

#include <algorithm>
#include <chrono>
#include <utility>
#include <vector>

namespace tarn::soft {

namespace {

using Clock = std::chrono::steady_clock;

/// Work that is estimated to take less than this, in ns, does not wake the device's thread: the switch would cost more
/// than the overlap can win. It runs in front of longer work, or when somebody waits. On one or two cores no work wakes
/// it: the device computes on both, and a host that computed beside it would be the third thread on them, whose parts
/// of a product in the CPU BLAS keep both sides waiting.
std::int64_t worthWaking()
{
    static const std::int64_t cost =
        std::thread::hardware_concurrency() > 2 ? 100'000 : std::numeric_limits<std::int64_t>::max();
    return cost;
}

/// How long a waiting thread polls before it sleeps. Kept short: the cores belong to the work that it waits for.
constexpr auto pollTime = std::chrono::microseconds(8);

} // namespace

Queue::~Queue()
{
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        wake_.notify_all();
    }
    if (thread_.joinable())
        thread_.join();
}

Ticket Queue::submit(Work work, cudaStream_t stream)
{
    const std::lock_guard lock(mutex_);
    const Ticket ticket = ++issued_;
    pendingCost_ += work.cost;
    entries_.push_back({ticket, std::move(work), stream, currentCall});
    wakeIfWorthwhile();
    return ticket;
}

cudaError_t Queue::runNow(const std::function<void()>& body, cudaStream_t stream)
{
    Ticket ticket;
    {
        std::unique_lock lock(mutex_);
        ticket = ++issued_;
        if (!executing_ && entries_.empty()) {
            executing_ = true;
            lock.unlock();
            {
                const CallTime time(currentCall);
                body();
            }
            lock.lock();
            complete(ticket, cudaSuccess);
            leaveExecutorRole();
            return takeError(ticket);
        }
        Work work{[&] { return body(), cudaSuccess; }, 0, false};
        entries_.push_back({ticket, std::move(work), stream, currentCall});
    }
    return wait(ticket);
}

cudaError_t Queue::wait(Ticket ticket)
{
    std::unique_lock lock(mutex_);
    waitUntilDone(lock, ticket);
    return takeError(ticket);
}

cudaError_t Queue::settle(Ticket ticket)
{
    std::unique_lock lock(mutex_);
    waitUntilDone(lock, ticket);
    if (!modes_.hold && modes_.order == 0)
        waitUntilAllDone(lock);
    return takeError(ticket);
}

cudaError_t Queue::waitAll()
{
    std::unique_lock lock(mutex_);
    const Ticket last = issued_;
    waitUntilAllDone(lock);
    return takeError(last);
}

void Queue::drain()
{
    std::unique_lock lock(mutex_);
    waitUntilAllDone(lock);
}

void Queue::releaseLate()
{
    const std::lock_guard lock(mutex_);
    for (Entry& entry : entries_)
        entry.work.late = false;
    urgent_ = !entries_.empty();
    wakeIfWorthwhile();
}

void Queue::setModes(const Modes& modes)
{
    const std::lock_guard lock(mutex_);
    if (modes.order != modes_.order)
        random_.seed(modes.order);
    urgent_ = urgent_ || (modes_.hold && !entries_.empty());
    modes_ = modes;
    sticky_ = modes.sticky;
    wakeIfWorthwhile();
}

void Queue::forgetError()
{
    const std::lock_guard lock(mutex_);
    error_ = cudaSuccess;
}

/// The entry to run next: the first one, or, where the order is drawn, one of those that come first in their stream.
/// Work of the default stream waits for all that was issued before, and all that is issued later waits for it.
std::size_t Queue::chooseNext()
{
    if (modes_.order == 0)
        return 0;
    std::vector<std::size_t> candidates;
    std::set<cudaStream_t> seen;
    for (std::size_t i = 0; i < entries_.size() && entries_[i].stream; ++i)
        if (seen.insert(entries_[i].stream).second)
            candidates.push_back(i);
    return candidates.empty() ? 0 : candidates[random_() % candidates.size()];
}

/// Runs one entry without the lock. The caller has the role of executor.
void Queue::executeNext(std::unique_lock<std::mutex>& lock)
{
    const auto next = entries_.begin() + static_cast<std::ptrdiff_t>(chooseNext());
    Entry entry = std::move(*next);
    entries_.erase(next);
    urgent_ = urgent_ && !entries_.empty();
    pendingCost_ -= entry.work.cost;
    lock.unlock();
    const cudaError_t result = [&] {
        const CallTime time(entry.call);
        return entry.work.run();
    }();
    entry.work.run = nullptr;
    lock.lock();
    complete(entry.ticket, result);
}

void Queue::complete(Ticket ticket, cudaError_t result)
{
    if (result != cudaSuccess && error_ == cudaSuccess) {
        error_ = result;
        errorTicket_ = ticket;
    }
    if (ticket == completed_ + 1)
        ++completed_;
    else
        completedAhead_.insert(ticket);
    while (!completedAhead_.empty() && *completedAhead_.begin() == completed_ + 1) {
        completedAhead_.erase(completedAhead_.begin());
        ++completed_;
    }
    if (waiters_ != 0 && ticket >= nextAwaited_) {
        nextAwaited_ = std::numeric_limits<Ticket>::max();
        done_.notify_all();
    }
}

void Queue::leaveExecutorRole()
{
    executing_ = false;
    if (waiters_ != 0)
        done_.notify_all();
    wakeIfWorthwhile();
}

/// Whether the device's own thread may run the first entry.
bool Queue::runnable() const
{
    return !modes_.hold && !entries_.empty() && !(entries_.size() == 1 && entries_.front().work.late);
}

void Queue::wakeIfWorthwhile()
{
    if (!executing_ && runnable() && (urgent_ || modes_.eager || pendingCost_ >= worthWaking()))
        wakeDeviceThread();
}

void Queue::wakeDeviceThread()
{
    if (!thread_.joinable())
        thread_ = std::thread([this] { deviceThread(); });
    if (!std::exchange(awake_, true))
        wake_.notify_one();
}

void Queue::deviceThread()
{
    std::unique_lock lock(mutex_);
    while (true) {
        wake_.wait(lock, [this] { return awake_ || stopping_; });
        if (stopping_)
            return;
        if (!executing_) {
            executing_ = true;
            while (!stopping_ && runnable())
                executeNext(lock);
            leaveExecutorRole();
        }
        awake_ = false;
    }
}

/// Executes until the ticket is done, or waits while another thread does.
void Queue::waitUntilDone(std::unique_lock<std::mutex>& lock, Ticket ticket)
{
    while (!done(ticket)) {
        if (executing_) {
            waitForExecutor(lock, ticket);
            continue;
        }
        executing_ = true;
        while (!done(ticket))
            executeNext(lock);
        leaveExecutorRole();
    }
}

/// The same for all that was issued.
void Queue::waitUntilAllDone(std::unique_lock<std::mutex>& lock)
{
    const Ticket last = issued_;
    waitUntilDone(lock, last);
    while (completed_ < last)
        waitUntilDone(lock, completed_ + 1);
}

/// Waits while another thread executes: until the ticket is done or the role of executor may be free.
void Queue::waitForExecutor(std::unique_lock<std::mutex>& lock, Ticket ticket)
{
    lock.unlock();
    const auto deadline = Clock::now() + pollTime;
    while (completed_ < ticket && Clock::now() < deadline) {
    }
    lock.lock();
    ++waiters_;
    while (executing_ && !done(ticket)) {
        nextAwaited_ = std::min(nextAwaited_, ticket);
        done_.wait(lock);
    }
    --waiters_;
}

cudaError_t Queue::takeError(Ticket ticket)
{
    if (errorTicket_ > ticket)
        return cudaSuccess;
    return sticky_ ? error_.load() : error_.exchange(cudaSuccess);
}

} // namespace tarn::soft
