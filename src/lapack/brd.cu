// The shifts of stored reflectors by one column or row that come before the generation of the orthogonal matrices of a
// square bidiagonal reduction.
#include "lapack/kernels.h"
#include "lapack/thread_maps.h"

#include <lapack/cu/basic>

#include <type_traits>

namespace tarn::kernel {

namespace {

using Line = Block<256>;

/// Elements that a thread moves at a time. A thread of a GPU loads all of them before it stores the first, and so waits
/// for memory once.
inline constexpr int movesAtOnce = readsInPlace ? 1 : 16;

/// line[k stride] := line[(k - 1) stride] for k from `last` down to last - count + 1.
template <int count, class T>
__device__ __forceinline__ void moveOn(T* line, int last, std::int64_t stride)
{
    T moved[count];
    for (int i = 0; i < count; ++i)
        moved[i] = line[(last - 1 - i) * stride];
    for (int i = 0; i < count; ++i)
        line[(last - i) * stride] = moved[i];
}

} // namespace

/// Moves rows 1 to n - 1 of A, of order n, one column to the right; row 0 and column 0 stay. A thread owns a row, and
/// begins at its far end.
template <class T>
__global__ void ORGBR_COPY_L_k(int n, T* A, int lda)
{
    const Line block;
    const unsigned first = velk::Map1D::firstItem();
    const auto move = [&](auto count, int c) {
        block.each([&](int t) {
            const unsigned row = first + t + 1;
            if (row < unsigned(n))
                moveOn<decltype(count)::value>(A + row, c, lda);
        });
    };
    int c = n - 1;
    for (; c >= movesAtOnce; c -= movesAtOnce)
        move(std::integral_constant<int, movesAtOnce>(), c);
    if constexpr (movesAtOnce > 1)
        for (; c > 0; --c)
            move(std::integral_constant<int, 1>(), c);
}

/// Moves the part of A, of order n, above the diagonal one row down in columns 2 to n - 1; row 0, the diagonal and what
/// lies below it stay. A thread owns a column, and begins at its far end.
template <class T>
__global__ void ORGBR_COPY_U_k(int n, T* A, int lda)
{
    const Line block;
    const unsigned first = velk::Map1D::firstItem();
    block.each([&](int t) {
        const unsigned id = first + t;
        if (id == 0 || id + 1 >= unsigned(n))
            return;
        T* const column = A + std::int64_t(id + 1) * lda;
        int r = int(id);
        for (; r >= movesAtOnce; r -= movesAtOnce)
            moveOn<movesAtOnce>(column, r, 1);
        for (; r > 0; --r)
            moveOn<1>(column, r, 1);
    });
}

template <class T>
void ORGBR_COPY(char uplo, int n, T* A, int lda)
{
    if (n <= 1)
        return;
    const velk::Map1D map(n - 1);
    if (uplo == 'L')
        platform::launch<&ORGBR_COPY_L_k<T>, Line>(map.blocks(), map.threads(), n, A, lda);
    else if (uplo == 'U')
        platform::launch<&ORGBR_COPY_U_k<T>, Line>(map.blocks(), map.threads(), n, A, lda);
}

#define TARN_WRAPPERS(T) template void ORGBR_COPY(char, int, T*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
