// syr2k and her2k.
#include "blas/blas.h"
#include "blas/checks.h"
#include "blas/cublas.h"
#include "blas/split.h"
#include "blas/symmetry.h"
#include "frame/tuning.h"

#include <algorithm>

namespace tarn::blas {

namespace {

constexpr int recursionFrom = 1024;

template <Symmetry kind, class T>
void leaf(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, Scalar<kind, T> beta,
          T* c, int ldc)
{
    if constexpr (kind == Symmetry::hermitian)
        cublas::her2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
    else
        cublas::syr2k(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

/// The diagonal blocks of C by recursion, the block between them by two gemm calls, of which the first applies beta.
/// `alpha2` multiplies the second product: alpha itself, or its conjugate for her2k. A and B are cut by rows for trans
/// "N", else by columns.
template <Symmetry kind, class T>
void update(int nb, char uplo, char trans, int n, int k, T alpha, T alpha2, const T* a, int lda, const T* b, int ldb,
            Scalar<kind, T> beta, T* c, int ldc)
{
    const Split cut = splitPoint(n, nb);
    if (cut.isLeaf) {
        leaf<kind>(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
        return;
    }
    const int p = cut.size[0];
    const bool plain = trans == 'N';
    const auto A = halves(plain, a, lda, p);
    const auto B = halves(plain, b, ldb, p);
    const TriangleBlocks<T> C(uplo, c, ldc, p);
    const auto updateDiagonal = [&](int part) {
        update<kind>(nb, uplo, trans, cut.size[part], k, alpha, alpha2, A[part], lda, B[part], ldb, beta,
                     C.diagonal[part], ldc);
    };
    const auto [row, col] = offDiagonalPlace(uplo);
    const char t = mirrorTrans(kind), transLeft = plain ? 'N' : t, transRight = plain ? t : 'N';

    updateDiagonal(0);
    gemm(transLeft, transRight, cut.size[row], cut.size[col], k, alpha, A[row], lda, B[col], ldb, asElement<T>(beta),
         C.offDiagonal, ldc);
    gemm(transLeft, transRight, cut.size[row], cut.size[col], k, alpha2, B[row], ldb, A[col], lda, T(1), C.offDiagonal,
         ldc);
    updateDiagonal(1);
}

template <Symmetry kind, class T>
void updateBySize(char uplo, char trans, int n, int k, T alpha, T alpha2, const T* a, int lda, const T* b, int ldb,
                  Scalar<kind, T> beta, T* c, int ldc)
{
    if (n == 0)
        return;
    if (k == 0) // an operand without elements may have a leading dimension of 0, which cuBLAS does not take
        lda = std::max(1, lda), ldb = std::max(1, ldb);
    if (n >= recursionFrom && k >= recursionFrom)
        update<kind>(blockSize<T>(Blocked::level3), uplo, trans, n, k, alpha, alpha2, a, lda, b, ldb, beta, c, ldc);
    else
        leaf<kind>(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc);
}

} // namespace

template <class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
           int ldc)
{
    checkSyr2k(uplo, trans, n, k, a, lda, b, ldb, c, ldc);
    updateBySize<Symmetry::symmetric>(uplo, trans, n, k, alpha, alpha, a, lda, b, ldb, beta, c, ldc);
}

template <class T>
void her2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, Real<T> beta, T* c,
           int ldc)
{
    checkHer2k(uplo, trans, n, k, a, lda, b, ldb, c, ldc);
    const T conjugate(alpha.real(), -alpha.imag());
    updateBySize<Symmetry::hermitian>(uplo, trans, n, k, alpha, conjugate, a, lda, b, ldb, beta, c, ldc);
}

#define TARN_RANK_2K(name, T, S) template void name(char, char, int, int, T, const T*, int, const T*, int, S, T*, int);

TARN_RANK_2K(syr2k, float, float)
TARN_RANK_2K(syr2k, double, double)
TARN_RANK_2K(syr2k, Complex<float>, Complex<float>)
TARN_RANK_2K(syr2k, Complex<double>, Complex<double>)
TARN_RANK_2K(her2k, Complex<float>, float)
TARN_RANK_2K(her2k, Complex<double>, double)

} // namespace tarn::blas
