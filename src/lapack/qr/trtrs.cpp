#include "blas/blas.h"
#include "blas/letters.h"
#include "frame/exceptions.h"
#include "lapack/qr/qr.h"
#include "memory/transfer.h"

#include <algorithm>
#include <vector>

namespace tarn::qr {

namespace {

void checkTrtrs(char& uplo, char& trans, char& diag, int n, int nrhs, const void* a, int lda, const void* b, int ldb)
{
    uplo = upper(uplo);
    trans = upper(trans);
    diag = upper(diag);
    require(isOneOf(uplo, "UL"), -1);
    require(isOneOf(trans, "NTC"), -2);
    require(isOneOf(diag, "UN"), -3);
    require(n >= 0, -4);
    require(nrhs >= 0, -5);
    require(lda >= std::max(1, n), -7);
    require(ldb >= std::max(1, n), -9);
    if (n == 0)
        return;
    require(a != nullptr, -6);
    require(b != nullptr, -8);
}

/// One-based index of the first exact zero on the diagonal, 0 if there is none.
template <class T>
int firstZero(int n, const T* a, int lda)
{
    std::vector<T> diagonal(n);
    getMatrix(1, n, diagonal.data(), 1, a, lda + 1);
    const auto zero = std::find(diagonal.begin(), diagonal.end(), T(0));
    return zero == diagonal.end() ? 0 : int(zero - diagonal.begin()) + 1;
}

} // namespace

template <class T>
void trtrs(char uplo, char trans, char diag, int n, int nrhs, const T* a, int lda, T* b, int ldb)
{
    checkTrtrs(uplo, trans, diag, n, nrhs, a, lda, b, ldb);
    if (n == 0)
        return;
    if (diag == 'N')
        if (const int zero = firstZero(n, a, lda); zero != 0)
            dataError(zero);
    blas::trsm('L', uplo, trans, diag, n, nrhs, T(1), a, lda, b, ldb);
}

template void trtrs(char, char, char, int, int, const float*, int, float*, int);
template void trtrs(char, char, char, int, int, const Complex<float>*, int, Complex<float>*, int);

} // namespace tarn::qr
