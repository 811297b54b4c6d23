#include "blas/letters.h"
#include "frame/exceptions.h"
#include "lapack/kernels.h"
#include "lapack/qr/qr.h"
#include "memory/matrix_view.h"

#include <algorithm>

namespace tarn::qr {

namespace {

void checkOrgbr(char& vect, int m, int n, int k, const void* a, int lda, const void* tau)
{
    vect = upper(vect);
    const bool wantsQ = vect == 'Q';
    require(isOneOf(vect, "QP"), -1);
    require(m >= 0, -2);
    require(n >= 0, -3);
    require(wantsQ ? n <= m && n >= std::min(m, k) : m <= n && m >= std::min(n, k), -3);
    require(k >= 0, -4);
    require(lda >= std::max(1, m), -6);
    if (m == 0 || n == 0)
        return;
    require(a != nullptr, -5);
    require(tau != nullptr, -7);
}

/// The first row and column of the identity.
template <class T>
void clearBorder(MatrixView<T> A)
{
    kernel::SetOne(A.data);
    kernel::SetVectorZero(A.rows - 1, A.at(2, 1), 1);
    kernel::SetVectorZero(A.cols - 1, A.at(1, 2), A.ld);
}

} // namespace

/// A square matrix reduced to its other bidiagonal form holds its reflectors one column or row beside the place where
/// orgqr and orglq look for them: they are shifted, and Q or P^H becomes diag(1, the rest).
template <class T>
void orgbr(char vect, int m, int n, int k, T* a, int lda, T* tau)
{
    checkOrgbr(vect, m, n, k, a, lda, tau);
    if (m == 0 || n == 0)
        return;
    const MatrixView<T> A{a, m, n, lda};
    const bool wantsQ = vect == 'Q';
    if (wantsQ && m >= k)
        return orgqr(m, n, k, a, lda, tau);
    if (!wantsQ && k < n)
        return orglq(m, n, k, a, lda, tau);

    kernel::ORGBR_COPY(wantsQ ? 'L' : 'U', n, a, lda);
    clearBorder(A);
    if (n == 1)
        return;
    if (wantsQ)
        orgqr(n - 1, n - 1, n - 1, A.at(2, 2), lda, tau);
    else
        orglq(n - 1, n - 1, n - 1, A.at(2, 2), lda, tau);
}

template void orgbr(char, int, int, int, float*, int, float*);
template void orgbr(char, int, int, int, Complex<float>*, int, Complex<float>*);

} // namespace tarn::qr
