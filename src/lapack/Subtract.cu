// The difference of two matrices of which either may be stored transposed. The result takes the place of A in A's own
// storage; a transposed operand counts as its conjugate transpose.
#include "lapack/element_wise.h"
#include "lapack/kernels.h"

namespace tarn::kernel {

/// op(A) := op(A) - op(B), m by n, in the storage of A: a transposed A receives the transpose of the result.
template <bool transA, bool transB, class T>
__device__ __forceinline__ void subtract(int m, int n, T* A, int lda, const T* B, int ldb)
{
    forEachElement<velk::Map2D>(m, n, [&](int i, int j) {
        T& a = A[transA ? offset(j, i, lda) : offset(i, j, lda)];
        const T b = B[transB ? offset(j, i, ldb) : offset(i, j, ldb)];
        a = difference(conjugateIf<transA>(a), conjugateIf<transB>(b));
    });
}

template <class T>
__global__ void SubtractMatrix_NN_k(int m, int n, T* A, int lda, const T* B, int ldb)
{
    subtract<false, false>(m, n, A, lda, B, ldb);
}

template <class T>
__global__ void SubtractMatrix_NT_k(int m, int n, T* A, int lda, const T* B, int ldb)
{
    subtract<false, true>(m, n, A, lda, B, ldb);
}

template <class T>
__global__ void SubtractMatrix_TN_k(int m, int n, T* A, int lda, const T* B, int ldb)
{
    subtract<true, false>(m, n, A, lda, B, ldb);
}

template <class T>
__global__ void SubtractMatrix_TT_k(int m, int n, T* A, int lda, const T* B, int ldb)
{
    subtract<true, true>(m, n, A, lda, B, ldb);
}

template <class T>
void SubtractMatrix(char transa, char transb, int m, int n, T* A, int lda, const T* B, int ldb)
{
    if (m <= 0 || n <= 0)
        return;
    const bool transA = transa == 'T' || transa == 'C', transB = transb == 'T' || transb == 'C';
    if (!transA && !transB)
        launchOnMatrix<&SubtractMatrix_NN_k<T>>(m, n, m, n, A, lda, B, ldb);
    else if (!transA)
        launchOnMatrix<&SubtractMatrix_NT_k<T>>(m, n, m, n, A, lda, B, ldb);
    else if (!transB)
        launchOnMatrix<&SubtractMatrix_TN_k<T>>(m, n, m, n, A, lda, B, ldb);
    else
        launchOnMatrix<&SubtractMatrix_TT_k<T>>(m, n, m, n, A, lda, B, ldb);
}

#define TARN_WRAPPERS(T) template void SubtractMatrix(char, char, int, int, T*, int, const T*, int);

TARN_WRAPPERS(float)
TARN_WRAPPERS(double)
TARN_WRAPPERS(Complex<float>)
TARN_WRAPPERS(Complex<double>)

} // namespace tarn::kernel
