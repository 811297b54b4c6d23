// syrk and herk.
#include "blas/blas.h"
#include "blas/checks.h"
#include "blas/cublas.h"
#include "blas/letters.h"
#include "blas/split.h"
#include "blas/symmetry.h"
#include "frame/device_table.h"
#include "frame/tuning.h"

namespace tarn::blas {

namespace {

constexpr int recursionFrom = 1024;

template <Symmetry kind, class T, class S = Scalar<kind, T>>
void leaf(char uplo, char trans, int n, int k, S alpha, const T* a, int lda, S beta, T* c, int ldc)
{
    if constexpr (kind == Symmetry::hermitian)
        cublas::herk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
    else
        cublas::syrk(uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
}

/// The diagonal blocks of C by recursion, the block between them by gemm, in the order of the columns that they stand
/// in for uplo "L". A is cut by rows for trans "N", else by columns; each block of C sees alpha and beta once.
template <Symmetry kind, class T, class S = Scalar<kind, T>>
void update(int nb, char uplo, char trans, int n, int k, S alpha, const T* a, int lda, S beta, T* c, int ldc)
{
    const Split cut = splitPoint(n, nb);
    if (cut.isLeaf) {
        leaf<kind>(uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
        return;
    }
    const int p = cut.size[0];
    const bool plain = trans == 'N';
    const auto A = halves(plain, a, lda, p);
    const TriangleBlocks<T> C(uplo, c, ldc, p);
    const auto updateDiagonal = [&](int part) {
        update<kind>(nb, uplo, trans, cut.size[part], k, alpha, A[part], lda, beta, C.diagonal[part], ldc);
    };
    const auto [row, col] = offDiagonalPlace(uplo);
    const char t = mirrorTrans(kind);

    updateDiagonal(0);
    gemm(plain ? 'N' : t, plain ? t : 'N', cut.size[row], cut.size[col], k, asElement<T>(alpha), A[row], lda, A[col],
         lda, asElement<T>(beta), C.offDiagonal, ldc);
    updateDiagonal(1);
}

} // namespace

template <class T>
void syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c, int ldc)
{
    constexpr auto kind = Symmetry::symmetric;
    constexpr int cublasIsFasterFrom = 20;
    checkSyrk(uplo, trans, n, k, a, lda, c, ldc);
    if (n >= recursionFrom && k >= recursionFrom && currentCapability() < cublasIsFasterFrom)
        update<kind>(blockSize<T>(Blocked::level3), uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
    else
        leaf<kind>(uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
}

template <class T>
void herk(char uplo, char trans, int n, int k, Real<T> alpha, const T* a, int lda, Real<T> beta, T* c, int ldc)
{
    constexpr auto kind = Symmetry::hermitian;
    checkHerk(uplo, trans, n, k, a, lda, c, ldc);
    trans = complexTransChar(trans);
    if (n >= recursionFrom && k >= recursionFrom)
        update<kind>(blockSize<T>(Blocked::level3), uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
    else
        leaf<kind>(uplo, trans, n, k, alpha, a, lda, beta, c, ldc);
}

#define TARN_RANK_K(name, T, S) template void name(char, char, int, int, S, const T*, int, S, T*, int);

TARN_RANK_K(syrk, float, float)
TARN_RANK_K(syrk, double, double)
TARN_RANK_K(syrk, Complex<float>, Complex<float>)
TARN_RANK_K(syrk, Complex<double>, Complex<double>)
TARN_RANK_K(herk, Complex<float>, float)
TARN_RANK_K(herk, Complex<double>, double)

} // namespace tarn::blas
