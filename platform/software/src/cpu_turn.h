#pragma once
/// Turns on the threads of the CPU BLAS: the device's products take them, and what the host computes beside. Idle
/// threads of such a library spin: two calls at a time each take many times as long as one after the other.

namespace tarn::soft {

void takeCpuTurn();
void leaveCpuTurn() noexcept;

/// Holds the turn while it lives, for work that is worth several threads.
class CpuTurn
{
public:
    explicit CpuTurn(bool wanted) : taken_(wanted)
    {
        if (taken_)
            takeCpuTurn();
    }
    ~CpuTurn()
    {
        if (taken_)
            leaveCpuTurn();
    }
    CpuTurn(const CpuTurn&) = delete;
    CpuTurn& operator=(const CpuTurn&) = delete;

private:
    const bool taken_;
};

} // namespace tarn::soft
