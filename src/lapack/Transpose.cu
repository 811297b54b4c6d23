// Transposition, out of place and in place, with or without conjugation. Every tile goes through shared memory, so that
// reads and writes both run along columns; the seventeenth row of a tile keeps its columns on separate banks.
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/thread_maps.h"

namespace tarn::kernel {

namespace {

constexpr int tile = 16;
using Tile = Block<tile, tile>;

} // namespace

/// A tile in shared memory: work[ty][tx] holds row tx, column ty.
template <class T>
using SharedTile = T (&)[tile][tile + 1];

/// work := the tile of src (leading dimension ld) with first element (r0, c0), of which rows by cols elements exist.
/// A whole tile needs no tests, so that a CPU vectorises it.
template <bool whole, class T>
__device__ __forceinline__ void loadTile(SharedTile<T> work, const T* src, int ld, int r0, int c0, int rows, int cols)
{
    const Tile block;
    block.each([&](int tx, int ty) {
        if (whole || (tx < rows && ty < cols))
            work[ty][tx] = src[offset(r0 + tx, c0 + ty, ld)];
    });
}

/// The tile of dst with first element (r0, c0), of which rows by cols elements exist, := work^T or, if conj, work^H.
template <bool conj, bool whole, class T>
__device__ __forceinline__ void storeTransposed(SharedTile<T> work, T* dst, int ld, int r0, int c0, int rows, int cols)
{
    const Tile block;
    block.each([&](int tx, int ty) {
        if (whole || (tx < rows && ty < cols))
            dst[offset(r0 + tx, c0 + ty, ld)] = conjugateIf<conj>(work[tx][ty]);
    });
}

template <bool conj, bool whole, class T>
__device__ __forceinline__ void transposeTile(SharedTile<T> work, T* dst, int ldd, const T* src, int lds, int r0,
                                              int c0, int rows, int cols)
{
    loadTile<whole>(work, src, lds, r0, c0, rows, cols);
    Tile().sync();
    storeTransposed<conj, whole>(work, dst, ldd, c0, r0, cols, rows);
}

/// dst := src^T, conjugated if conj; src m by n. One block per 16 by 16 tile of src.
template <class T, bool conj>
__global__ void Transpose_k(T* dst, int ldd, const T* src, int lds, int m, int n)
{
    __shared__ T work[tile][tile + 1];
    const int r0 = tile * int(blockIdx.x), c0 = tile * int(blockIdx.y);
    const int rows = m - r0, cols = n - c0;
    if (rows >= tile && cols >= tile)
        transposeTile<conj, true>(work, dst, ldd, src, lds, r0, c0, rows, cols);
    else
        transposeTile<conj, false>(work, dst, ldd, src, lds, r0, c0, rows, cols);
}

/// Exchanges the tile of A at (r0, c0) with its mirror at (c0, r0), both transposed. Both are read whole before either
/// is written; a tile on the diagonal is its own mirror.
template <bool conj, bool whole, class T>
__device__ __forceinline__ void exchangeTiles(SharedTile<T> blockA, SharedTile<T> blockB, T* A, int lda, int r0, int c0,
                                              int rows, int cols)
{
    loadTile<whole>(blockA, A, lda, r0, c0, rows, cols);
    if (r0 != c0)
        loadTile<whole>(blockB, A, lda, c0, r0, cols, rows);
    Tile().sync();
    if (r0 != c0)
        storeTransposed<conj, whole>(blockB, A, lda, r0, c0, rows, cols);
    storeTransposed<conj, whole>(blockA, A, lda, c0, r0, cols, rows);
}

/// A := A^T in place, conjugated if conj; A n by n. The block (bx, by) with bx >= by owns its tile and the mirror of
/// it; blocks above the tile diagonal have nothing to do.
template <class T, bool conj>
__global__ void TransposeInplace_k(T* A, int lda, int n)
{
    __shared__ T blockA[tile][tile + 1];
    __shared__ T blockB[tile][tile + 1];
    if (blockIdx.y > blockIdx.x)
        return;
    const int r0 = tile * int(blockIdx.x), c0 = tile * int(blockIdx.y);
    const int rows = n - r0, cols = n - c0;
    if (rows >= tile && cols >= tile)
        exchangeTiles<conj, true>(blockA, blockB, A, lda, r0, c0, rows, cols);
    else
        exchangeTiles<conj, false>(blockA, blockB, A, lda, r0, c0, rows, cols);
}

namespace {

void checkTranspose(int m, int n, const void* A, int lda, const void* B, int ldb)
{
    require(m >= 0, -1);
    require(n >= 0, -2);
    require(lda >= m, -4);
    require(ldb >= n, -6);
    if (m == 0 && n == 0)
        return;
    require(A != nullptr, -3);
    require(B != nullptr, -5);
}

template <class T, bool conj>
void transpose(T* B, int ldb, const T* A, int lda, int m, int n)
{
    checkTranspose(m, n, A, lda, B, ldb);
    if (m == 0 || n == 0)
        return;
    const velk::Map2D map(m, n, tile, tile);
    platform::launch<&Transpose_k<T, conj>, Tile>(map.blocks(), map.threads(), B, ldb, A, lda, m, n);
}

} // namespace

template <class T>
void Transpose(T* B, int ldb, const T* A, int lda, int m, int n)
{
    transpose<T, false>(B, ldb, A, lda, m, n);
}

template <class T>
void ConjugateTranspose(T* B, int ldb, const T* A, int lda, int m, int n)
{
    transpose<T, true>(B, ldb, A, lda, m, n);
}

namespace {

template <class T, bool conj>
void transposeInplace(int n, T* A, int lda)
{
    require(n >= 0, -1);
    require(lda >= n, -3);
    if (n == 0)
        return;
    require(A != nullptr, -2);
    const velk::Map2D map(n, n, tile, tile);
    platform::launch<&TransposeInplace_k<T, conj>, Tile>(map.blocks(), map.threads(), A, lda, n);
}

} // namespace

template <class T>
void TransposeInplace(int n, T* A, int lda)
{
    transposeInplace<T, false>(n, A, lda);
}

template <class T>
void ConjugateTransposeInplace(int n, T* A, int lda)
{
    transposeInplace<T, true>(n, A, lda);
}

#define TARN_WRAPPERS(T)                                                                                               \
    template void Transpose(T*, int, const T*, int, int, int);                                                         \
    template void ConjugateTranspose(T*, int, const T*, int, int, int);                                                \
    template void TransposeInplace(int, T*, int);                                                                      \
    template void ConjugateTransposeInplace(int, T*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
