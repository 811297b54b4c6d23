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

/// The tile of dst := src^T whose first element is src(r0, c0), by way of `work`. whole: no thread is out of bounds, so
/// that the loads and stores of a CPU vectorise without tests.
template <bool conj, bool whole, class T>
__device__ __forceinline__ void transposeTile(T (&work)[tile][tile + 1], T* dst, int ldd, const T* src, int lds, int r0,
                                              int c0, int rowsLeft, int colsLeft)
{
    const Tile block;
    block.each([&](int tx, int ty) {
        if (whole || (tx < rowsLeft && ty < colsLeft))
            work[ty][tx] = src[offset(r0 + tx, c0 + ty, lds)];
    });
    block.sync();
    block.each([&](int tx, int ty) {
        if (whole || (tx < colsLeft && ty < rowsLeft))
            dst[offset(c0 + tx, r0 + ty, ldd)] = conjugateIf<conj>(work[tx][ty]);
    });
}

/// dst := src^T, conjugated if conj; src m by n. One block per 16 by 16 tile of src.
template <class T, bool conj>
__global__ void Transpose_k(T* dst, int ldd, const T* src, int lds, int m, int n)
{
    __shared__ T work[tile][tile + 1];
    const int r0 = tile * int(blockIdx.x), c0 = tile * int(blockIdx.y);
    const int rowsLeft = m - r0, colsLeft = n - c0;
    if (rowsLeft >= tile && colsLeft >= tile)
        transposeTile<conj, true>(work, dst, ldd, src, lds, r0, c0, rowsLeft, colsLeft);
    else
        transposeTile<conj, false>(work, dst, ldd, src, lds, r0, c0, rowsLeft, colsLeft);
}

/// A := A^T in place, conjugated if conj; A n by n. The block (bx, by) with bx > by exchanges its tile with its mirror,
/// both read whole before either is written; blocks above the tile diagonal have nothing to do.
template <class T, bool conj>
__global__ void TransposeInplace_k(T* A, int lda, int n)
{
    __shared__ T blockA[tile][tile + 1];
    __shared__ T blockB[tile][tile + 1];
    const Tile block;
    if (blockIdx.y > blockIdx.x)
        return;
    const int r0 = tile * int(blockIdx.x), c0 = tile * int(blockIdx.y);
    const bool diagonal = blockIdx.x == blockIdx.y;

    block.each([&](int tx, int ty) {
        if (r0 + tx < n && c0 + ty < n)
            blockA[ty][tx] = A[offset(r0 + tx, c0 + ty, lda)];
    });
    if (!diagonal)
        block.each([&](int tx, int ty) {
            if (c0 + tx < n && r0 + ty < n)
                blockB[ty][tx] = A[offset(c0 + tx, r0 + ty, lda)];
        });
    block.sync();
    if (!diagonal)
        block.each([&](int tx, int ty) {
            if (r0 + tx < n && c0 + ty < n)
                A[offset(r0 + tx, c0 + ty, lda)] = conjugateIf<conj>(blockB[tx][ty]);
        });
    block.each([&](int tx, int ty) {
        if (c0 + tx < n && r0 + ty < n)
            A[offset(c0 + tx, r0 + ty, lda)] = conjugateIf<conj>(blockA[tx][ty]);
    });
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

template <class T>
void TransposeInplace(int n, T* A, int lda)
{
    require(n >= 0, -1);
    require(lda >= n, -3);
    if (n == 0)
        return;
    require(A != nullptr, -2);
    const velk::Map2D map(n, n, tile, tile);
    platform::launch<&TransposeInplace_k<T, false>, Tile>(map.blocks(), map.threads(), A, lda, n);
}

#define TARN_KERNELS(T)                                                                                                \
    template __global__ void Transpose_k<T, false>(T*, int, const T*, int, int, int);                                  \
    template __global__ void Transpose_k<T, true>(T*, int, const T*, int, int, int);                                   \
    template __global__ void TransposeInplace_k<T, false>(T*, int, int);                                               \
    template __global__ void TransposeInplace_k<T, true>(T*, int, int);

TARN_KERNELS(float)
TARN_KERNELS(double)
TARN_KERNELS(Complex<float>)
TARN_KERNELS(Complex<double>)

#define TARN_WRAPPERS(T)                                                                                               \
    template void Transpose(T*, int, const T*, int, int, int);                                                         \
    template void ConjugateTranspose(T*, int, const T*, int, int, int);                                                \
    template void TransposeInplace(int, T*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(Complex<float>)

} // namespace tarn::kernel
