// Fills a matrix with one value off the diagonal and another on it, in the manner of LAPACK's routine of that name.
#include "blas/letters.h"
#include "frame/exceptions.h"
#include "lapack/element_wise.h"
#include "lapack/kernels.h"

#include <algorithm>

namespace tarn::kernel {

/// A(i, i) := beta; A(i, j) := alpha strictly below the diagonal unless uplo is 'U', and above it unless uplo is 'L'.
template <class T>
__global__ void LASET_k(char uplo, int m, int n, T alpha, T beta, T* A, int lda)
{
    const bool fillsLower = uplo != 'U', fillsUpper = uplo != 'L';
    forEachElement<velk::Map2D>(m, n, [&](int i, int j) {
        if (i == j)
            A[offset(i, j, lda)] = beta;
        else if (i > j ? fillsLower : fillsUpper)
            A[offset(i, j, lda)] = alpha;
    });
}

template <class T>
void LASET(char uplo, int m, int n, T alpha, T beta, T* A, int lda)
{
    uplo = upper(uplo);
    require(isOneOf(uplo, "ULAF"), -1);
    require(m >= 0, -2);
    require(n >= 0, -3);
    if (m == 0 || n == 0)
        return;
    require(A != nullptr, -6);
    require(lda >= std::max(1, m), -7);
    launchOnMatrix<&LASET_k<T>>(m, n, uplo, m, n, alpha, beta, A, lda);
}

template void LASET(char, int, int, float, float, float*, int);
template void LASET(char, int, int, double, double, double*, int);
template void LASET(char, int, int, Complex<float>, Complex<float>, Complex<float>*, int);
template void LASET(char, int, int, Complex<double>, Complex<double>, Complex<double>*, int);

} // namespace tarn::kernel
