// Copies all of a matrix, or the triangle with its diagonal, in the manner of LAPACK's routine of that name.
#include "blas/letters.h"
#include "frame/exceptions.h"
#include "lapack/element_wise.h"
#include "lapack/kernels.h"

#include <algorithm>

namespace tarn::kernel {

/// B := A on and below the diagonal, m by n.
template <class T>
__global__ void LACPY_L_Kernel(int m, int n, const T* A, int lda, T* B, int ldb)
{
    forEachElement<velk::Map2D>(m, n, [&](int i, int j) {
        if (j <= i)
            B[offset(i, j, ldb)] = A[offset(i, j, lda)];
    });
}

/// B := A on and above the diagonal, m by n.
template <class T>
__global__ void LACPY_U_Kernel(int m, int n, const T* A, int lda, T* B, int ldb)
{
    forEachElement<velk::Map2D>(m, n, [&](int i, int j) {
        if (j >= i)
            B[offset(i, j, ldb)] = A[offset(i, j, lda)];
    });
}

/// B := A, m by n.
template <class T>
__global__ void LACPY_G_Kernel(int m, int n, const T* A, int lda, T* B, int ldb)
{
    forEachElement<velk::Map2D>(m, n, [&](int i, int j) { B[offset(i, j, ldb)] = A[offset(i, j, lda)]; });
}

template <class T>
void LACPY(char uplo, int m, int n, const T* A, int lda, T* B, int ldb)
{
    uplo = upper(uplo);
    require(isOneOf(uplo, "ULAF"), -1);
    require(m >= 0, -2);
    require(n >= 0, -3);
    if (m == 0 || n == 0)
        return;
    require(A != nullptr, -4);
    require(lda >= std::max(1, m), -5);
    require(B != nullptr, -6);
    require(ldb >= std::max(1, m), -7);
    if (uplo == 'L')
        launchOnMatrix<&LACPY_L_Kernel<T>>(m, n, m, n, A, lda, B, ldb);
    else if (uplo == 'U')
        launchOnMatrix<&LACPY_U_Kernel<T>>(m, n, m, n, A, lda, B, ldb);
    else
        launchOnMatrix<&LACPY_G_Kernel<T>>(m, n, m, n, A, lda, B, ldb);
}

template void LACPY(char, int, int, const float*, int, float*, int);
template void LACPY(char, int, int, const double*, int, double*, int);
template void LACPY(char, int, int, const Complex<float>*, int, Complex<float>*, int);
template void LACPY(char, int, int, const Complex<double>*, int, Complex<double>*, int);

} // namespace tarn::kernel
