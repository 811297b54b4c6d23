#pragma once
/// What a kernel's source needs of the software device: the function qualifiers, the block's coordinates, atomics and
/// bit casts. A kernel is an ordinary function that runs once per block, so a `__shared__` array is one of its locals,
/// and there is no threadIdx: the threads of a block are a loop of the kernel vocabulary.

#include <cstdint>
#include <cstring>

#include "cuda_runtime.h"

#define __global__
#define __device__
#define __host__
#define __shared__
#define __forceinline__ __inline__ __attribute__((always_inline))
#define __launch_bounds__(...)
#define __grid_constant__

/// Coordinates of the block that the calling thread runs.
struct SoftBlock
{
    uint3 blockIdx;
    dim3 blockDim;
    dim3 gridDim;
};

/// The calling thread's block. The launcher sets it before each block; outside a kernel it is the last block that the
/// thread ran.
#pragma GCC visibility push(default)
SoftBlock& tarnSoftBlock() noexcept __attribute__((const));
#pragma GCC visibility pop

#define blockIdx (tarnSoftBlock().blockIdx)
#define blockDim (tarnSoftBlock().blockDim)
#define gridDim (tarnSoftBlock().gridDim)

/// Adds `value` to `*address` atomically; returns what stood there before.
template <class T, class = decltype(T{} + T{})>
inline T softAtomicAdd(T* address, T value)
{
    T seen, sum;
    __atomic_load(address, &seen, __ATOMIC_RELAXED);
    do {
        sum = seen + value;
    } while (!__atomic_compare_exchange(address, &seen, &sum, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED));
    return seen;
}

inline float atomicAdd(float* address, float value) { return softAtomicAdd(address, value); }

inline double atomicAdd(double* address, double value) { return softAtomicAdd(address, value); }

#ifdef __GCC_HAVE_SYNC_COMPARE_AND_SWAP_16
/// Adds values[k] to address[k] for as many elements as there are in 16 bytes, at an address divisible by 16, in one
/// compare-exchange.
template <class R>
inline void softAtomicAdd16(R* address, const R* values)
{
    using Word = unsigned __int128;
    using Halves __attribute__((vector_size(16))) = std::uint64_t;
    using Elements __attribute__((vector_size(16))) = R;
    const auto word = [](Halves halves) { return Word{halves[1]} << 64 | halves[0]; };

    Elements addend;
    std::memcpy(&addend, values, sizeof addend);
    const auto* now = reinterpret_cast<const std::uint64_t*>(address);
    Halves seen{__atomic_load_n(now, __ATOMIC_RELAXED), __atomic_load_n(now + 1, __ATOMIC_RELAXED)};
    for (;;) {
        const auto sum = reinterpret_cast<Halves>(reinterpret_cast<Elements>(seen) + addend);
        const Word before = __sync_val_compare_and_swap(reinterpret_cast<Word*>(address), word(seen), word(sum));
        if (before == word(seen))
            return;
        seen = Halves{static_cast<std::uint64_t>(before), static_cast<std::uint64_t>(before >> 64)};
    }
}
#endif

/// Adds values[k] to address[k] for k below count, each addition atomic by itself. A locked instruction costs as much
/// as a dozen others, so an addition takes as many elements as there are in 16 bytes where the processor can.
template <class R>
inline void softAtomicAddRun(R* address, const R* values, int count)
{
    int k = 0;
#ifdef __GCC_HAVE_SYNC_COMPARE_AND_SWAP_16
    constexpr int width = 16 / int(sizeof(R));
    for (; k < count && reinterpret_cast<std::uintptr_t>(address + k) % 16 != 0; ++k)
        softAtomicAdd(address + k, values[k]);
    for (; k + width <= count; k += width)
        softAtomicAdd16(address + k, values + k);
#endif
    for (; k < count; ++k)
        softAtomicAdd(address + k, values[k]);
}

/// Stores max(*address, value) atomically; returns what stood there before.
inline int atomicMax(int* address, int value)
{
    int seen = __atomic_load_n(address, __ATOMIC_RELAXED);
    while (seen < value &&
           !__atomic_compare_exchange_n(address, &seen, value, true, __ATOMIC_RELAXED, __ATOMIC_RELAXED)) {
    }
    return seen;
}

/// Stores `value` where `compare` stood; returns what stood there before.
inline unsigned long long atomicCAS(unsigned long long* address, unsigned long long compare, unsigned long long value)
{
    __atomic_compare_exchange_n(address, &compare, value, false, __ATOMIC_RELAXED, __ATOMIC_RELAXED);
    return compare;
}

/// a b, rounded by itself: sources that call it are compiled without contraction of products and sums.
inline float __fmul_rn(float a, float b) { return a * b; }

inline long long __double_as_longlong(double x)
{
    long long bits;
    std::memcpy(&bits, &x, sizeof bits);
    return bits;
}

inline double __longlong_as_double(long long bits)
{
    double x;
    std::memcpy(&x, &bits, sizeof x);
    return x;
}
