// The product of a symmetric or Hermitian matrix with a vector. Every element of the stored triangle is read once and
// used twice: as A(i, j) for row i of the result, and as its mirror for row j. Partial sums of a block therefore belong
// to rows of other blocks, and meet either in y, by atomic additions, or in a workspace that a second kernel adds up.
#include "lapack/kernels.h"

#include <lapack/cu/basic>

#include <type_traits>

namespace tarn::kernel {

namespace {

constexpr int blockOrder = 32;  ///< order of the diagonal block that one block of threads owns
constexpr int tilePitch = 17;   ///< of tiles of 16 by 16: lanes along either index fall on separate banks
constexpr int stripes = 4;      ///< of a panel tile of 32 by 32
constexpr int stripeWidth = 8;  ///< columns of a stripe
constexpr int stripePitch = 33; ///< of stripes in shared memory
constexpr int parts = 4;        ///< elements of a stripe that a thread multiplies, by columns and by rows
/// Rows of the workspace that a thread of a GPU loads before it adds the first.
constexpr int rowsAtOnce = readsInPlace ? 1 : 16;
using Line = Block<blockOrder>;
using Threads = Block<2 * blockOrder>;

/// Shared memory and registers of a block of symv_k. `a` holds a tile or a stripe of A by columns; xCol multiplies its
/// columns and xRow its rows. acc(t), t below 32, is the result's row t of the diagonal block.
template <class T>
struct SymvBlock
{
    T (&a)[16 * tilePitch];
    T (&xCol)[blockOrder];
    T (&xRow)[blockOrder];
    Private<T, Threads::threads>& acc;
};

template <class T>
__device__ __forceinline__ T conjugate(T x)
{
    return conjugateIf<true>(x);
}

/// acc(off + tx) += the four partial sums of `part` for tx. Ends after a sync.
template <int off, class T>
__device__ __forceinline__ void addQuarters(SymvBlock<T> shared, Private<T, Threads::threads>& part)
{
    constexpr int tile = 16;
    const Threads block;
    T* const a = shared.a;
    block.each<tile>([&](int tx, int ty) { a[ty * tilePitch + tx] = part[tile * ty + tx]; });
    block.sync();
    block.each<tile>([&](int tx, int ty) {
        if (ty == off / tile) {
            T sum = a[tx];
            for (int k = 1; k < 4; ++k)
                sum += a[k * tilePitch + tx];
            shared.acc[off + tx] += sum;
        }
    });
    block.sync();
}

/// Completes a symmetric or Hermitian tile of which one triangle is stored. The diagonal of a Hermitian one is real.
template <bool lower, class T>
__device__ __forceinline__ void mirrorTile(T* a)
{
    const Threads block;
    block.each<16>([&](int tx, int ty) {
        for (int k = 0; k < 4; ++k) {
            const int c = ty + 4 * k;
            T& x = a[c * tilePitch + tx];
            if (lower ? c > tx : c < tx)
                x = conjugate(a[tx * tilePitch + c]);
            if constexpr (isComplex<T>)
                if (c == tx)
                    x.imag(0);
        }
    });
    block.sync();
}

/// acc += contribution of the 16 by 16 tile at (rowOff, colOff) of the diagonal block D, of which `order` rows and
/// columns are inside the matrix; a tile off the diagonal counts a second time as its own mirror.
template <bool lower, bool bounded, int rowOff, int colOff, class T>
__device__ void addDiagonalTile(SymvBlock<T> shared, const T* D, int lda, int order)
{
    constexpr int tile = 16, quarters = 4;
    const Threads block;
    T* const a = shared.a;
    Private<T, Threads::threads> p;

    block.each<tile>([&](int tx, int ty) {
        for (int k = 0; k < quarters; ++k) {
            const int c = ty + quarters * k, i = rowOff + tx, j = colOff + c;
            a[c * tilePitch + tx] = !bounded || (i < order && j < order) ? D[offset(i, j, lda)] : T(0);
        }
    });
    block.sync();
    if constexpr (rowOff == colOff)
        mirrorTile<lower>(a);
    block.each<tile>([&](int tx, int ty) {
        T sum(0);
        for (int k = 0, c = ty; k < quarters; ++k, c += quarters)
            addProduct(sum, a[c * tilePitch + tx], shared.xCol[colOff + c]);
        p[tile * ty + tx] = sum;
    });
    if constexpr (rowOff != colOff) {
        Private<T, Threads::threads> q;
        block.each<tile>([&](int tx, int ty) {
            T sum(0);
            for (int k = 0, r = ty; k < quarters; ++k, r += quarters)
                addProduct(sum, conjugate(a[tx * tilePitch + r]), shared.xRow[rowOff + r]);
            q[tile * ty + tx] = sum;
        });
        block.sync();
        addQuarters<colOff>(shared, q);
    } else {
        block.sync();
    }
    addQuarters<rowOff>(shared, p);
}

/// A tile of 32 by 32 as the products take it. A CPU that reads tiles from where they stand copies those that are not
/// whole, so that all are multiplied by the same code, without a test against bounds. rows and columns are those inside
/// the matrix.
template <bool copiesPartOfTile, class T>
struct WholeTile
{
    const T* M;
    int lda;

