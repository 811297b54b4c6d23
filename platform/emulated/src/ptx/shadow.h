#pragma once
/// Who used a word of memory last: what races are found by.

#include <atomic>
#include <cstdint>

namespace tarn::ptx {

/// One use of a word, in 64 bits, so that blocks on different cores can leave and read it without a lock.
struct Use
{
    static constexpr unsigned manyBlocks = (1u << 18) - 1, manyThreads = (1u << 11) - 1, atomically = manyThreads - 1;

    std::uint64_t serial : 18; ///< of the launch, never 0
    std::uint64_t block : 18;  ///< number in the grid, modulo 2^18 - 1
    std::uint64_t epoch : 17;  ///< barriers that the block has passed, modulo 2^17
    std::uint64_t thread : 11;
};

inline bool operator==(Use a, Use b)
{
    return a.serial == b.serial && a.block == b.block && a.epoch == b.epoch && a.thread == b.thread;
}

enum class Race
{
    none,
    threads, ///< two threads of a block between the same two barriers
    blocks   ///< two blocks of a launch
};

/// The last uses of a 4-byte word. Of two conflicting uses at a time at least one sees the other: each leaves its own
/// before it looks.
class ShadowWord
{
public:
    Race read(Use use)
    {
        const Use before = read_.load(std::memory_order_relaxed), both = merged(before, use);
        if (!(both == before))
            read_.store(merged(read_.exchange(both), use));
        return between(written_.load(), use);
    }

    Race write(Use use)
    {
        const Use before = written_.exchange(use);
        const Race race = between(before, use);
        return race != Race::none ? race : between(read_.load(), use);
    }

    /// Atomic updates may meet each other, but no plain use.
    Race update(Use use)
    {
        Use update = use;
        update.thread = Use::atomically;
        const Use before = written_.load();
        const bool meets = before.serial == use.serial && before.thread == Use::atomically;
        written_.store(meets ? merged(before, update) : update);
        const Race race = meets ? Race::none : between(before, use);
        return race != Race::none ? race : between(read_.load(), use);
    }

    bool writtenIn(unsigned serial) const { return written_.load(std::memory_order_relaxed).serial == serial; }

private:
    static Race between(Use before, Use now)
    {
        if (before.serial != now.serial)
            return Race::none;
        if (before.block != now.block)
            return Race::blocks;
        return before.epoch == now.epoch && before.thread != now.thread ? Race::threads : Race::none;
    }

    static Use merged(Use before, Use now)
    {
        if (before.serial != now.serial)
            return now;
        if (before.block != now.block)
            now.block = Use::manyBlocks;
        else if (before.epoch == now.epoch && before.thread != now.thread)
            now.thread = Use::manyThreads;
        return now;
    }

    std::atomic<Use> written_{Use{}}, read_{Use{}};
};

} // namespace tarn::ptx
