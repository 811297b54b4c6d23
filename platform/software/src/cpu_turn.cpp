#include "cpu_turn.h"

#include <mutex>

namespace tarn::soft {

/// Never destroyed: the last products may run while the process ends.
static std::mutex& turn()
{
    static auto& mutex = *new std::mutex;
    return mutex;
}

void takeCpuTurn() { turn().lock(); }

void leaveCpuTurn() noexcept { turn().unlock(); }

} // namespace tarn::soft
