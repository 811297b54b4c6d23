#include "blas/blas.h"
#include "blas/checks.h"
#include "blas/cublas.h"
#include "blas/split.h"
#include "frame/tuning.h"

namespace tarn::blas {

namespace {

constexpr int recursionFrom = 1024;

/// Multiplies the half of B that depends on both halves, adds to it by gemm what the other one contributes, then
/// multiplies that one: the gemm reads a half that nothing has changed yet. Side "L" cuts B by rows, "R" by columns.
template <class T>
void multiply(int nb, char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
              int ldb)
{
    const bool left = side == 'L';
    const Split cut = splitPoint(left ? m : n, nb);
    if (cut.isLeaf) {
        cublas::trmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
        return;
    }
    const int p = cut.size[0];
    const TriangleBlocks<const T> A(uplo, a, lda, p);
    const auto B = halves(left, b, ldb, p);
    const auto multiplyPart = [&](int part) {
        const int size = cut.size[part];
        multiply(nb, side, uplo, transa, diag, left ? size : m, left ? n : size, alpha, A.diagonal[part], lda, B[part],
                 ldb);
    };
    const int second = independentHalf(side, uplo, transa), first = 1 - second;

    multiplyPart(first);
    if (left)
        gemm(transa, 'N', cut.size[first], n, cut.size[second], alpha, A.offDiagonal, lda, B[second], ldb, T(1),
             B[first], ldb);
    else
        gemm('N', transa, m, cut.size[first], cut.size[second], alpha, B[second], ldb, A.offDiagonal, lda, T(1),
             B[first], ldb);
    multiplyPart(second);
}

} // namespace

template <class T>
void trmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb)
{
    checkTrmm(side, uplo, transa, diag, m, n, a, lda, b, ldb);
    if (m == 0 || n == 0)
        return;
    if (m >= recursionFrom || n >= recursionFrom)
        multiply(blockSize<T>(Blocked::level3), side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
    else
        cublas::trmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}

#define TARN_TRMM(T) template void trmm(char, char, char, char, int, int, T, const T*, int, T*, int);

TARN_TRMM(float)
TARN_TRMM(double)
TARN_TRMM(Complex<float>)
TARN_TRMM(Complex<double>)

} // namespace tarn::blas
