#include "blas/blas.h"
#include "blas/cublas.h"

#include <algorithm>

namespace tarn::blas {

template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc)
{
    if (m == 0 || n == 0)
        return;
    if (k == 0) // an operand without elements may have a leading dimension of 0, which cuBLAS does not take
        lda = std::max(1, lda), ldb = std::max(1, ldb);
    cublas::gemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

#define TARN_GEMM(T) template void gemm(char, char, int, int, int, T, const T*, int, const T*, int, T, T*, int);

TARN_GEMM(float)
TARN_GEMM(double)
TARN_GEMM(Complex<float>)
TARN_GEMM(Complex<double>)

} // namespace tarn::blas
