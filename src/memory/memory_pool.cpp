#include "memory/memory_pool.h"

#include "frame/device_table.h"
#include "frame/error_state.h"

#include <tarndev/Complex>

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>

#include <algorithm>
#include <limits>

namespace {

constexpr std::int64_t smallestBlock = 0x40000;
constexpr int firstFill[] = {0x200000, 0x100000, 0x100000, 0x100000, 0x100000};

/// Guards the pools of all element types. Never destroyed, as they.
boost::mutex& poolMutex()
{
    static auto& mutex = *new boost::mutex;
    return mutex;
}

/// An extent of n elements, or of less than 65536 more where they are too many for one dimension.
Extent extentOf(std::int64_t n)
{
    constexpr int rows = 0x10000;
    return n <= std::numeric_limits<int>::max() ? Extent{int(n), 1, 1} : Extent{rows, int((n + rows - 1) / rows), 1};
}

} // namespace

template <class T>
MemoryPool<T>& MemoryPool<T>::instance()
{
    // Never destroyed: at exit the device may be gone before static destructors run.
    static auto& pool = *new MemoryPool;
    return pool;
}

template <class T>
PoolBlock<T> MemoryPool<T>::acquire(std::int64_t n, const StreamHandle& stream)
{
    if (n < 0)
        throw std::runtime_error("Memory Pool: bad request");
    if (n == 0)
        return {};

    const boost::lock_guard<boost::mutex> lock(poolMutex());
    Blocks& blocks = devices_[tarn::currentDevice()];
    if (tarn::exactPoolBlocks) {
        eraseFree(blocks);
        return attach(append(blocks, n), stream);
    }
    n = std::max(n, smallestBlock);
    if (blocks.empty())
        fill(blocks);
    if (PoolBlock<T>* block = bestFit(blocks, n))
        return attach(*block, stream);
    return attach(allocate(blocks, n), stream);
}

template <class T>
void MemoryPool<T>::clear()
{
    const boost::lock_guard<boost::mutex> lock(poolMutex());
    for (auto& [device, blocks] : devices_)
        eraseFree(blocks);
}

template <class T>
void MemoryPool<T>::fill(Blocks& blocks)
{
    for (const int n : firstFill)
        append(blocks, n);
}

template <class T>
PoolBlock<T>& MemoryPool<T>::append(Blocks& blocks, std::int64_t n)
{
    PoolBlock<T> block;
    block.memory.reset(extentOf(n));
    blocks.push_back(block);
    return blocks.back();
}

template <class T>
PoolBlock<T>* MemoryPool<T>::bestFit(Blocks& blocks, std::int64_t n)
{
    PoolBlock<T>* best = nullptr;
    for (PoolBlock<T>& block : blocks)
        if (isFree(block) && block.memory.size() >= n && (!best || block.memory.size() < best->memory.size()))
            best = &block;
    return best;
}

template <class T>
PoolBlock<T>& MemoryPool<T>::allocate(Blocks& blocks, std::int64_t n)
{
    for (;;) {
        try {
            return append(blocks, n);
        } catch (const velk::CudaMemoryException&) {
            if (eraseFree(blocks) == 0)
                throw;
        }
    }
}

template <class T>
std::size_t MemoryPool<T>::eraseFree(Blocks& blocks)
{
    const std::size_t before = blocks.size();
    blocks.remove_if(isFree);
    return before - blocks.size();
}

template <class T>
PoolBlock<T> MemoryPool<T>::attach(PoolBlock<T>& block, const StreamHandle& stream)
{
    if (block.stream != stream && (!block.stream.raw() || block.stream.isShared()))
        block.stream.synchronize();
    block.stream = stream;
    return block;
}

template class MemoryPool<float>;
template class MemoryPool<double>;
template class MemoryPool<tarn::Complex<float>>;
template class MemoryPool<tarn::Complex<double>>;

#ifdef TARN_CHECKED
bool tarn::exactPoolBlocks = true;
#else
bool tarn::exactPoolBlocks = false;
#endif

void tarn::freePools()
{
    MemoryPool<float>::instance().clear();
    MemoryPool<double>::instance().clear();
    MemoryPool<Complex<float>>::instance().clear();
    MemoryPool<Complex<double>>::instance().clear();
}