    __device__ __forceinline__ void at(const T* tile, int pitch, int, int)
    {
        M = tile;
        lda = pitch;
    }
};

template <class T>
struct WholeTile<true, T>
{
    const T* M;
    int lda;
    T copy[blockOrder * blockOrder];

    void at(const T* tile, int pitch, int rows, int columns)
    {
        M = tile;
        lda = pitch;
        if (rows < blockOrder || columns < blockOrder) {
            for (int j = 0; j < blockOrder; ++j)
                for (int i = 0; i < blockOrder; ++i)
                    copy[blockOrder * j + i] = i < rows && j < columns ? tile[offset(i, j, pitch)] : T(0);
            M = copy;
            lda = blockOrder;
        }
    }
};

/// Loads the 32 elements of x from i0 on; bounded: zeros from n on.
template <bool bounded, class T>
__device__ __forceinline__ void loadX(T* to, int i0, int n, const T* x, int incx)
{
    const Threads block;
    block.each<blockOrder>([&](int tx, int ty) {
        if (ty == 0)
            to[tx] = !bounded || i0 + tx < n ? x[std::int64_t(i0 + tx) * incx] : T(0);
    });
}

/// A thread's elements of a panel tile. A thread of a GPU loads all of them before it needs the first.
template <class T>
struct PanelElements
{
    T values[stripes][parts];
};

/// Loads a panel tile of 32 by 32. A bounded one has rows and columns inside the matrix, others are taken as zero.
template <bool bounded, class T>
__device__ __forceinline__ void loadPanel(Private<PanelElements<T>, Threads::threads>& elements, const T* M, int lda,
                                          int rows, int columns)
{
    const Threads block;
    block.each<blockOrder>([&](int tx, int ty) {
        for (int s = 0; s < stripes; ++s)
            for (int e = 0; e < parts; ++e) {
                const int c = stripeWidth * s + ty + 2 * e;
                elements[blockOrder * ty + tx].values[s][e] =
                    !bounded || (tx < rows && c < columns) ? M[offset(tx, c, lda)] : T(0);
            }
    });
}

/// Stripe s, eight columns, to shared memory.
template <class T>
__device__ __forceinline__ void stageStripe(SymvBlock<T> shared, Private<PanelElements<T>, Threads::threads>& elements,
                                            int s)
{
    const Threads block;
    block.each<blockOrder>([&](int tx, int ty) {
        for (int e = 0, c = ty; e < parts; ++e, c += 2)
            shared.a[c * stripePitch + tx] = elements[blockOrder * ty + tx].values[s][e];
    });
}

/// p += a stripe times its part of xCol, q = its conjugate transpose times xRow: a thread takes every second column for
/// one row of p, and every eighth row for one column of q.
template <class T>
__device__ __forceinline__ void multiplyStripe(SymvBlock<T> shared, const T* stripe, int pitch, const T* xCol,
                                               Private<T, Threads::threads>& p, Private<T, Threads::threads>& q)
{
    const Threads block;
    block.each<blockOrder>([&](int tx, int ty) {
        for (int e = 0, c = ty; e < parts; ++e, c += 2)
            addProduct(p[blockOrder * ty + tx], stripe[offset(tx, c, pitch)], xCol[c]);
    });
    block.eachAlongY<stripeWidth>([&](int tx, int ty) {
        T sum(0);
        for (int e = 0, r = ty; e < parts; ++e, r += stripeWidth)
            addProduct(sum, conjugate(stripe[offset(r, tx, pitch)]), shared.xRow[r]);
        q[stripeWidth * tx + ty] = sum;
    });
}

/// The two products with a panel tile M, 32 by 32, of which rows and columns are inside the matrix: u = M xCol and
/// v = M^H xRow, for thread t below 32 in u(t) and v(t), in four stripes.
template <bool bounded, class T>
__device__ __forceinline__ void multiplyPanel(SymvBlock<T> shared, const T* M, int lda, int rows, int columns,
                                              Private<T, blockOrder>& u, Private<T, blockOrder>& v)
{
    const Threads block;
    T* const a = shared.a;
    Private<T, Threads::threads> p, q[stripes];
    Private<PanelElements<T>, Threads::threads> elements;

    if constexpr (!readsInPlace)
        loadPanel<bounded>(elements, M, lda, rows, columns);
    block.each<blockOrder>([&](int tx, int ty) { p[blockOrder * ty + tx] = T(0); });
    for (int s = 0, j = 0; s < stripes; ++s, j += stripeWidth) {
        const T* const xCol = shared.xCol + j;
        if constexpr (!readsInPlace)
            stageStripe(shared, elements, s);
        block.sync();
        if constexpr (readsInPlace)
            multiplyStripe(shared, M + offset(0, j, lda), lda, xCol, p, q[s]);
        else
            multiplyStripe(shared, a, stripePitch, xCol, p, q[s]);
        block.sync();
    }
    block.each<stripeWidth>([&](int tx, int ty) {
        for (int s = 0; s < stripes; ++s)
            a[ty * stripePitch + stripeWidth * s + tx] = q[s][stripeWidth * tx + ty];
    });
    block.sync();
    block.each<blockOrder>([&](int tx, int ty) {
        if (ty == 0) {
            v[tx] = a[tx];
            for (int w = 1; w < stripeWidth; ++w)
                v[tx] += a[w * stripePitch + tx];
        }
    });
    block.sync();
    block.each<blockOrder>([&](int tx, int ty) { a[ty * stripePitch + tx] = p[blockOrder * ty + tx]; });
    block.sync();
    block.each<blockOrder>([&](int tx, int ty) {
        if (ty == 0) {
            u[tx] = a[tx];
            u[tx] += a[stripePitch + tx];
        }
    });
    block.sync();
}

/// Where the partial sums of a block meet those of others: sumType 0, in y by atomic additions; 1, in the block's row
/// of the workspace, which no other block touches.
template <int sumType, class T>
struct PartialSums
{
    T* y;
    int incy;
    T* row;

