#pragma once
/// Runs the blocks of a launch. The threads of a block go through the code together, an instruction at a time, in
/// lanes; where they part, those that are furthest behind go first, so that they meet again.

#include <array>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include <tarndev/Independent>

#include "counters.h"
#include "program.h"
#include "shadow.h"

namespace tarn::ptx {

struct Extent
{
    unsigned x, y, z;
};

/// A live allocation of device memory. Its words are written and read at `data`.
struct Allocation
{
    std::uint64_t begin = 0, end = 0; ///< device addresses
    char* data = nullptr;             ///< of `begin`
    ShadowWord* shadow = nullptr;     ///< of the word that holds `begin`, which is divisible by 4
};

class Memory
{
public:
    virtual ~Memory() = default;

    /// The allocation that holds the address; an empty one if none does.
    virtual Allocation find(std::uint64_t address) = 0;
};

struct Launch
{
    const Kernel* kernel;
    Extent grid, block;
    std::vector<char> parameters; ///< of kernel->parameterBytes bytes
    Memory* memory;
    unsigned serial;                  ///< 1 to 2^18 - 1, of no other launch that left its uses in the shadow
    std::uint32_t unwritten;          ///< stands in every 4 bytes of device memory that nobody has written
    bool checks = true;               ///< races, and uses of what nobody wrote
    CounterTable* counters = nullptr; ///< null: nothing is counted
};

/// What a kernel must not do, and where it did it.
class Fault : public std::runtime_error
{
public:
    enum class Kind
    {
        address,    ///< outside of what is allocated
        misaligned, ///< not divisible by the size of the access
        other
    };

    Fault(Kind faultKind, const std::string& report) : runtime_error(report), kind(faultKind) {}

    const Kind kind;
};

class ThreadBlock
{
public:
    explicit ThreadBlock(const Launch& launch);

    /// Runs one block. Throws Fault.
    void run(Extent index);

    /// Hands the counts over to the launch's table.
    void deliverCounters();

    // What the instructions need.

    enum class Space
    {
        global,
        shared,
        local,
        parameters
    };
    enum class Access
    {
        read,
        write,
        update ///< atomic
    };

    /// The values of a row, one for each thread. T has the row's width.
    template <class T>
    T* row(int index)
    {
        return reinterpret_cast<T*>(rowBegin(index));
    }

    /// visit(t) for every active thread; they do not touch each other's places.
    template <class Visit>
    void forActive(const Visit& visit) const
    {
        if (int(active_->size()) == threads_) {
            TARN_INDEPENDENT
            for (int t = 0; t < threads_; ++t)
                visit(t);
        } else {
            for (const int t : *active_)
                visit(t);
        }
    }

    /// Where the instruction finds its `bytes` bytes for thread t.
    char* reach(Space space, Access access, const Instruction& instruction, int t, int bytes);

    /// Leaves a loaded value in a row, which may be wider than the value.
    template <class T>
    void put(int index, int t, T value)
    {
        char* const place = rowBegin(index) + std::int64_t{t} * rowBytes(index);
        if constexpr (std::is_integral_v<T>) {
            const auto wide = std::int64_t(value);
            std::memcpy(place, &wide, std::size_t(rowBytes(index)));
        } else {
            std::memcpy(place, &value, sizeof value);
        }
    }

    /// A value to be stored: the lower bytes of a row.
    template <class T>
    T get(int index, int t)
    {
        T value;
        std::memcpy(&value, rowBegin(index) + std::int64_t{t} * rowBytes(index), sizeof value);
        return value;
    }

    /// Refuses to compute with what was loaded from device memory that nobody has written. To move it is allowed.
    template <class T>
    void requireWritten(int index, const Instruction& instruction);

    /// Counts an access of the active threads; before they make it.
    void count(Space space, Access access, const Instruction& instruction, int bytes);

private:
    using Threads = std::vector<int>; ///< in increasing order

    /// Threads that stand at the same instruction.
    struct Group
    {
        int next;
        Threads threads;
    };

    int rowBytes(int index) const { return kernel_.rows[std::size_t(index)].bytes; }
    char* rowBegin(int index)
    {
        return reinterpret_cast<char*>(registers_.data()) + kernel_.rows[std::size_t(index)].offset * threads_;
    }

    void fillThreadIndices();
    void fillBlockIndices();
    Group takeFurthestBehind(int& limit);
    void advance(Group group, int limit);
    bool control(Group& group, const Instruction& instruction);
    void part(const Threads& threads, const Instruction& instruction, Threads& holds, Threads& others);
    void passBarrier();

    std::uint64_t address(const Instruction& instruction, int t);
    char* inGlobal(Access access, const Instruction& instruction, int t, std::uint64_t address, int bytes);
    char* inShared(Access access, const Instruction& instruction, int t, std::uint64_t address, int bytes);
    char* inLocal(const Instruction& instruction, int t, std::uint64_t address, int bytes);
    char* inParameters(const Instruction& instruction, int t, std::uint64_t address, int bytes);
    const Allocation* allocation(std::uint64_t address, int bytes);
    void note(ShadowWord* words, unsigned serial, Access access, const Instruction& instruction, int t, int bytes);
    [[noreturn]] void fault(Fault::Kind kind, const std::string& what, const Instruction& instruction, int t) const;

    void countInstruction(const Instruction& instruction);
    void endBatch();
    template <class Visit>
    void forWarps(const Visit& visit) const;

    const Launch& launch_;
    const Kernel& kernel_;
    const int threads_;
    std::vector<std::uint64_t> registers_;
    std::vector<char> shared_, local_, parameters_;
    std::vector<ShadowWord> sharedShadow_;
    std::array<Allocation, 4> recent_; ///< allocations that were found last
    std::size_t oldest_ = 0;

    // Of the block that runs.
    Extent index_{};
    unsigned number_ = 0, epoch_ = 0;
    unsigned sharedSerial_ = 0;
    std::vector<Group> ready_, waiting_;
    int left_ = 0; ///< threads that have ended
    const Threads* active_ = nullptr;
    Threads predicated_, unpredicated_;

    Counters counters_;
    std::vector<char> pending_; ///< rows that a load is on its way to
    std::vector<int> pendingRows_;
    std::int64_t inFlight_ = 0;
};

template <class T>
void ThreadBlock::requireWritten(int index, const Instruction& instruction)
{
    if (!launch_.checks)
        return;
    using Bits = std::conditional_t<sizeof(T) == 4, std::uint32_t, std::uint64_t>;
    const Bits unwritten = sizeof(T) == 4 ? launch_.unwritten : launch_.unwritten * 0x1'0000'0001ull;
    const auto* const values = row<Bits>(index);
    bool found = false;
    forActive([&found, values, unwritten](int t) { found |= values[t] == unwritten; });
    for (std::size_t i = 0; found && i < active_->size(); ++i)
        if (values[(*active_)[i]] == unwritten)
            fault(Fault::Kind::other, "a value of device memory that nobody has written", instruction, (*active_)[i]);
}

} // namespace tarn::ptx
