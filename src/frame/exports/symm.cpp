// tarn<X>symm, tarn<X>hemm and their device forms.
#include "blas/blas.h"
#include "blas/checks.h"
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

/// symm or hemm: their checks are the same.
template <class T>
using Routine = void (*)(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
                         T* c, int ldc);

template <class T>
tarnStatus deviceSymm(Routine<T> routine, char side, char uplo, int m, int n, T alpha, T* a, int lda, T* b, int ldb,
                      T beta, T* c, int ldc)
{
    return deviceForm<T>([&] { routine(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc); });
}

template <class T>
tarnStatus hostSymm(Routine<T> routine, char side, char uplo, int m, int n, T alpha, T* a, int lda, T* b, int ldb,
                    T beta, T* c, int ldc)
{
    return hostForm<T>([&] {
        checkSymm(side, uplo, m, n, a, lda, b, ldb, c, ldc);
        if (m == 0 || n == 0)
            return finished(tarnNoError);
        const int order = side == 'L' ? m : n;
        DeviceMirror<T> A({order, order, 1}, a, lda, MirrorIn);
        DeviceMirror<T> B({m, n, 1}, b, ldb, MirrorIn);
        DeviceMirror<T> C({m, n, 1}, c, ldc, mirrorByBeta(beta));
        return finished(deviceSymm(routine, side, uplo, m, n, alpha, A.data(), A.deviceLd(), B.data(), B.deviceLd(),
                                   beta, C.data(), C.deviceLd()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_SYMM_FORM(name, form, routine, T)                                                                         \
    tarnStatus name(char side, char uplo, int m, int n, T alpha, T* a, int lda, T* b, int ldb, T beta, T* c, int ldc)  \
    {                                                                                                                  \
        return form(blas::routine, side, uplo, m, n, element(alpha), elements(a), lda, elements(b), ldb,               \
                    element(beta), elements(c), ldc);                                                                  \
    }
#define TARN_SYMM(X, routine, T)                                                                                       \
    TARN_SYMM_FORM(tarn##X##routine, hostSymm, routine, T)                                                             \
    TARN_SYMM_FORM(tarnDevice##X##routine, deviceSymm, routine, T)

TARN_SYMM(S, symm, tarnFloat)
TARN_SYMM(D, symm, tarnDouble)
TARN_SYMM(C, symm, tarnFloatComplex)
TARN_SYMM(Z, symm, tarnDoubleComplex)
TARN_SYMM(C, hemm, tarnFloatComplex)
TARN_SYMM(Z, hemm, tarnDoubleComplex)
