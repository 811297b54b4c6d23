// symm and hemm.
#include "blas/blas.h"
#include "blas/checks.h"
#include "blas/cublas.h"
#include "blas/split.h"
#include "blas/symmetry.h"
#include "frame/tuning.h"

namespace tarn::blas {

namespace {

constexpr int recursionFrom = 1024;

template <Symmetry kind, class T>
void leaf(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c, int ldc)
{
    if constexpr (kind == Symmetry::hermitian)
        cublas::hemm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
    else
        cublas::symm(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}

/// Side "L" cuts B and C by rows: C1 += A11 B1, then what the off-diagonal block adds to one half as it is stored, and
/// to the other one transposed, then C2 += A22 B2. Side "R" cuts them by columns. The first operation on a half of C
/// applies beta: the first recursion on C1, a gemm on C2.
template <Symmetry kind, class T>
void multiply(int nb, char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
              T* c, int ldc)
{
    const bool left = side == 'L';
    const Split cut = splitPoint(left ? m : n, nb);
    if (cut.isLeaf) {
        leaf<kind>(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
        return;
    }
    const int p = cut.size[0];
    const TriangleBlocks<const T> A(uplo, a, lda, p);
    const auto B = halves(left, b, ldb, p);
    const auto C = halves(left, c, ldc, p);
    const auto addDiagonal = [&](int part, T scale) {
        const int size = cut.size[part];
        multiply<kind>(nb, side, uplo, left ? size : m, left ? n : size, alpha, A.diagonal[part], lda, B[part], ldb,
                       scale, C[part], ldc);
    };
    const auto addOffDiagonal = [&](char trans, int to) {
        const int from = 1 - to;
        const T scale = to == 0 ? T(1) : beta;
        if (left)
            gemm(trans, 'N', cut.size[to], n, cut.size[from], alpha, A.offDiagonal, lda, B[from], ldb, scale, C[to],
                 ldc);
        else
            gemm('N', trans, m, cut.size[to], cut.size[from], alpha, B[from], ldb, A.offDiagonal, lda, scale, C[to],
                 ldc);
    };
    const auto [row, col] = offDiagonalPlace(uplo);
    const int asStored = left ? row : col, mirrored = 1 - asStored;

    addDiagonal(0, beta);
    addOffDiagonal('N', asStored);
    addOffDiagonal(mirrorTrans(kind), mirrored);
    addDiagonal(1, T(1));
}

} // namespace

template <class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c, int ldc)
{
    constexpr auto kind = Symmetry::symmetric;
    checkSymm(side, uplo, m, n, a, lda, b, ldb, c, ldc);
    if (m == 0 || n == 0)
        return;
    if (m >= recursionFrom || n >= recursionFrom)
        multiply<kind>(blockSize<T>(Blocked::level3), side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
    else
        leaf<kind>(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}

template <class T>
void hemm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c, int ldc)
{
    constexpr auto kind = Symmetry::hermitian;
    checkHemm(side, uplo, m, n, a, lda, b, ldb, c, ldc);
    if (m == 0 || n == 0)
        return;
    if (m >= recursionFrom && n >= recursionFrom)
        multiply<kind>(blockSize<T>(Blocked::level3), side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
    else
        leaf<kind>(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc);
}

#define TARN_SYMM(name, T) template void name(char, char, int, int, T, const T*, int, const T*, int, T, T*, int);

TARN_SYMM(symm, float)
TARN_SYMM(symm, double)
TARN_SYMM(symm, Complex<float>)
TARN_SYMM(symm, Complex<double>)
TARN_SYMM(hemm, Complex<float>)
TARN_SYMM(hemm, Complex<double>)

} // namespace tarn::blas
