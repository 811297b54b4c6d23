// tarn<X>trsm and tarnDevice<X>trsm.
#include "blas/blas.h"
#include "blas/checks.h"
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

template <class T>
tarnStatus deviceTrsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, T* a, int lda, T* b, int ldb)
{
    return deviceForm<T>([&] { blas::trsm(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb); });
}

template <class T>
tarnStatus hostTrsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, T* a, int lda, T* b, int ldb)
{
    return hostForm<T>([&] {
        checkTrsm(side, uplo, transa, diag, m, n, a, lda, b, ldb);
        if (m == 0 || n == 0)
            return finished(tarnNoError);
        const int order = side == 'L' ? m : n;
        DeviceMirror<T> A({order, order, 1}, a, lda, MirrorIn);
        DeviceMirror<T> B({m, n, 1}, b, ldb, MirrorIn | MirrorOut);
        return finished(
            deviceTrsm(side, uplo, transa, diag, m, n, alpha, A.data(), A.deviceLd(), B.data(), B.deviceLd()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_TRSM_FORM(name, form, T)                                                                                  \
    tarnStatus name(char side, char uplo, char transa, char diag, int m, int n, T alpha, T* a, int lda, T* b, int ldb) \
    {                                                                                                                  \
        return form(side, uplo, transa, diag, m, n, element(alpha), elements(a), lda, elements(b), ldb);               \
    }
#define TARN_TRSM(X, T)                                                                                                \
    TARN_TRSM_FORM(tarn##X##trsm, hostTrsm, T)                                                                         \
    TARN_TRSM_FORM(tarnDevice##X##trsm, deviceTrsm, T)

TARN_TRSM(S, tarnFloat)
TARN_TRSM(D, tarnDouble)
TARN_TRSM(C, tarnFloatComplex)
TARN_TRSM(Z, tarnDoubleComplex)
