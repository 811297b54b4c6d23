// Thread maps: the geometry of a launch for a problem shape. As a template argument of a kernel the same class states
// which index arithmetic the kernel uses.
#pragma once

#include <lapack/cu/basic>

namespace velk {

/// Three unsigned extents, x first: of a block in threads, or of a grid in blocks.
using Shape = dim3;

/// The grid of blocks of `threads` threads for n items, where no grid extent may exceed `limit`: x = ceil(n / threads),
/// halved until it fits; then y likewise for what x leaves over; then z.
Shape gridFor1D(int n, int threads, int limit);

class MapBase
{
public:
    virtual ~MapBase() = default;
    /// Block shape.
    virtual Shape threads() const = 0;
    /// Grid shape; for one-dimensional maps within the limits of the thread's current device.
    virtual Shape blocks() const = 0;
};

/// One work item per thread, any number of items.
class Map1D : public MapBase
{
public:
    /// threads 0: by blockClass 1, 2, 3 a block of 256, 64, 16 threads, by any other of 256.
    explicit Map1D(int count, unsigned threads = 0, int blockClass = 0)
        : blockClass_(blockClass), count_(count), threads_(threads)
    {}
    Shape threads() const override;
    Shape blocks() const override;

    /// Item of the first thread of a one-dimensional block; thread t has the item t places on.
    static __device__ __forceinline__ unsigned firstItem()
    {
        return blockIdx.y * (gridDim.x * blockDim.x) + blockIdx.x * blockDim.x;
    }

private:
    int blockClass_;
    int count_;
    unsigned threads_;
};

/// One matrix element per thread, rows along x. A grid that the device does not allow is refused at the launch.
class Map2D : public MapBase
{
public:
    Map2D(int rows, int columns, unsigned threadsX = 0, unsigned threadsY = 0)
        : rows_(rows), columns_(columns), threadsX_(threadsX), threadsY_(threadsY)
    {}
    Shape threads() const override;
    Shape blocks() const override;

    /// Row of the threads tx = 0, and column of the threads ty = 0; thread (tx, ty) has the element that lies tx rows
    /// down and ty columns to the right.
    static __device__ __forceinline__ int firstRow() { return int(blockDim.x * blockIdx.x); }
    static __device__ __forceinline__ int firstColumn() { return int(blockDim.y * blockIdx.y); }

private:
    int rows_, columns_;
    unsigned threadsX_, threadsY_;
};

/// One-dimensional map with a block of N threads.
template <int N>
class StaticMap1D : public MapBase
{
public:
    explicit StaticMap1D(int count) : count_(count) {}
    Shape threads() const override { return {N, 1, 1}; }
    Shape blocks() const override;

    /// Item of the first thread of a block, by the x index alone; thread t has the item t places on.
    static __device__ __forceinline__ int firstItem() { return N * int(blockIdx.x); }

private:
    int count_;
};

// Maps that no launch computes with: as template arguments of kernels they name the index arithmetic.

/// As Map2D with blocks of X by Y threads.
template <int X, int Y>
struct StaticMap2D
{
    static __device__ __forceinline__ int firstRow() { return X * int(blockIdx.x); }
    static __device__ __forceinline__ int firstColumn() { return Y * int(blockIdx.y); }

    /// Number of the block in the grid, x first.
    static __device__ __forceinline__ std::int64_t block() { return std::int64_t(gridDim.x) * blockIdx.y + blockIdx.x; }
};

/// N elements of one line of a matrix per block: line bx, elements N by to N by + N - 1.
template <int N>
struct StaticLineMap
{
    static __device__ __forceinline__ int line() { return int(blockIdx.x); }
    static __device__ __forceinline__ int firstElement() { return N * int(blockIdx.y); }

    /// Number of the block in the grid, y first: the blocks of a line are neighbours.
    static __device__ __forceinline__ std::int64_t block() { return std::int64_t(gridDim.y) * blockIdx.x + blockIdx.y; }
};

/// Lines are columns.
template <int N>
struct StaticColumnWiseMap : StaticLineMap<N>
{};

/// Lines are rows.
template <int N>
struct StaticRowWiseMap : StaticLineMap<N>
{};

/// One run of values per block of N threads, which stride through it by N.
template <int N>
struct StaticOneBlockMap1D
{};

/// As Map2D; the kernel keeps one triangle of the elements.
struct TriangularMap2D
{
    static __device__ __forceinline__ int firstRow() { return Map2D::firstRow(); }
    static __device__ __forceinline__ int firstColumn() { return Map2D::firstColumn(); }
};

} // namespace velk
