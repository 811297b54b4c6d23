// Row and column interchanges. The pivots stay on the host and travel in the kernel's by-value argument, sixteen at a
// time: no pivot goes through device memory, and the host never waits.
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/thread_maps.h"

#include <algorithm>
#include <cstdint>
#include <type_traits>

namespace tarn::kernel {

namespace {

constexpr int pivotsPerLaunch = 16;
using Line = Block<256>;

} // namespace

/// The pivots of one launch: pivots[c] is the zero-based row (or column) to be exchanged with row k0 + c.
struct swstruct
{
    std::uint16_t pivots[pivotsPerLaunch];
};

/// How many of n items a block has whose first is `first`.
__device__ __forceinline__ int itemsFrom(std::int64_t first, int n)
{
    return int(first >= n ? 0 : n - first < Line::threads ? n - first : Line::threads);
}

/// Interchanges that are made together if they touch no row in common. A thread of a GPU loads their elements before it
/// stores the first, and so waits for memory once.
constexpr int exchangesAtOnce = readsInPlace ? 1 : 8;

/// Whether `count` interchanges, of rows r, r + 1, ... with the rows that pivots name, touch no row in common. A row
/// that stays where it is touches itself.
template <int count>
__device__ __forceinline__ bool disjoint(int r, const std::uint16_t* pivots)
{
    bool result = true;
    for (int i = 0; i < count; ++i)
        for (int j = i + 1; j < count; ++j)
            result = result && pivots[i] != pivots[j] && pivots[i] != r + j && pivots[j] != r + i;
    return result;
}

/// Exchanges elements r + i and pivots[i] of a line, `stride` apart, for i below count, which are disjoint.
template <int count, class T>
__device__ __forceinline__ void exchange(T* line, std::int64_t stride, int r, const std::uint16_t* pivots)
{
    T upper[count], lower[count];
    for (int i = 0; i < count; ++i) {
        upper[i] = line[(r + i) * stride];
        lower[i] = line[pivots[i] * stride];
    }
    for (int i = 0; i < count; ++i) {
        line[(r + i) * stride] = lower[i];
        line[pivots[i] * stride] = upper[i];
    }
}

/// step(several, c) for the interchanges from c on, `several` at a time, in order.
template <class Step>
__device__ __forceinline__ void forInterchanges(int k0, int count, const std::uint16_t* pivots, const Step& step)
{
    for (int c = 0; c < count;) {
        if (exchangesAtOnce > 1 && c + exchangesAtOnce <= count && disjoint<exchangesAtOnce>(k0 + c, pivots + c)) {
            step(std::integral_constant<int, exchangesAtOnce>(), c);
            c += exchangesAtOnce;
        } else {
            if (pivots[c] != k0 + c)
                step(std::integral_constant<int, 1>(), c);
            ++c;
        }
    }
}

/// Exchanges rows of A; one thread owns one of the n columns and makes the interchanges in order.
template <class Map, class T>
__global__ void KernelLASWP(int n, T* A, int lda, int k0, int count, const __grid_constant__ swstruct sw)
{
    const Line block;
    const std::int64_t first = Map::firstItem();
    block.eachBelow(itemsFrom(first, n), [&](int t) {
        T* const column = A + (first + t) * lda;
        forInterchanges(k0, count, sw.pivots, [&](auto several, int c) {
            exchange<decltype(several)::value>(column, 1, k0 + c, sw.pivots + c);
        });
    });
}

/// Exchanges columns of A; one thread owns one of the n rows and makes the interchanges in order.
template <class Map, class T>
__global__ void KernelLASWPCOL(int n, T* A, int lda, int k0, int count, const __grid_constant__ swstruct sw)
{
    const Line block;
    const std::int64_t first = Map::firstItem();
    const int rows = itemsFrom(first, n);
    forInterchanges(k0, count, sw.pivots, [&](auto several, int c) {
        block.eachBelow(rows,
                        [&](int t) { exchange<decltype(several)::value>(A + first + t, lda, k0 + c, sw.pivots + c); });
    });
}

namespace {

/// A run of interchanges that one launch can carry. Indices inside the launch count from `origin`, so that 16 bits hold
/// the pivots of a matrix of any size; where it is 0 they are the matrix's own.
struct Run
{
    int origin;
    int count;
};

/// The longest run that starts at position k (one-based) and ends at k2 or before.
Run nextRun(const int* ipiv, int k, int k2)
{
    constexpr int reach = 0xffff;
    const int most = std::min(pivotsPerLaunch, k2 - k + 1);
    int lowest = ipiv[k - 1] - 1, highest = lowest, count = 1;
    for (; count < most; ++count) {
        const int pivot = ipiv[k - 1 + count] - 1;
        const int low = std::min(lowest, pivot), high = std::max(highest, pivot);
        if (high > reach && high - low > reach)
            break;
        lowest = low;
        highest = high;
    }
    return {highest > reach ? lowest : 0, count};
}

/// queue(origin, k0, count, sw) for each launch of the interchanges k1 to k2; k0 counts from the origin and may then be
/// negative, since the rows to be exchanged lie above their pivots.
template <class Queue>
void forEachLaunch(int k1, int k2, const int* ipiv, Queue&& queue)
{
    for (int k = k1; k <= k2;) {
        const Run run = nextRun(ipiv, k, k2);
        swstruct sw{};
        for (int c = 0; c < run.count; ++c)
            sw.pivots[c] = std::uint16_t(ipiv[k - 1 + c] - 1 - run.origin);
        queue(run.origin, k - 1 - run.origin, run.count, sw);
        k += run.count;
    }
}

void checkPositions(int k1, int k2, const int* ipiv)
{
    require(k1 >= 0, -4);
    require(k2 >= 0, -5);
    require(ipiv != nullptr, -6);
}

} // namespace

template <class T>
void LASWP(int n, T* A, int lda, int k1, int k2, const int* ipiv, int)
{
    require(n >= 0, -1);
    if (n == 0)
        return;
    require(A != nullptr, -2);
    require(lda >= 0, -3);
    checkPositions(k1, k2, ipiv);
    const velk::Map1D map(n);
    const velk::Shape grid = map.blocks(), threads = map.threads();
    forEachLaunch(k1, k2, ipiv, [&](int origin, int k0, int count, swstruct sw) {
        platform::launch<&KernelLASWP<velk::Map1D, T>, Line>(grid, threads, n, A + origin, lda, k0, count, sw);
    });
}

template <class T>
void LASWPCOL(int n, T* A, int lda, int k1, int k2, const int* ipiv, int)
{
    require(n >= 0, -1);
    if (n == 0)
        return;
    require(A != nullptr, -2);
    require(lda >= n, -3);
    checkPositions(k1, k2, ipiv);
    const velk::Map1D map(n);
    const velk::Shape grid = map.blocks(), threads = map.threads();
    forEachLaunch(k1, k2, ipiv, [&](int origin, int k0, int count, swstruct sw) {
        T* const base = A + std::int64_t(origin) * lda;
        platform::launch<&KernelLASWPCOL<velk::Map1D, T>, Line>(grid, threads, n, base, lda, k0, count, sw);
    });
}

#define TARN_WRAPPERS(T)                                                                                               \
    template void LASWP(int, T*, int, int, int, const int*, int);                                                      \
    template void LASWPCOL(int, T*, int, int, int, const int*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
