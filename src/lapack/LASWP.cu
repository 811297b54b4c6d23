// Row and column interchanges. The pivots stay on the host and travel in the kernel's by-value argument, sixteen at a
// time: no pivot goes through device memory, and the host never waits.
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/thread_maps.h"

#include <algorithm>
#include <cstdint>

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

/// Exchanges rows of A; one thread owns one of the n columns and makes the interchanges in order.
template <class Map, class T>
__global__ void KernelLASWP(int n, T* A, int lda, int k0, int count, const __grid_constant__ swstruct sw)
{
    const Line block;
    const unsigned first = Map::firstItem();
    block.each([&](int t) {
        const unsigned id = first + t;
        if (id >= unsigned(n))
            return;
        T* const column = A + std::int64_t(id) * lda;
        for (int c = 0; c < count; ++c) {
            const int r = k0 + c, p = sw.pivots[c];
            if (r != p) {
                const T x = column[r];
                column[r] = column[p];
                column[p] = x;
            }
        }
    });
}

/// Exchanges columns of A; one thread owns one of the n rows and makes the interchanges in order.
template <class Map, class T>
__global__ void KernelLASWPCOL(int n, T* A, int lda, int k0, int count, const __grid_constant__ swstruct sw)
{
    const Line block;
    const unsigned first = Map::firstItem();
    for (int c = 0; c < count; ++c) {
        const int r = k0 + c, p = sw.pivots[c];
        if (r == p)
            continue;
        T* const left = A + std::int64_t(r) * lda;
        T* const right = A + std::int64_t(p) * lda;
        block.each([&](int t) {
            const unsigned id = first + t;
            if (id < unsigned(n)) {
                const T x = left[id];
                left[id] = right[id];
                right[id] = x;
            }
        });
    }
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
