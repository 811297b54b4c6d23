// The shifts of stored reflectors by one column or row that come before the generation of the orthogonal matrices of a
// square bidiagonal reduction.
#include "lapack/kernels.h"
#include "lapack/thread_maps.h"

#include <lapack/cu/basic>

namespace tarn::kernel {

namespace {

using Line = Block<256>;

} // namespace

/// Moves rows 1 to n - 1 of A, of order n, one column to the right; row 0 and column 0 stay. A thread owns a row, and
/// begins at its far end.
template <class T>
__global__ void ORGBR_COPY_L_k(int n, T* A, int lda)
{
    const Line block;
    const unsigned first = velk::Map1D::firstItem();
    for (int c = n - 1; c > 0; --c)
        block.each([&](int t) {
            const unsigned row = first + t + 1;
            if (row < unsigned(n))
                A[offset(int(row), c, lda)] = A[offset(int(row), c - 1, lda)];
        });
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
        for (int r = int(id); r > 0; --r)
            column[r] = column[r - 1];
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
