// The transposed matrix-vector product: a dot product of a whole column of A per element of y. On a GPU tiles of A go
// through shared memory, so that A is read along its columns while every thread sums over rows of its own.
#include "blas/checks.h"
#include "blas/cublas.h"
#include "lapack/kernels.h"

#include <lapack/cu/basic>

namespace tarn::kernel {

namespace {

/// Tile width and thread rows of the kernel for an element type. A chunk is the rows that one tile of threads stages.
template <class T>
struct GemvShape
{
    static constexpr int tile = 16, ty = 8, chunk = tile * ty;
};

template <>
struct GemvShape<float>
{
    static constexpr int tile = 32, ty = 16, chunk = tile * ty;
};

/// The sums of a thread over the even and the odd one of its rows: apart, so that rows next to each other have their
/// sums next to each other in the memory of a CPU.
template <class T>
struct RowPair
{
    T even, odd;
};

/// Shared memory and accumulators of a block. Row c of a tile is column c of A; the odd pitch keeps lanes that read
/// down the columns of the array on separate banks.
template <class T, int TILE, int TY>
struct GemvBlock
{
    T (&x)[TILE * TY];
    T (&a)[TILE][TILE + 1];
    Private<RowPair<T>, TILE * TY>& acc;

    /// Where thread (tx, ty) keeps its accumulator.
    static __device__ __forceinline__ constexpr int index(int tx, int ty) { return tx * TY + ty; }
};

/// Tiles whose elements a thread of a GPU loads before it needs the first of them, half a chunk: it waits for memory
/// twice a chunk. Between the tiles they stay in registers.
template <int TY>
inline constexpr int tilesAhead = readsInPlace ? 1 : TY / 2;

/// A thread's elements of the tiles that are loaded ahead.
template <class T, int TILE, int TY>
struct Ahead
{
    T values[tilesAhead<TY>][TILE / TY];
};

/// Loads the tiles from `top` on, one below the other, or their conjugates. Bounded tiles have rows and columns inside
/// the matrix, others are taken as zero. Rows and columns are tested apart: a CPU vectorises over rows, and masked
/// loads from columns behind the matrix, whose pages need not be there, would trap into microcode.
template <bool conj, bool bounded, class T, int TILE, int TY>
__device__ __forceinline__ void loadAhead(Private<Ahead<T, TILE, TY>, TILE * TY>& ahead, const T* top, int lda,
                                          int rows, int columns)
{
    const Block<TILE, TY> block;
    block.each([&](int tx, int ty) {
        for (int k = 0; k < tilesAhead<TY>; ++k)
            for (int q = 0; q < TILE / TY; ++q) {
                const int i = k * TILE + tx, c = ty + q * TY;
                T& value = ahead[TILE * ty + tx].values[k][q];
                if (!bounded || c < columns)
                    value = !bounded || i < rows ? conjugateIf<conj>(top[offset(i, c, lda)]) : T(0);
                else
                    value = T(0);
            }
    });
}

/// Tile k of those that were loaded ahead, to shared memory.
template <class T, int TILE, int TY>
__device__ __forceinline__ void stage(GemvBlock<T, TILE, TY> shared, Private<Ahead<T, TILE, TY>, TILE * TY>& ahead,
                                      int k)
{
    const Block<TILE, TY> block;
    block.each([&](int tx, int ty) {
        for (int q = 0; q < TILE / TY; ++q)
            shared.a[ty + q * TY][tx] = ahead[TILE * ty + tx].values[k][q];
    });
}

/// acc(tx, ty) += rows 2 ty and 2 ty + 1 of column tx of each of `tiles` tiles, one below the other, or of their
/// conjugates, times x.
template <bool conj, class T, int TILE, int TY>
__device__ __forceinline__ void addTiles(GemvBlock<T, TILE, TY> shared, int tiles, const T* A, int pitch, const T* x)
{
    const Block<TILE, TY> block;
    block.eachAlongY(tiles, [&](int tx, int ty, int k) {
        RowPair<T>& acc = shared.acc[shared.index(tx, ty)];
        const int i = k * TILE + 2 * ty;
        addProduct(acc.even, conjugateIf<conj>(A[offset(i, tx, pitch)]), x[i]);
        addProduct(acc.odd, conjugateIf<conj>(A[offset(i + 1, tx, pitch)]), x[i + 1]);
    });
}

/// Whole tiles of a chunk at once, from where they stand, on a CPU: column by column, each one run of memory. Returns
/// how many.
template <bool conj, bool bounded, class T, int TILE, int TY>
__device__ __forceinline__ int addInPlace(GemvBlock<T, TILE, TY> shared, const T* chunk, int lda, int rows, int columns)
{
    if (!readsInPlace || columns < TILE)
        return 0;
    const int tiles = bounded ? rows / TILE : TY;
    Block<TILE, TY>().sync();
    addTiles<conj>(shared, tiles, chunk, lda, shared.x);
    return tiles;
}

/// Adds the products of the chunk that starts at row i0, tile by tile. A bounded chunk ends with the tile that holds
/// row m - 1 if it has that row.
template <bool conj, bool bounded, class T, int TILE, int TY>
__device__ __forceinline__ void addChunk(GemvBlock<T, TILE, TY> shared, int i0, int m, int n, const T* A, int lda,
                                         const T* x, int incx)
{
    const Block<TILE, TY> block;
    block.each([&](int tx, int ty) {
        const int i = TILE * ty + tx;
        shared.x[i] = !bounded || i0 + i < m ? x[std::int64_t(i0 + i) * incx] : T(0);
    });
    const int j0 = TILE * int(blockIdx.x), columns = n - j0;
    const int rows = bounded && m - i0 < TILE * TY ? m - i0 : TILE * TY;
    const T* const chunk = A + offset(i0, j0, lda);
    Private<Ahead<T, TILE, TY>, TILE * TY> ahead;
    for (int k = addInPlace<conj, bounded>(shared, chunk, lda, rows, columns); k < TY && k * TILE < rows;) {
        if (columns >= TILE && (k + tilesAhead<TY>)*TILE <= rows)
            loadAhead<conj, false>(ahead, chunk + k * TILE, lda, rows, columns);
        else
            loadAhead<conj, true>(ahead, chunk + k * TILE, lda, rows - k * TILE, columns);
        for (int tile = 0; tile < tilesAhead<TY> && k * TILE < rows; ++tile, ++k) {
            stage(shared, ahead, tile);
            block.sync();
            addTiles<false>(shared, 1, &shared.a[0][0], TILE + 1, shared.x + k * TILE);
            block.sync();
        }
    }
}

/// Sums a(tx, 0) to a(tx, 2 half - 1) in a(tx, 0), as a tree.
template <int half, class T, int TILE, int TY>
__device__ __forceinline__ void addHalves(GemvBlock<T, TILE, TY> shared)
{
    const Block<TILE, TY> block;
    block.eachAlongY([&](int tx, int ty) {
        if (ty < half)
            shared.a[tx][ty] += shared.a[tx][ty + half];
    });
    block.sync();
    if constexpr (half > 1)
        addHalves<half / 2>(shared);
}

} // namespace

/// y := alpha A^T x + beta y, or A^H if conj; increments positive. One block per TILE columns of A: no column spans two
/// blocks, and the order of additions is the same for every grid. mAligned: m without the rows of the last, partial
/// chunk of TILE * TY rows. y is not read where beta is 0, A and x are not where alpha is 0.
template <class T, int TILE, int TY, bool conj>
__global__ void gemvt_k(int m, int n, T alpha, int mAligned, const T* A, int lda, T beta, const T* x, int incx, T* y,
                        int incy)
{
    __shared__ T x_smem[TILE * TY];
    __shared__ T A_smem[TILE][TILE + 1];
    const Block<TILE, TY> block;
    Private<RowPair<T>, TILE * TY> acc;
    const GemvBlock<T, TILE, TY> shared{x_smem, A_smem, acc};

    block.eachAlongY([&](int tx, int ty) { acc[shared.index(tx, ty)] = {T(0), T(0)}; });
    const bool readA = alpha != T(0);
    const int whole = readsInPlace ? 0 : mAligned; // a CPU takes all chunks as it takes the last
    for (int i = 0; readA && i < whole; i += TILE * TY)
        addChunk<conj, false>(shared, i, m, n, A, lda, x, incx);
    for (int i = whole; readA && i < m; i += TILE * TY)
        addChunk<conj, true>(shared, i, m, n, A, lda, x, incx);

    block.eachAlongY([&](int tx, int ty) {
        const RowPair<T>& rows = acc[shared.index(tx, ty)];
        A_smem[tx][ty] = sum(rows.even, rows.odd);
    });
    block.sync();
    addHalves<TY / 2>(shared);
    const bool readY = beta != T(0);
    block.each([&](int tx, int ty) {
        const int j = TILE * int(blockIdx.x) + tx;
        if (ty == 0 && j < n) {
            T* const result = y + std::int64_t(j) * incy;
            T value = readY ? product(beta, *result) : T(0);
            addProduct(value, alpha, A_smem[tx][0]);
            *result = value;
        }
    });
}

template <class T>
void gemv(char trans, int m, int n, T alpha, const T* A, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    checkGemv(trans, m, n, A, lda, x, y);
    if (m == 0 || n == 0 || (alpha == T(0) && beta == T(1)))
        return;
    if (trans == 'N' || incx <= 0 || incy <= 0) {
        cublas::gemv(trans, m, n, alpha, A, lda, x, incx, beta, y, incy);
        return;
    }
    using Shape = GemvShape<T>;
    using Threads = Block<Shape::tile, Shape::ty>;
    const dim3 grid((unsigned(n) + Shape::tile - 1) / Shape::tile), block(Shape::tile, Shape::ty);
    const int mAligned = m / Shape::chunk * Shape::chunk;
    if (trans == 'C')
        platform::launch<&gemvt_k<T, Shape::tile, Shape::ty, true>, Threads>(grid, block, m, n, alpha, mAligned, A, lda,
                                                                             beta, x, incx, y, incy);
    else
        platform::launch<&gemvt_k<T, Shape::tile, Shape::ty, false>, Threads>(grid, block, m, n, alpha, mAligned, A,
                                                                              lda, beta, x, incx, y, incy);
}

#define TARN_GEMV(T, TILE, TY)                                                                                         \
    template __global__ void gemvt_k<T, TILE, TY, false>(int, int, T, int, const T*, int, T, const T*, int, T*, int);  \
    template __global__ void gemvt_k<T, TILE, TY, true>(int, int, T, int, const T*, int, T, const T*, int, T*, int);   \
    template void gemv(char, int, int, T, const T*, int, const T*, int, T, T*, int);

TARN_GEMV(float, 32, 16)
TARN_GEMV(double, 16, 8)
TARN_GEMV(Complex<float>, 16, 8)
TARN_GEMV(Complex<double>, 16, 8)

} // namespace tarn::kernel
