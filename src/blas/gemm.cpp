#include "blas/blas.h"
#include "blas/cublas.h"

namespace tarn::blas {

template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc)
{
    cublas::gemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

#define TARN_GEMM(T) template void gemm(char, char, int, int, int, T, const T*, int, const T*, int, T, T*, int);

TARN_GEMM(float)
TARN_GEMM(double)
TARN_GEMM(Complex<float>)
TARN_GEMM(Complex<double>)

} // namespace tarn::blas
