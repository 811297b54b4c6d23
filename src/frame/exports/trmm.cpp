// tarn<X>trmm and tarnDevice<X>trmm.
#include "blas/blas.h"
#include "blas/checks.h"
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

template <class T>
tarnStatus deviceTrmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, T* a, int lda, T* b, int ldb)
{
    return deviceForm<T>([&] { blas::trmm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb); });
}

template <class T>
tarnStatus hostTrmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, T* a, int lda, T* b, int ldb)
{
    return hostForm<T>([&] {
        checkTrmm(side, uplo, transa, diag, m, n, a, lda, b, ldb);
        if (m == 0 || n == 0)
            return finished(tarnNoError);
        const int order = side == 'L' ? m : n;
        DeviceMirror<T> A({order, order, 1}, a, lda, MirrorIn);
        DeviceMirror<T> B({m, n, 1}, b, ldb, MirrorIn | MirrorOut);
        return finished(
            deviceTrmm(side, uplo, transa, diag, m, n, alpha, A.data(), A.deviceLd(), B.data(), B.deviceLd()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_TRMM_FORM(name, form, T)                                                                                  \
    tarnStatus name(char side, char uplo, char transa, char diag, int m, int n, T alpha, T* a, int lda, T* b, int ldb) \
    {                                                                                                                  \
        return form(side, uplo, transa, diag, m, n, element(alpha), elements(a), lda, elements(b), ldb);               \
    }
#define TARN_TRMM(X, T)                                                                                                \
    TARN_TRMM_FORM(tarn##X##trmm, hostTrmm, T)                                                                         \
    TARN_TRMM_FORM(tarnDevice##X##trmm, deviceTrmm, T)

TARN_TRMM(S, tarnFloat)
TARN_TRMM(D, tarnDouble)
TARN_TRMM(C, tarnFloatComplex)
TARN_TRMM(Z, tarnDoubleComplex)
