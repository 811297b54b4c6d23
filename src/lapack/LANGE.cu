// Norms of a general matrix. A kernel over the matrix leaves one partial result per block; small reductions fold them.
#include "lapack/kernels.h"
#include "lapack/reductions.h"

namespace tarn::kernel {

namespace {

constexpr int tile = 16;
using Tile = Block<tile, tile>;
using TileMap = velk::StaticMap2D<tile, tile>;
using Columns = velk::StaticColumnWiseMap<reductionThreads>;
using Rows = velk::StaticRowWiseMap<reductionThreads>;
using OneBlock = velk::StaticOneBlockMap1D<reductionThreads>;

/// partial[block] := measure of the elements in the block's tile, folded; elements outside the matrix count 0.
template <class Map, class T, class R, class Measure, class Combine>
__device__ __forceinline__ void foldTile(R* work, int m, int n, const T* A, int lda, R* partial, Measure measure,
                                         Combine combine)
{
    const Tile block;
    const int r0 = Map::firstRow(), c0 = Map::firstColumn();
    block.each([&](int tx, int ty) {
        work[tile * ty + tx] = r0 + tx < m && c0 + ty < n ? measure(A[offset(r0 + tx, c0 + ty, lda)]) : R(0);
    });
    reduceTree(block, work, combine);
    block.each([&](int tx, int ty) {
        if (tx == 0 && ty == 0)
            partial[Map::block()] = work[0];
    });
}

} // namespace

/// partial[b] := largest magnitude of the 16 by 16 tile of block b.
template <class Map, class T, class R>
__global__ void LANGE_M_k(int m, int n, const T* A, int lda, R* partial)
{
    __shared__ R work[reductionThreads];
    foldTile<Map>(
        work, m, n, A, lda, partial, [](T x) { return magnitude(x); }, Maximum());
}

/// partial[b] := sum of the squared magnitudes of the 16 by 16 tile of block b.
template <class Map, class T, class R>
__global__ void LANGE_F_k(int m, int n, const T* A, int lda, R* partial)
{
    __shared__ R work[reductionThreads];
    foldTile<Map>(
        work, m, n, A, lda, partial, [](T x) { return squaredMagnitude(x); }, Sum());
}

/// partial[b] := sum of the magnitudes of 256 elements of one column or row, as the map has it.
template <class Map, class T, class R>
__global__ void LANGE_OI_k(int m, int n, const T* A, int lda, R* partial)
{
    __shared__ R work[reductionThreads];
    constexpr bool columnWise = std::is_same_v<Map, Columns>;
    const Reduction block;
    const int line = Map::line(), first = Map::firstElement();
    block.each([&](int t) {
        const int i = columnWise ? first + t : line, j = columnWise ? line : first + t;
        work[t] = i < m && j < n ? magnitude(A[offset(i, j, lda)]) : R(0);
    });
    reduceTree(block, work, Sum());
    block.each([&](int t) {
        if (t == 0)
            partial[Map::block()] = work[0];
    });
}

namespace {

int blocksFor(int n, int threads) { return n / threads + (n % threads > 0); }

dim3 tileGrid(int m, int n) { return {unsigned(blocksFor(m, tile)), unsigned(blocksFor(n, tile))}; }

/// Largest sum of the magnitudes of a line; lines of `length` elements.
template <class Map, class T>
void largestLineSum(int lines, int length, int m, int n, const T* A, int lda, Real<T>* work, Real<T>* result)
{
    const int blocks = blocksFor(length, reductionThreads);
    Real<T>* const sums = work + std::int64_t(lines) * blocks;
    platform::launch<&LANGE_OI_k<Map, T, Real<T>>, Reduction>(dim3(unsigned(lines), unsigned(blocks)),
                                                              dim3(Reduction::x), m, n, A, lda, work);
    findSum<Map>(lines, blocks, work, sums);
    findMaxValue(lines, sums, result);
}

} // namespace

std::int64_t langeWorkspace(char norm, int m, int n)
{
    if (norm == 'O')
        return std::int64_t(n) * (blocksFor(m, reductionThreads) + 1);
    if (norm == 'I')
        return std::int64_t(m) * (blocksFor(n, reductionThreads) + 1);
    return std::int64_t(blocksFor(m, tile)) * blocksFor(n, tile);
}

template <class T>
void LANGE(char norm, int m, int n, const T* A, int lda, Real<T>* work, Real<T>* result)
{
    using R = Real<T>;
    const dim3 grid = tileGrid(m, n), threads(tile, tile);
    const int tiles = int(langeWorkspace('M', m, n));
    switch (norm) {
    case 'M':
        platform::launch<&LANGE_M_k<TileMap, T, R>, Tile>(grid, threads, m, n, A, lda, work);
        findMaxValue(tiles, work, result);
        break;
    case 'O':
        largestLineSum<Columns>(n, m, m, n, A, lda, work, result);
        break;
    case 'I':
        largestLineSum<Rows>(m, n, m, n, A, lda, work, result);
        break;
    case 'F':
        platform::launch<&LANGE_F_k<TileMap, T, R>, Tile>(grid, threads, m, n, A, lda, work);
        findSum<OneBlock>(1, tiles, work, result);
        break;
    }
}

#define TARN_WRAPPERS(T) template void LANGE(char, int, int, const T*, int, Real<T>*, Real<T>*);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
