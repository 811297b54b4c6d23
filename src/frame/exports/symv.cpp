// tarn<X>symv, tarn<X>hemv and their device forms.
#include "blas/blas.h"
#include "blas/checks.h"
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

/// symv or hemv: their checks are the same.
template <class T>
using Routine = void (*)(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);

template <class T>
tarnStatus deviceSymv(Routine<T> routine, char uplo, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y,
                      int incy)
{
    return deviceForm<T>([&] { routine(uplo, n, alpha, a, lda, x, incx, beta, y, incy); });
}

template <class T>
tarnStatus hostSymv(Routine<T> routine, char uplo, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y,
                    int incy)
{
    return hostForm<T>([&] {
        checkSymv(uplo, n, a, lda, x, incx, y, incy);
        if (n == 0)
            return finished(tarnNoError);
        DeviceMirror<T> A({n, n, 1}, a, lda, MirrorIn);
        DeviceVectorMirror<T> X(n, x, incx, MirrorIn);
        DeviceVectorMirror<T> Y(n, y, incy, mirrorByBeta(beta));
        return finished(deviceSymv(routine, uplo, n, alpha, A.data(), A.deviceLd(), X.data(), X.deviceInc(), beta,
                                   Y.data(), Y.deviceInc()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_SYMV_FORM(name, form, routine, T)                                                                         \
    tarnStatus name(char uplo, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y, int incy)                  \
    {                                                                                                                  \
        return form(blas::routine, uplo, n, element(alpha), elements(a), lda, elements(x), incx, element(beta),        \
                    elements(y), incy);                                                                                \
    }
#define TARN_SYMV(X, routine, T)                                                                                       \
    TARN_SYMV_FORM(tarn##X##routine, hostSymv, routine, T)                                                             \
    TARN_SYMV_FORM(tarnDevice##X##routine, deviceSymv, routine, T)

TARN_SYMV(S, symv, tarnFloat)
TARN_SYMV(D, symv, tarnDouble)
TARN_SYMV(C, hemv, tarnFloatComplex)
TARN_SYMV(Z, hemv, tarnDoubleComplex)
