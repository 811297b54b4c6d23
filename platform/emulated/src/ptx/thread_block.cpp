#include "thread_block.h"

#include <cxxabi.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <utility>

namespace tarn::ptx {

namespace {

constexpr int warpSize = 32;

int warpsOf(const std::vector<int>& threads)
{
    int warps = 0, last = -1;
    for (const int t : threads)
        warps += std::exchange(last, t / warpSize) != t / warpSize;
    return warps;
}

/// A kernel's name as its source has it.
std::string readable(const std::string& mangled)
{
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> name(abi::__cxa_demangle(mangled.c_str(), nullptr, nullptr, &status),
                                                      std::free);
    return name ? name.get() : mangled;
}

/// Whether `bytes` bytes at an offset lie inside of `size`.
bool inside(std::uint64_t offset, int bytes, std::uint64_t size)
{
    return unsigned(bytes) <= size && offset <= size - unsigned(bytes);
}

} // namespace

ThreadBlock::ThreadBlock(const Launch& launch)
    : launch_(launch), kernel_(*launch.kernel), threads_(int(launch.block.x * launch.block.y * launch.block.z)),
      registers_(std::size_t((kernel_.rowBytes * threads_ + 7) / 8)), shared_(std::size_t(kernel_.sharedBytes)),
      local_(std::size_t(kernel_.localBytes * threads_)), parameters_(launch.parameters),
      sharedShadow_(std::size_t(kernel_.sharedBytes / 4 + 1)), pending_(kernel_.rows.size())
{
    for (const Constant& constant : kernel_.constants)
        for (int t = 0; t < threads_; ++t)
            std::memcpy(rowBegin(constant.row) + std::int64_t{t} * rowBytes(constant.row), &constant.bits,
                        std::size_t(rowBytes(constant.row)));
    fillThreadIndices();
}

// ---- control flow
// ----------------------------------------------------------------------------------------------------

void ThreadBlock::fillThreadIndices()
{
    const Extent block = launch_.block;
    for (const auto& [name, index] : kernel_.special)
        for (unsigned t = 0; name.compare(0, 5, "%tid.") == 0 && t < unsigned(threads_); ++t)
            row<unsigned>(index)[t] = name.back() == 'x'   ? t % block.x
                                      : name.back() == 'y' ? t / block.x % block.y
                                                           : t / (block.x * block.y);
}

void ThreadBlock::fillBlockIndices()
{
    const std::pair<const char*, Extent> extents[] = {
        {"%ctaid.", index_}, {"%nctaid.", launch_.grid}, {"%ntid.", launch_.block}};
    for (const auto& [name, index] : kernel_.special)
        for (const auto& [family, extent] : extents)
            if (name.compare(0, std::strlen(family), family) == 0)
                std::fill_n(row<unsigned>(index), threads_,
                            name.back() == 'x'   ? extent.x
                            : name.back() == 'y' ? extent.y
                                                 : extent.z);
}

void ThreadBlock::run(Extent index)
{
    index_ = index;
    number_ = (index.z * launch_.grid.y + index.y) * launch_.grid.x + index.x;
    epoch_ = 0;
    left_ = 0;
    if (++sharedSerial_ >> 18 != 0) {
        sharedSerial_ = 1;
        std::vector<ShadowWord>(sharedShadow_.size()).swap(sharedShadow_);
    }
    std::memset(shared_.data(), 0xff, shared_.size());
    std::memset(local_.data(), 0xff, local_.size());
    fillBlockIndices();
    ready_.assign(1, {0, {}});
    waiting_.clear();
    for (int t = 0; t < threads_; ++t)
        ready_[0].threads.push_back(t);
    while (!ready_.empty()) {
        int limit = 0;
        Group group = takeFurthestBehind(limit);
        advance(std::move(group), limit);
        if (ready_.empty() && !waiting_.empty())
            passBarrier();
    }
    if (launch_.counters) {
        endBatch();
        ++counters_.blocks;
        counters_.threads += threads_;
    }
}

/// The threads that are furthest behind, all of them; and up to where they may run before they meet others.
ThreadBlock::Group ThreadBlock::takeFurthestBehind(int& limit)
{
    const auto behind =
        std::min_element(ready_.begin(), ready_.end(), [](const Group& a, const Group& b) { return a.next < b.next; });
    Group group = std::move(*behind);
    ready_.erase(behind);
    limit = int(kernel_.code.size());
    bool joined = false;
    for (std::size_t i = 0; i < ready_.size();) {
        if (ready_[i].next != group.next) {
            limit = std::min(limit, ready_[i++].next);
            continue;
        }
        group.threads.insert(group.threads.end(), ready_[i].threads.begin(), ready_[i].threads.end());
        ready_.erase(ready_.begin() + std::ptrdiff_t(i));
        joined = true;
    }
    if (joined)
        std::sort(group.threads.begin(), group.threads.end());
    return group;
}

/// Runs a group until it meets others, parts, waits or ends.
void ThreadBlock::advance(Group group, int limit)
{
    while (group.next < limit) {
        const Instruction& instruction = kernel_.code[std::size_t(group.next)];
        if (launch_.counters) {
            active_ = &group.threads;
            countInstruction(instruction);
        }
        if (!instruction.opcode->execute) {
            if (!control(group, instruction))
                return;
            continue;
        }
        ++group.next;
        active_ = &group.threads;
        if (instruction.predicate >= 0) {
            part(group.threads, instruction, predicated_, unpredicated_);
            if (predicated_.empty())
                continue;
            active_ = &predicated_;
        }
        instruction.opcode->execute(*this, instruction);
    }
    if (limit == int(kernel_.code.size()))
        fault(Fault::Kind::other, "the end of the code is reached", kernel_.code.back(), group.threads.front());
    ready_.push_back(std::move(group));
}

/// Branches, barriers, ends. Whether the group goes on as it is.
bool ThreadBlock::control(Group& group, const Instruction& instruction)
{
    Threads others;
    if (instruction.predicate >= 0) {
        part(group.threads, instruction, predicated_, others);
        if (predicated_.empty()) {
            ++group.next;
            return true;
        }
        group.threads = predicated_;
    }
    const bool parts = !others.empty();
    if (parts)
        ready_.push_back({group.next + 1, std::move(others)});
    switch (instruction.opcode->form) {
    case Form::branch:
        group.next = instruction.target;
        if (parts)
            ready_.push_back(std::move(group));
        return !parts;
    case Form::barrier:
        waiting_.push_back(std::move(group));
        return false;
    default:
        left_ += int(group.threads.size());
        return false;
    }
}

/// Splits threads by the predicate of an instruction.
void ThreadBlock::part(const Threads& threads, const Instruction& instruction, Threads& holds, Threads& others)
{
    const auto* const predicate = row<std::uint8_t>(instruction.predicate);
    holds.clear();
    others.clear();
    for (const int t : threads)
        ((predicate[t] != 0) != instruction.negated ? holds : others).push_back(t);
}

/// Nobody can go on but those who wait: all threads, at one barrier.
void ThreadBlock::passBarrier()
{
    Group all = std::move(waiting_[0]);
    const Instruction& barrier = kernel_.code[std::size_t(all.next)];
    for (std::size_t i = 1; i < waiting_.size(); ++i) {
        if (waiting_[i].next != all.next)
            fault(Fault::Kind::other, "threads of a block wait at different barriers", barrier, all.threads.front());
        all.threads.insert(all.threads.end(), waiting_[i].threads.begin(), waiting_[i].threads.end());
    }
    if (left_ != 0)
        fault(Fault::Kind::other, "some threads of the block have ended, others wait at a barrier", barrier,
              all.threads.front());
    std::sort(all.threads.begin(), all.threads.end());
    waiting_.clear();
    ++all.next;
    ++epoch_;
    counters_.barriers += launch_.counters != nullptr;
    ready_.push_back(std::move(all));
}

// ---- memory
// ----------------------------------------------------------------------------------------------------------

std::uint64_t ThreadBlock::address(const Instruction& instruction, int t)
{
    if (instruction.address < 0)
        return std::uint64_t(instruction.offset);
    const std::uint64_t base = rowBytes(instruction.address) == 8 ? row<std::uint64_t>(instruction.address)[t]
                                                                  : row<std::uint32_t>(instruction.address)[t];
    return base + std::uint64_t(instruction.offset);
}

char* ThreadBlock::reach(Space space, Access access, const Instruction& instruction, int t, int bytes)
{
    const std::uint64_t at = address(instruction, t);
    if (at % unsigned(bytes) != 0)
        fault(Fault::Kind::misaligned, "an address that is not divisible by " + std::to_string(bytes), instruction, t);
    switch (space) {
    case Space::global:
        return inGlobal(access, instruction, t, at, bytes);
    case Space::shared:
        return inShared(access, instruction, t, at & 0xffffffff, bytes);
    case Space::local:
        return inLocal(instruction, t, at, bytes);
    default:
        return inParameters(instruction, t, at, bytes);
    }
}

const Allocation* ThreadBlock::allocation(std::uint64_t at, int bytes)
{
    const auto holds = [&](const Allocation& a) {
        return at >= a.begin && inside(at - a.begin, bytes, a.end - a.begin);
    };
    for (const Allocation& recent : recent_)
        if (holds(recent))
            return &recent;
    const Allocation found = launch_.memory->find(at);
    if (!holds(found))
        return nullptr;
    oldest_ = (oldest_ + 1) % recent_.size();
    recent_[oldest_] = found;
    return &recent_[oldest_];
}

char* ThreadBlock::inGlobal(Access access, const Instruction& instruction, int t, std::uint64_t at, int bytes)
{
    const Allocation* const found = allocation(at, bytes);
    if (!found)
        fault(Fault::Kind::address, "device memory that is not allocated", instruction, t);
    const std::uint64_t offset = at - found->begin;
    if (launch_.checks)
        note(found->shadow + offset / 4, launch_.serial, access, instruction, t, bytes);
    return found->data + offset;
}

char* ThreadBlock::inShared(Access access, const Instruction& instruction, int t, std::uint64_t at, int bytes)
{
    if (!inside(at, bytes, shared_.size()))
        fault(Fault::Kind::address, "shared memory behind its end", instruction, t);
    if (launch_.checks) {
        for (std::uint64_t word = at / 4; access == Access::read && word < (at + unsigned(bytes) + 3) / 4; ++word)
            if (!sharedShadow_[word].writtenIn(sharedSerial_))
                fault(Fault::Kind::other, "a read of shared memory that nobody has written", instruction, t);
        note(&sharedShadow_[at / 4], sharedSerial_, access, instruction, t, bytes);
    }
    return shared_.data() + at;
}

char* ThreadBlock::inLocal(const Instruction& instruction, int t, std::uint64_t at, int bytes)
{
    if (!inside(at, bytes, std::uint64_t(kernel_.localBytes)))
        fault(Fault::Kind::address, "local memory behind its end", instruction, t);
    return local_.data() + std::int64_t{t} * kernel_.localBytes + at;
}

/// Leaves a use of memory in its shadow, from its first word on. An access of few bytes counts for its whole word.
void ThreadBlock::note(ShadowWord* words, unsigned serial, Access access, const Instruction& instruction, int t,
                       int bytes)
{
    const Use use{serial, number_ % Use::manyBlocks, epoch_ % (1u << 17), unsigned(t)};
    for (ShadowWord* word = words; word < words + (bytes + 3) / 4; ++word) {
        const Race race = access == Access::read    ? word->read(use)
                          : access == Access::write ? word->write(use)
                                                    : word->update(use);
        if (race == Race::threads)
            fault(Fault::Kind::other, "a race: two threads use the same word between two barriers", instruction, t);
        if (race == Race::blocks)
            fault(Fault::Kind::other, "a race: two blocks of the launch use the same word", instruction, t);
    }
}

char* ThreadBlock::inParameters(const Instruction& instruction, int t, std::uint64_t at, int bytes)
{
    if (!inside(at, bytes, parameters_.size()))
        fault(Fault::Kind::address, "parameters behind their end", instruction, t);
    return parameters_.data() + at;
}

void ThreadBlock::fault(Fault::Kind kind, const std::string& what, const Instruction& instruction, int t) const
{
    const Extent block = launch_.block;
    const unsigned thread = unsigned(t);
    const Module& module = *kernel_.module;
    std::ostringstream report;
    report << what << "\n  kernel " << readable(kernel_.name) << "\n  block  (" << index_.x << ", " << index_.y << ", "
           << index_.z << "), thread (" << thread % block.x << ", " << thread / block.x % block.y << ", "
           << thread / (block.x * block.y) << ")\n  ptx    line " << instruction.line << ": "
           << module.lines[std::size_t(instruction.line - 1)];
    if (instruction.source >= 0)
        report << "\n  source " << module.sources[std::size_t(instruction.source)];
    throw Fault(kind, report.str());
}

// ---- counters
// --------------------------------------------------------------------------------------------------------

/// visit(first, count) for the active threads of each warp, by their places in the list.
template <class Visit>
void ThreadBlock::forWarps(const Visit& visit) const
{
    for (std::size_t begin = 0; begin < active_->size();) {
        std::size_t end = begin;
        while (end < active_->size() && (*active_)[end] / warpSize == (*active_)[begin] / warpSize)
            ++end;
        visit(begin, end);
        begin = end;
    }
}

void ThreadBlock::countInstruction(const Instruction& instruction)
{
    counters_.instructions += warpsOf(*active_);
    const auto awaited = [&](int index) { return index >= 0 && pending_[std::size_t(index)]; };
    if (inFlight_ != 0 && (awaited(instruction.predicate) || awaited(instruction.address) ||
                           std::any_of(instruction.rows.begin(), instruction.rows.end(), awaited)))
        endBatch();
    if (instruction.opcode->global && instruction.opcode->form == Form::load) {
        ++inFlight_;
        for (const int index : instruction.rows) {
            pending_[std::size_t(index)] = 1;
            pendingRows_.push_back(index);
        }
    }
}

void ThreadBlock::endBatch()
{
    if (inFlight_ == 0)
        return;
    ++counters_.loadBatches;
    counters_.batchedLoads += std::exchange(inFlight_, 0);
    for (const int index : pendingRows_)
        pending_[std::size_t(index)] = 0;
    pendingRows_.clear();
}

void ThreadBlock::count(Space space, Access access, const Instruction& instruction, int bytes)
{
    if (!launch_.counters || (space != Space::global && space != Space::shared))
        return;
    // Shared memory serves as many threads in a pass as fill 128 bytes.
    const bool shared = space == Space::shared;
    const std::size_t together = shared ? std::size_t(std::min(warpSize, 128 / bytes)) : std::size_t(warpSize);
    std::vector<std::uint64_t> units; // bytes / 4, and of device memory sectors
    forWarps([&](std::size_t begin, std::size_t end) {
        if (shared)
            ++counters_.sharedRequests;
        for (; begin < end; begin += together) {
            units.clear();
            for (std::size_t i = begin; i < std::min(end, begin + together); ++i)
                for (int word = 0; word < std::max(1, bytes / 4); ++word)
                    units.push_back(address(instruction, (*active_)[i]) / 4 + unsigned(word));
            std::sort(units.begin(), units.end());
            units.erase(std::unique(units.begin(), units.end()), units.end());
            if (shared) {
                std::array<int, 32> banks{};
                for (const std::uint64_t word : units)
                    ++banks[word % banks.size()];
                counters_.sharedPasses += *std::max_element(banks.begin(), banks.end());
                ++counters_.leastSharedPasses;
                continue;
            }
            const auto least = std::int64_t(units.size() + 7) / 8;
            for (std::uint64_t& unit : units)
                unit /= 8;
            const auto sectors = std::int64_t(std::unique(units.begin(), units.end()) - units.begin());
            const bool load = access == Access::read;
            ++(load ? counters_.loadRequests : counters_.storeRequests);
            (load ? counters_.loadSectors : counters_.storeSectors) += sectors;
            (load ? counters_.leastLoadSectors : counters_.leastStoreSectors) += least;
        }
    });
}

void ThreadBlock::deliverCounters()
{
    if (launch_.counters)
        launch_.counters->add(kernel_.name, std::exchange(counters_, {}));
}

} // namespace tarn::ptx
