// Conjugation in place of matrices, vectors and triangles. Kernels on real elements exist for uniformity, and are
// empty.
#include "frame/exceptions.h"
#include "lapack/element_wise.h"
#include "lapack/kernels.h"

namespace tarn {

/// A := conj(A), m by n.
template <class Map, class T>
__global__ void ConjugateMatrix_k(int m, int n, T* A, int lda)
{
    kernel::forEachElement<Map>(m, n, [&](int i, int j) {
        T& a = A[kernel::offset(i, j, lda)];
        a = kernel::conjugateIf<true>(a);
    });
}

/// x := conj(x), n elements.
template <class Map, class T>
__global__ void ConjugateVector_k(int n, T* x, int incx)
{
    if constexpr (isComplex<T>)
        kernel::forEachItem<Map>(n, [&](std::int64_t k) { x[k * incx] = kernel::conjugateIf<true>(x[k * incx]); });
}

/// Conjugates the upper or lower triangle of A, m by n, with or without its diagonal.
template <class Map, class T, bool upper, bool withDiagonal>
__global__ void ConjugateMatrixTriangular_k(int m, int n, T* A, int lda)
{
    if constexpr (isComplex<T>)
        kernel::forEachElement<Map>(m, n, [&](int i, int j) {
            if ((upper ? i < j : j < i) || (withDiagonal && i == j)) {
                T& a = A[kernel::offset(i, j, lda)];
                a = kernel::conjugateIf<true>(a);
            }
        });
}

namespace kernel {

template <class T>
void ConjugateMatrix(int m, int n, T* A, int lda)
{
    require(m >= 0, -1);
    require(n >= 0, -2);
    require(lda >= m, -4);
    if (m == 0 || n == 0)
        return;
    require(A != nullptr, -3);
    launchOnMatrix<&ConjugateMatrix_k<velk::Map2D, T>>(m, n, m, n, A, lda);
}

template <class T>
void ConjugateVector(int n, T* x, int incx)
{
    if (n > 0 && incx > 0)
        launchOnVector<&ConjugateVector_k<velk::Map1D, T>>(n, n, x, incx);
}

template <bool upper, bool withDiagonal, class T>
void ConjugateMatrixTriangular(int m, int n, T* A, int lda)
{
    if (m > 0 && n > 0)
        launchOnMatrix<&ConjugateMatrixTriangular_k<velk::TriangularMap2D, T, upper, withDiagonal>>(m, n, m, n, A, lda);
}

#define TARN_WRAPPERS(T)                                                                                               \
    template void ConjugateVector(int, T*, int);                                                                       \
    template void ConjugateMatrixTriangular<false, false>(int, int, T*, int);                                          \
    template void ConjugateMatrixTriangular<false, true>(int, int, T*, int);                                           \
    template void ConjugateMatrixTriangular<true, false>(int, int, T*, int);                                           \
    template void ConjugateMatrixTriangular<true, true>(int, int, T*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)
template void ConjugateMatrix(int, int, Complex<float>*, int);
template void ConjugateMatrix(int, int, Complex<double>*, int);

} // namespace kernel

} // namespace tarn
