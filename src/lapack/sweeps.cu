// Several sweeps of plane rotations in one pass over the columns of a matrix. The sweeps follow each other as a
// wavefront: in wave t sweep k rotates the plane t - k, which the sweep before it has just left. A thread carries a row
// through all of them; the elements that the sweeps are at stay in registers, so that each element is read and written
// once for all sweeps.
//
// Places count the columns of all sweeps in the direction of the rotations, from 0. Plane p is that of places p and p
// + 1.
#include "lapack/kernels.h"
#include "lapack/rotations.h"
#include "lapack/thread_maps.h"

#include <algorithm>
#include <utility>

namespace tarn::kernel {

namespace {

/// Rows of a block. A GPU has more multiprocessors than a matrix has blocks of many rows; a CPU likes whole pages.
constexpr int rowsPerBlock = readsInPlace ? 64 : 32;

/// Waves that a thread goes through at a time. It asks for the elements of the next ones before it begins.
constexpr int waves = 8;

constexpr int K = sweepsInPass;
using Rows = Block<rowsPerBlock>;

} // namespace

/// The sweeps of a launch.
struct SweepSet
{
    SweepColumns sweeps[K];
};

/// The columns of all sweeps of a set as places.
template <bool forward>
struct Places
{
    int lowest, highest; ///< columns

    __device__ __forceinline__ explicit Places(const SweepSet& set)
        : lowest(set.sweeps[0].first), highest(set.sweeps[0].first + set.sweeps[0].order - 1)
    {
        for (int k = 1; k < K; ++k) {
            const int first = set.sweeps[k].first, last = first + set.sweeps[k].order - 1;
            lowest = first < lowest ? first : lowest;
            highest = last > highest ? last : highest;
        }
    }

    __device__ __forceinline__ int count() const { return highest - lowest + 1; }
    __device__ __forceinline__ int column(int place) const { return forward ? lowest + place : highest - place; }

    /// Number of the rotation of plane p within its sweep; the sweep has it if it is one of 0 to order - 2.
    __device__ __forceinline__ int rotation(const SweepColumns& sweep, int p) const
    {
        return (forward ? column(p) : column(p + 1)) - sweep.first;
    }

