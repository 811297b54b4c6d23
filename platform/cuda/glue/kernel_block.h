// The thread block of a kernel on a GPU: every phase is run by each thread for itself. `each` and `eachAlongY` become
// the phase's body, with this thread's index; `eachBelow(count, ...)` the body of the threads below count.
#pragma once

namespace tarn {

/// A block of X by Y threads. `each` runs one phase, `sync` separates phases that communicate.
template <int X, int Y = 1>
struct Block
{
    static constexpr int x = X, y = Y, threads = X * Y;

    /// phase(tx, ty) for every thread of the block.
    template <class Phase>
    __device__ __forceinline__ void each(Phase&& phase) const
    {
        phase(int(threadIdx.x), int(threadIdx.y));
    }

    /// As each. A CPU runs along ty instead of tx: for phases whose memory is contiguous in ty.
    template <class Phase>
    __device__ __forceinline__ void eachAlongY(Phase&& phase) const
    {
        each(phase);
    }

    /// phase(tx, ty, step) for every thread of the block and the steps from 0 to `steps` - 1 in order. A CPU runs along
    /// ty, and goes through all steps of a line of threads before those of the next: where those read one run of
    /// memory.
    template <class Phase>
    __device__ __forceinline__ void eachAlongY(int steps, Phase&& phase) const
    {
        for (int step = 0; step < steps; ++step)
            phase(int(threadIdx.x), int(threadIdx.y), step);
    }

    __device__ __forceinline__ void sync() const { __syncthreads(); }
};

template <int X>
struct Block<X, 1>
{
    static constexpr int x = X, y = 1, threads = X;

    /// phase(t) for every thread of the block.
    template <class Phase>
    __device__ __forceinline__ void each(Phase&& phase) const
    {
        phase(int(threadIdx.x));
    }

    /// phase(t) for the threads t below count, which is at most X.
    template <class Phase>
    __device__ __forceinline__ void eachBelow(int count, Phase&& phase) const
    {
        if (int(threadIdx.x) < count)
            phase(int(threadIdx.x));
    }

    /// phase(tx, ty) for every thread t = W ty + tx: the block in rows of W threads.
    template <int W, class Phase>
    __device__ __forceinline__ void each(Phase&& phase) const
    {
        phase(int(threadIdx.x) % W, int(threadIdx.x) / W);
    }

    /// As each in rows of W. A CPU runs along ty instead of tx: for phases whose memory is contiguous in ty.
    template <int W, class Phase>
    __device__ __forceinline__ void eachAlongY(Phase&& phase) const
    {
        each<W>(phase);
    }

    __device__ __forceinline__ void sync() const { __syncthreads(); }
};

/// A register of each of the N threads of a block that lives from one phase to the next.
template <class T, int N>
struct Private
{
    /// The register of thread t, which must be the thread that asks.
    __device__ __forceinline__ T& operator[](int) { return value_; }

private:
    T value_;
};

/// Whether threads may read a tile of a matrix from where it stands, even against the run of its columns. Here such
/// tiles go through shared memory.
inline constexpr bool readsInPlace = false;

/// False: threads add for themselves.
template <class R, class T, int N>
__device__ __forceinline__ constexpr bool atomicAddRun(T*, int, const Private<T, N>&)
{
    return false;
}

/// A hint to a CPU that the memory at p will be read soon, or read and written; a GPU hides the wait by other threads.
__device__ __forceinline__ void prefetch(const void*) {}
__device__ __forceinline__ void prefetch(void*) {}

} // namespace tarn
