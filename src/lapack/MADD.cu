// The sum of two matrices times real numbers; either may be stored transposed, and the result takes the form of A.
#include "lapack/element_wise.h"
#include "lapack/kernels.h"

namespace tarn::kernel {

/// C := alpha A + beta B, m by n. transA: A and C hold their transposes; transB: B does. Nothing is conjugated.
template <bool transA, bool transB, class T, class S>
__device__ __forceinline__ void madd(int m, int n, S alpha, const T* A, int lda, S beta, const T* B, int ldb, T* C,
                                     int ldc)
{
    forEachElement<velk::Map2D>(m, n, [&](int i, int j) {
        const T a = A[transA ? offset(j, i, lda) : offset(i, j, lda)];
        const T b = B[transB ? offset(j, i, ldb) : offset(i, j, ldb)];
        C[transA ? offset(j, i, ldc) : offset(i, j, ldc)] = sum(alpha * a, beta * b);
    });
}

template <class T, class S>
__global__ void MADD_NN_k(int m, int n, S alpha, const T* A, int lda, S beta, const T* B, int ldb, T* C, int ldc)
{
    madd<false, false>(m, n, alpha, A, lda, beta, B, ldb, C, ldc);
}

template <class T, class S>
__global__ void MADD_NT_k(int m, int n, S alpha, const T* A, int lda, S beta, const T* B, int ldb, T* C, int ldc)
{
    madd<false, true>(m, n, alpha, A, lda, beta, B, ldb, C, ldc);
}

template <class T, class S>
__global__ void MADD_TN_k(int m, int n, S alpha, const T* A, int lda, S beta, const T* B, int ldb, T* C, int ldc)
{
    madd<true, false>(m, n, alpha, A, lda, beta, B, ldb, C, ldc);
}

template <class T, class S>
__global__ void MADD_TT_k(int m, int n, S alpha, const T* A, int lda, S beta, const T* B, int ldb, T* C, int ldc)
{
    madd<true, true>(m, n, alpha, A, lda, beta, B, ldb, C, ldc);
}

template <class T>
void MADD(char transa, char transb, int m, int n, Real<T> alpha, const T* A, int lda, Real<T> beta, const T* B, int ldb,
          T* C, int ldc)
{
    if (m <= 0 || n <= 0)
        return;
    using S = Real<T>;
    const bool transA = transa == 'T', transB = transb == 'T';
    if (!transA && !transB)
        launchOnMatrix<&MADD_NN_k<T, S>>(m, n, m, n, alpha, A, lda, beta, B, ldb, C, ldc);
    else if (!transA)
        launchOnMatrix<&MADD_NT_k<T, S>>(m, n, m, n, alpha, A, lda, beta, B, ldb, C, ldc);
    else if (!transB)
        launchOnMatrix<&MADD_TN_k<T, S>>(m, n, m, n, alpha, A, lda, beta, B, ldb, C, ldc);
    else
        launchOnMatrix<&MADD_TT_k<T, S>>(m, n, m, n, alpha, A, lda, beta, B, ldb, C, ldc);
}

#define TARN_WRAPPERS(T)                                                                                               \
    template void MADD(char, char, int, int, Real<T>, const T*, int, Real<T>, const T*, int, T*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
