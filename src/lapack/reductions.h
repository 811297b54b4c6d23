// Sums and maxima over the threads of a block of 256, and the kernels that fold runs of partial results.
#pragma once

#include "lapack/thread_maps.h"

#include <lapack/cu/basic>

#include <cmath>

namespace tarn::kernel {

inline constexpr int reductionThreads = 256;
using Reduction = Block<reductionThreads>;

/// a := the larger of a and b. A NaN in a stays, a NaN in b is passed over.
struct Maximum
{
    template <class R>
    __device__ __forceinline__ void operator()(R& a, R b) const
    {
        a = a < b ? b : a;
    }
};

/// a := a + b
struct Sum
{
    template <class R>
    __device__ __forceinline__ void operator()(R& a, R b) const
    {
        a += b;
    }
};

/// phase(t) for every thread, counted along x first.
template <int X, int Y, class Phase>
__device__ __forceinline__ void eachLinear(Block<X, Y> block, Phase&& phase)
{
    block.each([&](int tx, int ty) { phase(X * ty + tx); });
}

template <int X, class Phase>
__device__ __forceinline__ void eachLinear(Block<X, 1> block, Phase&& phase)
{
    block.each(phase);
}

/// Folds work[0] to work[255], one value of each thread, into work[0], where thread 0 may read it: a binary tree.
template <class Threads, class R, class Combine>
__device__ __forceinline__ void reduceTree(Threads block, R* work, Combine combine)
{
    block.sync();
    for (int s = reductionThreads / 2; s > 0; s /= 2) {
        eachLinear(block, [&](int t) {
            if (t < s)
                combine(work[t], work[t + s]);
        });
        block.sync();
    }
}

/// out[b] := values in[b count] to in[b count + count - 1] folded, for block b. A thread strides through the run.
template <class R, class Combine>
__device__ __forceinline__ void foldRun(R* work, const R* in, R* out, int count, Combine combine)
{
    const Reduction block;
    const R* const run = in + std::int64_t(blockIdx.x) * count;
    Private<R, reductionThreads> folded;
    block.each([&](int t) { folded[t] = R(0); });
    for (std::int64_t first = 0; first < count; first += reductionThreads)
        block.each([&](int t) {
            if (first + t < count)
                combine(folded[t], run[first + t]);
        });
    block.each([&](int t) { work[t] = folded[t]; });
    reduceTree(block, work, combine);
    block.each([&](int t) {
        if (t == 0)
            out[blockIdx.x] = work[0];
    });
}

/// out[b] := largest of the b-th run of `count` values, at least 0.
template <class Map, class R>
__global__ void findMaxValue_k(const R* in, R* out, int count)
{
    __shared__ R work[reductionThreads];
    foldRun(work, in, out, count, Maximum());
}

/// out[b] := sum of the b-th run of `count` values. The maps give the same code.
template <class Map, class R>
__global__ void findSum_k(const R* in, R* out, int count)
{
    __shared__ R work[reductionThreads];
    foldRun(work, in, out, count, Sum());
}

/// out[b] := sum of the b-th of `runs` runs of `count` values.
template <class Map, class R>
void findSum(int runs, int count, const R* in, R* out)
{
    platform::launch<&findSum_k<Map, R>, Reduction>(dim3(unsigned(runs)), dim3(Reduction::x), in, out, count);
}

/// *out := largest of `count` values, at least 0.
template <class R>
void findMaxValue(int count, const R* in, R* out)
{
    using Map = velk::StaticOneBlockMap1D<reductionThreads>;
    platform::launch<&findMaxValue_k<Map, R>, Reduction>(dim3(1), dim3(Reduction::x), in, out, count);
}

/// |re|^2 + |im|^2, without care for overflow.
template <class R>
__device__ __forceinline__ R squaredMagnitude(R x)
{
    return x * x;
}

template <class R>
__device__ __forceinline__ R squaredMagnitude(Complex<R> x)
{
    return x.real() * x.real() + x.imag() * x.imag();
}

/// |x|; for complex x without care for overflow.
__device__ __forceinline__ float magnitude(float x) { return fabsf(x); }
__device__ __forceinline__ double magnitude(double x) { return fabs(x); }
__device__ __forceinline__ float magnitude(Complex<float> x) { return sqrtf(squaredMagnitude(x)); }
__device__ __forceinline__ double magnitude(Complex<double> x) { return sqrt(squaredMagnitude(x)); }

} // namespace tarn::kernel
