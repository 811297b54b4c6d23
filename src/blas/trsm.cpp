#include "blas/blas.h"
#include "blas/checks.h"
#include "blas/cublas.h"
#include "blas/split.h"
#include "frame/tuning.h"

namespace tarn::blas {

namespace {

constexpr int recursionFrom = 512;

/// Solves for one half of X, removes its contribution from the other half by gemm, solves for that. Side "L" cuts B by
/// rows, "R" by columns. alpha reaches each element once: by the first solve, or as the gemm's beta.
template <class T>
void solve(int nb, char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
           int ldb)
{
    const bool left = side == 'L';
    const Split cut = splitPoint(left ? m : n, nb);
    if (cut.isLeaf) {
        cublas::trsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
        return;
    }
    const int p = cut.size[0];
    const TriangleBlocks<const T> A(uplo, a, lda, p);
    const auto B = halves(left, b, ldb, p);
    const auto solvePart = [&](int part, T scale) {
        const int size = cut.size[part];
        solve(nb, side, uplo, transa, diag, left ? size : m, left ? n : size, scale, A.diagonal[part], lda, B[part],
              ldb);
    };
    const int first = independentHalf(side, uplo, transa), second = 1 - first;

    solvePart(first, alpha);
    if (left)
        gemm(transa, 'N', cut.size[second], n, cut.size[first], T(-1), A.offDiagonal, lda, B[first], ldb, alpha,
             B[second], ldb);
    else
        gemm('N', transa, m, cut.size[second], cut.size[first], T(-1), B[first], ldb, A.offDiagonal, lda, alpha,
             B[second], ldb);
    solvePart(second, T(1));
}

} // namespace

template <class T>
void trsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb)
{
    checkTrsm(side, uplo, transa, diag, m, n, a, lda, b, ldb);
    if (m == 0 || n == 0)
        return;
    if (m >= recursionFrom && n >= recursionFrom)
        solve(blockSize<T>(Blocked::trsm), side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
    else
        cublas::trsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb);
}

#define TARN_TRSM(T) template void trsm(char, char, char, char, int, int, T, const T*, int, T*, int);

TARN_TRSM(float)
TARN_TRSM(double)
TARN_TRSM(Complex<float>)
TARN_TRSM(Complex<double>)

} // namespace tarn::blas
