// The one-norm of a symmetric or Hermitian matrix of which one triangle is stored. The sum of a column is made in two
// passes over the stored triangle: along the column, and along the row of the same index.
#include "lapack/kernels.h"
#include "lapack/reductions.h"

namespace tarn::kernel {

namespace {

using Columns = velk::StaticColumnWiseMap<reductionThreads>;
using Rows = velk::StaticRowWiseMap<reductionThreads>;

/// What a diagonal element counts: that of a Hermitian matrix is real, whatever is stored.
template <class R>
__device__ __forceinline__ R diagonalMagnitude(R x)
{
    return magnitude(x);
}

template <class R>
__device__ __forceinline__ R diagonalMagnitude(Complex<R> x)
{
    return magnitude(x.real());
}

} // namespace

/// partial[b] := sum over 256 elements of the strict triangle in column bx (row-wise map), or partial[b] += the same of
/// the triangle with its diagonal in row bx (column-wise map): the row-wise pass comes first.
template <class Map, class T, class R>
__global__ void LANHE_O_k(int n, const T* A, int lda, R* partial, bool upper)
{
    __shared__ R work[reductionThreads];
    constexpr bool alongColumn = std::is_same_v<Map, Rows>;
    const Reduction block;
    const int line = Map::line(), first = Map::firstElement();
    block.each([&](int t) {
        const int e = first + t;
        const bool stored = alongColumn ? (upper ? e < line : e > line) : (upper ? e >= line : e <= line);
        R value(0);
        if (e < n && stored) {
            const T x = A[alongColumn ? offset(e, line, lda) : offset(line, e, lda)];
            value = e == line ? diagonalMagnitude(x) : magnitude(x);
        }
        work[t] = value;
    });
    reduceTree(block, work, Sum());
    block.each([&](int t) {
        if (t == 0)
            partial[Map::block()] = alongColumn ? work[0] : partial[Map::block()] + work[0];
    });
}

std::int64_t lanheWorkspace(int n) { return langeWorkspace('O', n, n); }

template <class T>
void LANHE(char uplo, int n, const T* A, int lda, Real<T>* work, Real<T>* result)
{
    using R = Real<T>;
    const bool upper = uplo == 'U';
    const int blocks = n / reductionThreads + (n % reductionThreads > 0);
    const dim3 grid{unsigned(n), unsigned(blocks)}, threads{Reduction::x};
    R* const sums = work + std::int64_t(n) * blocks;
    platform::launch<&LANHE_O_k<Rows, T, R>, Reduction>(grid, threads, n, A, lda, work, upper);
    platform::launch<&LANHE_O_k<Columns, T, R>, Reduction>(grid, threads, n, A, lda, work, upper);
    findSum<Columns>(n, blocks, work, sums);
    findMaxValue(n, sums, result);
}

#define TARN_WRAPPERS(T) template void LANHE(char, int, const T*, int, Real<T>*, Real<T>*);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
