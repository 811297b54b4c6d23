// Kernels with one thread per element of a matrix or a vector: which elements a block has, and how such a kernel is
// launched.
#pragma once

#include "lapack/thread_maps.h"

#include <lapack/cu/basic>

namespace tarn::kernel {

using MatrixBlock = Block<16, 16>;
using VectorBlock = Block<256>;

/// visit(i, j) for the elements of an m by n matrix that the block has. A block that lies inside asks no thread about
/// its bounds, so that a CPU runs through whole vectors.
template <class Map, class Visit>
__device__ __forceinline__ void forEachElement(int m, int n, Visit&& visit)
{
    const MatrixBlock block;
    const int r0 = Map::firstRow(), c0 = Map::firstColumn();
    const int rowsLeft = m - r0, columnsLeft = n - c0;
    if (rowsLeft >= MatrixBlock::x && columnsLeft >= MatrixBlock::y)
        block.each([&](int tx, int ty) { visit(r0 + tx, c0 + ty); });
    else
        block.each([&](int tx, int ty) {
            if (tx < rowsLeft && ty < columnsLeft)
                visit(r0 + tx, c0 + ty);
        });
}

/// visit(k) for the items of n that the block has; k is 64-bit, ready to be multiplied by an increment.
template <class Map, class Visit>
__device__ __forceinline__ void forEachItem(int n, Visit&& visit)
{
    const VectorBlock block;
    const std::int64_t first = Map::firstItem();
    block.each([&](int t) {
        if (first + t < n)
            visit(first + t);
    });
}

/// Queues Kernel, a matter of forEachElement, for a matrix of that shape.
template <auto Kernel, class... Args>
void launchOnMatrix(int rows, int columns, Args... args)
{
    const velk::Map2D map(rows, columns);
    platform::launch<Kernel, MatrixBlock>(map.blocks(), map.threads(), args...);
}

/// Queues Kernel, a matter of forEachItem, for n items.
template <auto Kernel, class... Args>
void launchOnVector(int n, Args... args)
{
    const velk::Map1D map(n);
    platform::launch<Kernel, VectorBlock>(map.blocks(), map.threads(), args...);
}

} // namespace tarn::kernel