    __device__ __forceinline__ bool has(const SweepColumns& sweep, int p) const
    {
        const int j = rotation(sweep, p);
        return 0 <= j && j < sweep.order - 1;
    }
};

/// What a block of threads keeps from one phase to the next.
template <class T>
struct Wavefront
{
    Private<T, rowsPerBlock> at[K + 1];    ///< before wave t: the elements of places t - K to t
    Private<T, rowsPerBlock> ahead[waves]; ///< and those of places t + 1 to t + waves
};

/// Rotations of a sweep in a run of waves.
template <class R>
struct Run
{
    R c[waves], s[waves];
};

/// Rotations of a run of waves, in shared memory: of sweep k in wave i.
template <class R>
struct WaveRotations
{
    R (&c)[K][waves];
    R (&s)[K][waves];
};

/// step(i) for i from 0 to N - 1 as compile-time constants: arrays that it indexes by them stay in registers.
template <class Step, int... I>
__device__ __forceinline__ void unrolled(std::integer_sequence<int, I...>, const Step& step)
{
    (step(std::integral_constant<int, I>()), ...);
}

template <int N, class Step>
__device__ __forceinline__ void unrolled(const Step& step)
{
    unrolled(std::make_integer_sequence<int, N>(), step);
}

/// step(i) for i from 0 to N - 1, for code at the ends of the sweeps: unrolled where the arrays that it indexes have to
/// stay in registers, and a loop on a CPU, where they are memory, lest it be compiled many times over.
template <int N, class Step>
__device__ __forceinline__ void inOrder(const Step& step)
{
    if constexpr (readsInPlace)
        for (int i = 0; i < N; ++i)
            step(i);
    else
        unrolled<N>([&](auto i) { step(decltype(i)::value); });
}

/// A run of waves in which every sweep has its rotation, of `rows` rows by forRows: all in registers.
template <bool forward, class T, class ForRows>
__device__ __forceinline__ void runWaves(Wavefront<T>& front, WaveRotations<Real<T>> rotations, int t0,
                                         Places<forward> places, T* A, int lda, const ForRows& forRows)
{
    const std::int64_t toNext = forward ? lda : -std::int64_t(lda);
    const T* const next = A + offset(0, places.column(t0 + waves + 1), lda);
    T* const finished = A + offset(0, places.column(t0 - K + 1), lda);
    forRows([&](int t) __attribute__((always_inline)) {
        T at[K + waves];
        unrolled<K>([&](auto step) {
            constexpr int k = decltype(step)::value;
            at[k] = front.at[k + 1][t];
        });
        unrolled<waves>([&](auto step) {
            constexpr int i = decltype(step)::value;
            at[K + i] = front.ahead[i][t];
            front.ahead[i][t] = next[t + i * toNext];
        });
        unrolled<waves>([&](auto step) {
            constexpr int i = decltype(step)::value;
            unrolled<K>([&](auto sweep) {
                constexpr int k = decltype(sweep)::value;
                rotatePlane<forward>(at[K - 1 - k + i], at[K - k + i], rotations.c[k][i], rotations.s[k][i]);
            });
            finished[t + i * toNext] = at[i];
        });
        unrolled<K>([&](auto step) {
            constexpr int k = decltype(step)::value;
            front.at[k + 1][t] = at[waves + k];
        });
    });
}

/// Wave t where the sweeps begin or end, number i of its run: those that have a rotation there.
template <bool forward, class T, class ForRows>
__device__ __forceinline__ void runWave(Wavefront<T>& front, WaveRotations<Real<T>> rotations, int i, int t,
                                        const SweepSet& set, Places<forward> places, T* A, int lda,
                                        const ForRows& forRows)
{
    inOrder<K>([&](int k) { forRows([&](int row) { front.at[k][row] = front.at[k + 1][row]; }); });
    forRows([&](int row) { front.at[K][row] = front.ahead[i][row]; });
    if (t + 1 + waves < places.count())
        forRows([&](int row) { front.ahead[i][row] = A[offset(row, places.column(t + 1 + waves), lda)]; });
    inOrder<K>([&](int k) {
        if (places.has(set.sweeps[k], t - k))
            forRows([&](int row) {
                rotatePlane<forward>(front.at[K - 1 - k][row], front.at[K - k][row], rotations.c[k][i],
                                     rotations.s[k][i]);
            });
    });
    const int finished = t - K + 1;
    if (0 <= finished && finished < places.count())
        forRows([&](int row) { A[offset(row, places.column(finished), lda)] = front.at[0][row]; });
}

/// The sweeps of a set on m rows of A; sweep k has its rotations at c + k stride and s + k stride.
template <class Map, bool forward, class T>
__global__ void SWEEPS_k(int m, const Real<T>* c, const Real<T>* s, std::int64_t stride,
                         const __grid_constant__ SweepSet set, T* A, int lda)
{
    __shared__ Real<T> cTemp[K][waves], sTemp[K][waves];
    const WaveRotations<Real<T>> rotations{cTemp, sTemp};
    const Rows block;
    const Places<forward> places(set);
    const int row0 = Map::firstItem(), rowsLeft = m - row0;
    T* const rows = A + row0;
    Wavefront<T> front;
    Private<Run<Real<T>>, rowsPerBlock> next;

    // Thread k has the rotations of sweep k.
    const auto fetchRotations = [&](int t0) {
        block.eachBelow(K, [&](int k) {
            const SweepColumns sweep = set.sweeps[k];
            const std::int64_t place = k * stride + places.rotation(sweep, t0 - k);
            const bool all = places.has(sweep, t0 - k) && places.has(sweep, t0 + waves - 1 - k);
            for (int i = 0; i < waves; ++i) {
                const bool there = all || places.has(sweep, t0 + i - k);
                next[k].c[i] = there ? c[place + (forward ? i : -i)] : Real<T>(0);
                next[k].s[i] = there ? s[place + (forward ? i : -i)] : Real<T>(0);
            }
        });
    };
    const auto shareRotations = [&] {
        block.eachBelow(K, [&](int k) {
            for (int i = 0; i < waves; ++i) {
                cTemp[k][i] = next[k].c[i];
                sTemp[k][i] = next[k].s[i];
            }
        });
    };
    /// All of `waves` waves from t0 on are inside of every sweep, and so are the elements that follow them.
    const auto isInside = [&](int t0) {
        bool inside = t0 - K + 1 >= 0 && t0 + 2 * waves < places.count();
        for (int k = 0; k < K; ++k)
            inside = inside && places.has(set.sweeps[k], t0 - k) && places.has(set.sweeps[k], t0 + waves - 1 - k);
        return inside;
    };

    const auto runAll = [&](const auto& forRows) {
        forRows([&](int t) { front.at[K][t] = rows[offset(t, places.column(0), lda)]; });
        unrolled<waves>([&](auto step) {
            constexpr int i = decltype(step)::value;
            if (i + 1 < places.count())
                forRows([&](int t) { front.ahead[i][t] = rows[offset(t, places.column(i + 1), lda)]; });
        });
        fetchRotations(0);
        for (int t0 = 0; t0 < places.count() + K - 1; t0 += waves) {
            block.sync();
            shareRotations();
            block.sync();
            fetchRotations(t0 + waves);
            if (isInside(t0))
                runWaves<forward>(front, rotations, t0, places, rows, lda, forRows);
            else
                inOrder<waves>(
                    [&](int i) { runWave<forward>(front, rotations, i, t0 + i, set, places, rows, lda, forRows); });
        }
    };
    // Apart for whole blocks of rows and for others: a CPU runs whole ones in vectors without a rest.
    if (rowsLeft >= rowsPerBlock)
        runAll([&](const auto& phase) { block.each(phase); });
    else
        runAll([&](const auto& phase) { block.eachBelow(rowsLeft, phase); });
}

namespace {

template <bool forward, class T>
void launchSweeps(int m, const SweepSet& set, const Real<T>* c, const Real<T>* s, std::int64_t stride, T* A, int lda)
{
    using Map = velk::StaticMap1D<rowsPerBlock>;
    const Map map(m);
    platform::launch<&SWEEPS_k<Map, forward, T>, Rows>(map.blocks(), map.threads(), m, c, s, stride, set, A, lda);
}

} // namespace

template <class T>
void SWEEPS(char direct, int m, const SweepColumns (&sweeps)[sweepsInPass], const Real<T>* c, const Real<T>* s,
            std::int64_t stride, T* A, int lda)
{
    SweepSet set;
    std::copy_n(sweeps, sweepsInPass, set.sweeps);
    if (direct == 'F')
        launchSweeps<true>(m, set, c, s, stride, A, lda);
    else
        launchSweeps<false>(m, set, c, s, stride, A, lda);
}

#define TARN_WRAPPERS(T)                                                                                               \
    template void SWEEPS(char, int, const SweepColumns(&)[sweepsInPass], const Real<T>*, const Real<T>*, std::int64_t, \
                         T*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(Complex<float>)

} // namespace tarn::kernel