    /// Row i0 + t += values(t) for t below count, which is at most 32.
    __device__ __forceinline__ void add(int i0, int count, Private<T, blockOrder>& values) const
    {
        const Threads block;
        if constexpr (sumType == 0)
            addAtomically(block, y + std::int64_t(i0) * incy, incy, count, values);
        else
            block.each<blockOrder>([&](int tx, int ty) {
                if (ty == 0 && tx < count)
                    row[i0 + tx] += values[tx];
            });
    }
};

} // namespace

/// y := beta y, before anything is added to it; y is not read where beta is 0.
template <class T, int sumType>
__global__ void symv_init_k(int n, T, const T*, int, const T*, int, T beta, T* y, int incy)
{
    const Line block;
    const int i0 = blockOrder * int(blockIdx.x);
    const bool readY = beta != T(0);
    block.each([&](int t) {
        if (i0 + t < n) {
            T* const result = y + std::int64_t(i0 + t) * incy;
            *result = readY ? product(beta, *result) : T(0);
        }
    });
}

/// Adds alpha A x to y or to the workspace. Block b owns the diagonal block b and the panels of the stored triangle in
/// its block column (lower) or block row (upper). uploType 1: lower; boundsType 1: n is a multiple of NB, nothing is
/// tested against it; sumType: see PartialSums. A and x are not read where alpha is 0.
template <class T, int uploType, int boundsType, int sumType, int NB>
__global__ void symv_k(int n, T alpha, const T* A, int lda, const T* x, int incx, T, T* y, int incy, T* work)
{
    constexpr bool lower = uploType == 1, bounded = boundsType == 0, boundedTiles = bounded && !readsInPlace;
    if (alpha == T(0))
        return;
    __shared__ T aa[16 * tilePitch], xx_n[NB], xx_t[NB];
    const Threads block;
    Private<T, Threads::threads> acc;
    Private<T, NB> u, v, partial;
    WholeTile<readsInPlace, T> tile;
    const SymvBlock<T> shared{aa, xx_n, xx_t, acc};
    const PartialSums<sumType, T> sums{y, incy, work + std::int64_t(blockIdx.x) * n};
    const int i0 = NB * int(blockIdx.x);
    const auto rowsFrom = [n](int i) { return bounded && n - i < NB ? n - i : NB; };

    block.each<NB>([&](int tx, int ty) { acc[NB * ty + tx] = T(0); });
    loadX<bounded>(xx_n, i0, n, x, incx);
    loadX<bounded>(xx_t, i0, n, x, incx);
    block.sync();
    tile.at(A + offset(i0, i0, lda), lda, n - i0, n - i0);
    addDiagonalTile<lower, boundedTiles, 0, 0>(shared, tile.M, tile.lda, n - i0);
    addDiagonalTile<lower, boundedTiles, lower ? 16 : 0, lower ? 0 : 16>(shared, tile.M, tile.lda, n - i0);
    addDiagonalTile<lower, boundedTiles, 16, 16>(shared, tile.M, tile.lda, n - i0);

    for (int r0 = i0 + NB; r0 < n; r0 += NB) {
        loadX<bounded>(lower ? xx_t : xx_n, r0, n, x, incx);
        const int i = lower ? r0 : i0, j = lower ? i0 : r0;
        const T* const panel = A + offset(i, j, lda);
        if (r0 + 2 * NB <= n)
            prefetchBlock<NB, NB>(panel + (lower ? offset(NB, 0, lda) : offset(0, NB, lda)), lda);
        tile.at(panel, lda, n - i, n - j);
        multiplyPanel<boundedTiles>(shared, tile.M, tile.lda, n - i, n - j, u, v);
        block.each<NB>([&](int tx, int ty) {
            if (ty == 0) {
                acc[tx] += lower ? v[tx] : u[tx];
                partial[tx] = product(alpha, lower ? u[tx] : v[tx]);
            }
        });
        sums.add(r0, rowsFrom(r0), partial);
    }
    block.each<NB>([&](int tx, int ty) {
        if (ty == 0)
            partial[tx] = product(alpha, acc[tx]);
    });
    sums.add(i0, rowsFrom(i0), partial);
}

/// y += the rows of the workspace, in ascending order; one row per block of the grid, which is that of symv_k.
template <class T>
__global__ void symv_reduction_k(int n, T, const T*, int, const T*, int, T, T* y, int incy, T* work)
{
    const Line block;
    const int i0 = blockOrder * int(blockIdx.x), rows = int(gridDim.x);
    Private<T, Line::threads> sum;
    block.each([&](int t) {
        if (i0 + t < n)
            sum[t] = y[std::int64_t(i0 + t) * incy];
    });
    const auto add = [&](auto count, int w) {
        constexpr int atOnce = decltype(count)::value;
        const T* const row = work + std::int64_t(w) * n;
        block.each([&](int t) {
            if (i0 + t < n) {
                T values[atOnce];
                for (int k = 0; k < atOnce; ++k)
                    values[k] = row[offset(i0 + t, k, n)];
                for (int k = 0; k < atOnce; ++k)
                    sum[t] += values[k];
            }
        });
    };
    int w = 0;
    for (; w + rowsAtOnce <= rows; w += rowsAtOnce)
        add(std::integral_constant<int, rowsAtOnce>(), w);
    if constexpr (rowsAtOnce > 1)
        for (; w < rows; ++w)
            add(std::integral_constant<int, 1>(), w);
    block.each([&](int t) {
        if (i0 + t < n)
            y[std::int64_t(i0 + t) * incy] = sum[t];
    });
}

namespace {

/// use(0) or use(1), as a compile-time constant.
template <class Use>
void withConstant(bool value, Use&& use)
{
    if (value)
        use(std::integral_constant<int, 1>());
    else
        use(std::integral_constant<int, 0>());
}

} // namespace

template <class T>
void symv(char uplo, int n, T alpha, const T* A, int lda, const T* x, int incx, T beta, T* y, int incy, T* work)
{
    const dim3 grid((unsigned(n) + blockOrder - 1) / blockOrder);
    const dim3 line(Line::x), threads(Threads::x);
    if (work)
        cudaMemset(work, 0, std::size_t(symvWorkspace(n)) * sizeof(T));
    platform::launch<&symv_init_k<T, 1>, Line>(grid, line, n, alpha, A, lda, x, incx, beta, y, incy);
    withConstant(uplo == 'L' || uplo == 'l', [&](auto lower) {
        withConstant(n % blockOrder == 0, [&](auto aligned) {
            withConstant(work != nullptr, [&](auto sumType) {
                // One kernel serves all orders on a CPU, whose tiles are whole.
                constexpr int boundsType = readsInPlace ? 0 : decltype(aligned)::value;
                constexpr auto kernel =
                    &symv_k<T, decltype(lower)::value, boundsType, decltype(sumType)::value, blockOrder>;
                platform::launch<kernel, Threads>(grid, threads, n, alpha, A, lda, x, incx, beta, y, incy, work);
            });
        });
    });
    if (work)
        platform::launch<&symv_reduction_k<T>, Line>(grid, line, n, alpha, A, lda, x, incx, beta, y, incy, work);
}

#define TARN_WRAPPERS(T) template void symv(char, int, T, const T*, int, const T*, int, T, T*, int, T*);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
