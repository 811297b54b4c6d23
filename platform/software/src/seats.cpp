#include "seats.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <list>
#include <mutex>
#include <thread>

namespace tarn::soft {

namespace {

constexpr auto patience = std::chrono::milliseconds(100);

struct Waiting
{
    std::condition_variable called;
    bool seated = false;
};

struct Room
{
    std::mutex mutex;
    int free = seats();
    std::list<Waiting> line;
};

/// Never destroyed: routines may run while the process ends.
Room& room()
{
    static auto& room = *new Room;
    return room;
}

} // namespace

int seats() { return std::max(1, static_cast<int>(std::thread::hardware_concurrency()) / 2); }

bool takeSeat()
{
    Room& r = room();
    std::unique_lock lock(r.mutex);
    if (r.free > 0) {
        --r.free;
        return true;
    }
    const auto self = r.line.emplace(r.line.end());
    self->called.wait_for(lock, patience, [&] { return self->seated; });
    const bool seated = self->seated;
    r.line.erase(self);
    return seated;
}

void leaveSeat() noexcept
{
    Room& r = room();
    const std::lock_guard lock(r.mutex);
    const auto next = std::find_if(r.line.begin(), r.line.end(), [](const Waiting& w) { return !w.seated; });
    if (next == r.line.end()) {
        ++r.free;
        return;
    }
    next->seated = true;
    next->called.notify_one();
}

} // namespace tarn::soft
