// The thread block of a kernel on the software device: one host thread runs a phase for all threads of the block.
#pragma once

#include <cuda_runtime.h>
#include <tarndev/Independent>

namespace tarn {

/// A block of X by Y threads. `each` runs one phase, `sync` separates phases that communicate.
/// Threads of one phase do not communicate, so the loop over them may run in any order and in vectors.
template <int X, int Y = 1>
struct Block
{
    static constexpr int x = X, y = Y, threads = X * Y;

    /// phase(tx, ty) for every thread of the block.
    template <class Phase>
    inline __attribute__((always_inline)) void each(Phase&& phase) const
    {
        for (int ty = 0; ty < Y; ++ty) {
            TARN_INDEPENDENT
            for (int tx = 0; tx < X; ++tx)
                phase(tx, ty);
        }
    }

    /// As each, along ty: for phases whose memory is contiguous in ty.
    template <class Phase>
    inline __attribute__((always_inline)) void eachAlongY(Phase&& phase) const
    {
        for (int tx = 0; tx < X; ++tx) {
            TARN_INDEPENDENT
            for (int ty = 0; ty < Y; ++ty)
                phase(tx, ty);
        }
    }

    /// phase(tx, ty, step) for every thread of the block and the steps from 0 to `steps` - 1 in order. Runs along ty,
    /// and goes through all steps of a line of threads before those of the next: where those read one run of memory.
    template <class Phase>
    inline __attribute__((always_inline)) void eachAlongY(int steps, Phase&& phase) const
    {
        for (int tx = 0; tx < X; ++tx)
            for (int step = 0; step < steps; ++step) {
                TARN_INDEPENDENT
                for (int ty = 0; ty < Y; ++ty)
                    phase(tx, ty, step);
            }
    }

    void sync() const {}
};

template <int X>
struct Block<X, 1>
{
    static constexpr int x = X, y = 1, threads = X;

    /// phase(t) for every thread of the block.
    template <class Phase>
    inline __attribute__((always_inline)) void each(Phase&& phase) const
    {
        TARN_INDEPENDENT
        for (int t = 0; t < X; ++t)
            phase(t);
    }

    /// phase(t) for the threads t below count, which is at most X.
    template <class Phase>
    inline __attribute__((always_inline)) void eachBelow(int count, Phase&& phase) const
    {
        TARN_INDEPENDENT
        for (int t = 0; t < count; ++t)
            phase(t);
    }

    /// phase(tx, ty) for every thread t = W ty + tx: the block in rows of W threads.
    template <int W, class Phase>
    inline __attribute__((always_inline)) void each(Phase&& phase) const
    {
        Block<W, X / W>().each(phase);
    }

    /// As each in rows of W, along ty: for phases whose memory is contiguous in ty.
    template <int W, class Phase>
    inline __attribute__((always_inline)) void eachAlongY(Phase&& phase) const
    {
        Block<W, X / W>().eachAlongY(phase);
    }

    void sync() const {}
};

/// A register of each of the N threads of a block that lives from one phase to the next.
template <class T, int N>
struct Private
{
    /// The register of thread t, which must be the thread that asks.
    T& operator[](int t) { return values_[t]; }

    /// The registers of all threads, for code that does the work of all.
    const T* data() const { return values_; }

private:
    T values_[N];
};

/// Whether threads may read a tile of a matrix from where it stands, even against the run of its columns: the caches of
/// a CPU do for them what shared memory does on a GPU.
inline constexpr bool readsInPlace = true;

/// Adds what the threads hold in `values` to the parts, of type R, of the `count` elements of type T from y on, each
/// part atomically. True: done.
template <class R, class T, int N>
bool atomicAddRun(T* y, int count, const Private<T, N>& values)
{
    softAtomicAddRun(reinterpret_cast<R*>(y), reinterpret_cast<const R*>(values.data()),
                     count * int(sizeof(T) / sizeof(R)));
    return true;
}

/// A hint that the memory at p will be read soon.
inline __attribute__((always_inline)) void prefetch(const void* p) { __builtin_prefetch(p); }

/// A hint that the memory at p will be read and written soon: the core that will do it takes the cache line away from
/// the others right then, instead of once more when it writes.
inline __attribute__((always_inline)) void prefetch(void* p) { __builtin_prefetch(p, 1); }

} // namespace tarn
