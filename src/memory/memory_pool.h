// MemoryPool: device workspace that outlives the routines, so that blocked drivers do not pay for cudaMalloc per call.
#pragma once

#include "memory/allocators.h"
#include "memory/managed_memory.h"
#include "memory/stream.h"

#include <cstdint>
#include <list>
#include <map>

/// A block of device workspace, and the stream of its last user (empty: the default stream).
template <class T>
struct PoolBlock
{
    velk::ManagedMemory<T, velk::CudaAllocator<T>> memory;
    StreamHandle stream;

    T* data() const { return memory.data(); }
};

/// The blocks of elements T, per device, shared by all threads. A block is free while nobody but the pool holds it: a
/// user holds a copy, and gives the block back by letting the copy die. Sizes are in elements.
template <class T>
class MemoryPool
{
public:
    /// The pool of the process.
    static MemoryPool& instance();

    /// A block of at least n elements on the current device, for use on `stream`; an empty one for n = 0. Best fit
    /// among the free blocks, else a new block of max(n, 262144) elements; the first call on a device also makes five
    /// blocks of one and two mebi-elements (but see exactPoolBlocks). If the device is full, the free blocks of this
    /// pool on it are given back first. Raises CudaMemoryException if that does not help, std::runtime_error for a
    /// negative n.
    PoolBlock<T> acquire(std::int64_t n, const StreamHandle& stream = {});

    /// Gives every free block of every device back.
    void clear();

private:
    using Blocks = std::list<PoolBlock<T>>;

    static bool isFree(const PoolBlock<T>& block) { return !block.memory.isShared(); }
    static void fill(Blocks& blocks);
    static PoolBlock<T>& append(Blocks& blocks, std::int64_t n);
    static PoolBlock<T>* bestFit(Blocks& blocks, std::int64_t n);
    static PoolBlock<T>& allocate(Blocks& blocks, std::int64_t n);
    static std::size_t eraseFree(Blocks& blocks);
    static PoolBlock<T> attach(PoolBlock<T>& block, const StreamHandle& stream);

    std::map<int, Blocks> devices_;
};

namespace tarn {

/// Whether every request gets a new block of just its size, and the free blocks go with the next request: as in checked
/// builds, where the guard zones of the software device then lie right behind every workspace.
extern bool exactPoolBlocks;

/// Gives the free blocks of the four pools back. Called with the lifecycle mutex held.
void freePools();

} // namespace tarn
