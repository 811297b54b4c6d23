// A sequence of plane rotations of neighbouring rows or columns, in the manner of LAPACK's lasr with pivot 'V'.
// Rotations depend on each other along a line of the matrix, so a thread carries its own line through all of them: a
// column for side 'L', a row for side 'R'. The element that goes on into the next rotation stays in a register.
#include "blas/letters.h"
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/rotations.h"
#include "lapack/thread_maps.h"

#include <algorithm>
#include <type_traits>

namespace tarn::kernel {

namespace {

template <char side>
inline constexpr int threadsFor = side == 'L' ? 128 : 64;

/// How far ahead a CPU asks for the columns that rows run through: each lies on pages of its own.
constexpr int columnsAhead = 12;

/// Up to this size a matrix stays in the caches of the cores from one sequence of rotations to the next. The
/// prefetching hardware of a core then runs on into the rows of another core and takes them from its cache. A core that
/// asks early for lines to write has them back when it comes to them; in larger matrices that costs more than it saves.
constexpr std::int64_t cachedBytes = 2 << 20;

/// Hints that the rows of a block will be rotated in column j.
template <int N, class T>
__device__ __forceinline__ void prefetchRows(T* A, int lda, int line0, int j, bool cached)
{
    if (cached)
        prefetchBlock<N, 1>(A + offset(line0, j, lda), lda);
    else
        prefetchBlock<N, 1>(static_cast<const T*>(A) + offset(line0, j, lda), lda);
}

/// Element j of a line.
template <char side, class T>
__device__ __forceinline__ T& elementOf(T* A, int lda, int line, int j)
{
    return A[side == 'L' ? offset(j, line, lda) : offset(line, j, lda)];
}

/// Rotations of a line at a time. A thread of a GPU loads what 16 of them need before it stores the first result: it
/// waits for memory once in 16 rotations. A CPU has the other lines to go on with.
inline constexpr int rotationsAtOnce = readsInPlace ? 1 : 16;

/// Rotations of a line in the planes j and j + 1, and on from there, by c[i] and s[i]. v carries element j in, and the
/// last element on the way out, if forward; the other way round, with falling j, if not.
template <char side, bool forward, int steps, class T>
__device__ __forceinline__ void rotate(T& v, T* A, int lda, int line, int j, const Real<T>* c, const Real<T>* s)
{
    T next[steps];
    for (int i = 0; i < steps; ++i)
        next[i] = elementOf<side>(A, lda, line, forward ? j + 1 + i : j - i);
    for (int i = 0; i < steps; ++i) {
        rotatePlane<forward>(v, next[i], c[i], s[i]);
        elementOf<side>(A, lda, line, forward ? j + i : j + 1 - i) = v;
        v = next[i];
    }
}

} // namespace

/// A := P A (side 'L') or A P^T (side 'R'), A m by n, where P is the product of the rotations (c[j], s[j]) of the
/// planes j and j + 1, applied in the order j = 0, 1, ... (direct 'F') or backwards (direct 'B').
template <class Map, char side, char pivot, char direct, class T>
__global__ void LASR_k(int m, int n, const Real<T>* c, const Real<T>* s, T* A, int lda)
{
    constexpr int N = threadsFor<side>;
    constexpr bool forward = direct == 'F';
    __shared__ Real<T> cTemp[N], sTemp[N];
    const Block<N> block;
    Private<T, N> carried;
    const int lines = side == 'L' ? n : m, rotations = (side == 'L' ? m : n) - 1;
    const int line0 = Map::firstItem(), linesLeft = lines - line0;
    const bool cached = std::int64_t(lines) * rotations * int(sizeof(T)) <= cachedBytes;

    block.each([&](int t) {
        carried[t] = t < linesLeft ? elementOf<side>(A, lda, line0 + t, forward ? 0 : rotations) : T(0);
    });
    for (int first = 0; first < rotations; first += N) {
        const int count = rotations - first < N ? rotations - first : N;
        block.eachBelow(count, [&](int t) {
            const int j = forward ? first + t : rotations - 1 - first - t;
            cTemp[t] = c[j];
            sTemp[t] = s[j];
        });
        if constexpr (WARP_SZ < N)
            block.sync();
        const auto rotateLines = [&](auto steps, int k, const auto& forLines) {
            const int j = forward ? first + k : rotations - 1 - first - k;
            if constexpr (side == 'R') {
                const int ahead = forward ? j + 1 + columnsAhead : j - columnsAhead;
                if (0 <= ahead && ahead <= rotations)
                    prefetchRows<N>(A, lda, line0, ahead, cached);
            }
            forLines([&](int t) {
                rotate<side, forward, decltype(steps)::value>(carried[t], A, lda, line0 + t, j, cTemp + k, sTemp + k);
            });
            // Keeps the warps together, so that they share the cache lines of their columns.
            if constexpr (side == 'L' && WARP_SZ < N)
                block.sync();
        };
        // Apart for whole blocks of lines and for others: a CPU holds the carried elements of whole ones in registers.
        const auto rotateAll = [&](const auto& forLines) {
            int k = 0;
            for (; k + rotationsAtOnce <= count; k += rotationsAtOnce)
                rotateLines(std::integral_constant<int, rotationsAtOnce>(), k, forLines);
            if constexpr (rotationsAtOnce > 1)
                for (; k < count; ++k)
                    rotateLines(std::integral_constant<int, 1>(), k, forLines);
        };
        if (linesLeft >= N)
            rotateAll([&](const auto& step) { block.each(step); });
        else
            rotateAll([&](const auto& step) { block.eachBelow(linesLeft, step); });
        if constexpr (WARP_SZ < N)
            block.sync();
    }
    block.each([&](int t) {
        if (t < linesLeft)
            elementOf<side>(A, lda, line0 + t, forward ? rotations : 0) = carried[t];
    });
}

namespace {

void checkLasr(char side, char pivot, char direct, int m, int n, const void* c, const void* s, const void* A, int lda)
{
    require(isOneOf(side, "LR"), -1);
    require(isOneOf(pivot, "VTB"), -2);
    require(isOneOf(direct, "FB"), -3);
    if (m == 0 || m == 1 || n == 0 || n == 1)
        return;
    require(m >= 0, -4);
    require(n >= 0, -5);
    require(c != nullptr, -6);
    require(s != nullptr, -7);
    require(A != nullptr, -8);
    require(lda >= std::max(1, m), -9);
}

template <char side, class T>
void launchLasr(char direct, int m, int n, const Real<T>* c, const Real<T>* s, T* A, int lda)
{
    using Map = velk::StaticMap1D<threadsFor<side>>;
    using Threads = Block<threadsFor<side>>;
    const Map map(side == 'L' ? n : m);
    if (direct == 'F')
        platform::launch<&LASR_k<Map, side, 'V', 'F', T>, Threads>(map.blocks(), map.threads(), m, n, c, s, A, lda);
    else
        platform::launch<&LASR_k<Map, side, 'V', 'B', T>, Threads>(map.blocks(), map.threads(), m, n, c, s, A, lda);
}

} // namespace

template <class T>
void LASR(char side, char pivot, char direct, int m, int n, const Real<T>* c, const Real<T>* s, T* A, int lda)
{
    side = upper(side);
    pivot = upper(pivot);
    direct = upper(direct);
    checkLasr(side, pivot, direct, m, n, c, s, A, lda);
    if (m == 0 || n == 0 || pivot != 'V')
        return;
    if (side == 'L')
        launchLasr<'L'>(direct, m, n, c, s, A, lda);
    else
        launchLasr<'R'>(direct, m, n, c, s, A, lda);
}

#define TARN_WRAPPERS(T) template void LASR(char, char, char, int, int, const Real<T>*, const Real<T>*, T*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
