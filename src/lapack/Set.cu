// Fills elements, vectors, matrices and triangles with 0 or 1, a constant of the kernel.
#include "lapack/element_wise.h"
#include "lapack/kernels.h"

namespace tarn::kernel {

namespace {

using Single = Block<1>;

} // namespace

/// *p := V. One thread.
template <int V, class T>
__global__ void SetSingle_k(T* p)
{
    const Single block;
    block.each([&](int) { *p = T(V); });
}

/// x[k incx] := V, k below n.
template <class Map, int V, class T>
__global__ void SetVector_k(int n, T* x, int incx)
{
    forEachItem<Map>(n, [&](std::int64_t k) { x[k * incx] = T(V); });
}

/// A := V everywhere, m by n.
template <class Map, int V, class T>
__global__ void SetMatrix_k(int m, int n, T* A, int lda)
{
    forEachElement<Map>(m, n, [&](int i, int j) { A[offset(i, j, lda)] = T(V); });
}

/// Keeps the upper or lower triangle of A, m by n, and writes V into the opposite one; if unit, the diagonal becomes d.
template <int V, class T>
__global__ void SetTriangularMatrix_k(bool upper, bool unit, int m, int n, T* A, int lda, T d)
{
    forEachElement<velk::Map2D>(m, n, [&](int i, int j) {
        if (upper ? i > j : i < j)
            A[offset(i, j, lda)] = T(V);
        else if (unit && i == j)
            A[offset(i, j, lda)] = d;
    });
}

template <int V, class T>
void SetSingle(T* p)
{
    platform::launch<&SetSingle_k<V, T>, Single>(dim3(1), dim3(1), p);
}

template <int V, class T>
void SetVector(int n, T* x, int incx)
{
    if (n > 0 && incx > 0)
        launchOnVector<&SetVector_k<velk::Map1D, V, T>>(n, n, x, incx);
}

template <int V, class T>
void SetMatrix(int m, int n, T* A, int lda)
{
    if (m > 0 && n > 0 && lda > 0)
        launchOnMatrix<&SetMatrix_k<velk::Map2D, V, T>>(m, n, m, n, A, lda);
}

template <int V, class T>
void SetTriangularMatrix(bool upper, bool unit, int m, int n, T* A, int lda, T d)
{
    if (m > 0 && n > 0)
        launchOnMatrix<&SetTriangularMatrix_k<V, T>>(m, n, upper, unit, m, n, A, lda, d);
}

template <class T>
void SetOne(T* p)
{
    SetSingle<1>(p);
}

template <class T>
void SetVectorZero(int n, T* x, int incx)
{
    SetVector<0>(n, x, incx);
}

template <class T>
void SetMatrixZero(int m, int n, T* A, int lda)
{
    SetMatrix<0>(m, n, A, lda);
}

template <class T>
void MakeTriangular(char uplo, char diag, int m, int n, T* A, int lda)
{
    const bool unit = diag == 'U' || diag == 'Z';
    SetTriangularMatrix<0>(uplo == 'U', unit, m, n, A, lda, unit ? T(1) : T(0));
}

#define TARN_SET(V, T)                                                                                                 \
    template void SetSingle<V>(T*);                                                                                    \
    template void SetVector<V>(int, T*, int);                                                                          \
    template void SetMatrix<V>(int, int, T*, int);                                                                     \
    template void SetTriangularMatrix<V>(bool, bool, int, int, T*, int, T);

#define TARN_WRAPPERS(T)                                                                                               \
    TARN_SET(0, T)                                                                                                     \
    TARN_SET(1, T)                                                                                                     \
    template void SetOne(T*);                                                                                          \
    template void SetVectorZero(int, T*, int);                                                                         \
    template void SetMatrixZero(int, int, T*, int);                                                                    \
    template void MakeTriangular(char, char, int, int, T*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
