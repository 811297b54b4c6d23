// tarn<X>gemv and tarnDevice<X>gemv.
#include "blas/checks.h"
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "lapack/kernels.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

template <class T>
tarnStatus deviceGemv(char trans, int m, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y, int incy)
{
    return deviceForm<T>([&] { kernel::gemv(trans, m, n, alpha, a, lda, x, incx, beta, y, incy); });
}

template <class T>
tarnStatus hostGemv(char trans, int m, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y, int incy)
{
    return hostForm<T>([&] {
        checkGemv(trans, m, n, a, lda, x, y);
        if (m == 0 || n == 0)
            return finished(tarnNoError);
        DeviceMirror<T> A({m, n, 1}, a, lda, MirrorIn);
        DeviceVectorMirror<T> X(trans == 'N' ? n : m, x, incx, MirrorIn);
        DeviceVectorMirror<T> Y(trans == 'N' ? m : n, y, incy, mirrorByBeta(beta));
        return finished(deviceGemv(trans, m, n, alpha, A.data(), A.deviceLd(), X.data(), X.deviceInc(), beta, Y.data(),
                                   Y.deviceInc()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_GEMV_FORM(name, form, T)                                                                                  \
    tarnStatus name(char trans, int m, int n, T alpha, T* a, int lda, T* x, int incx, T beta, T* y, int incy)          \
    {                                                                                                                  \
        return form(trans, m, n, element(alpha), elements(a), lda, elements(x), incx, element(beta), elements(y),      \
                    incy);                                                                                             \
    }
#define TARN_GEMV(X, T)                                                                                                \
    TARN_GEMV_FORM(tarn##X##gemv, hostGemv, T)                                                                         \
    TARN_GEMV_FORM(tarnDevice##X##gemv, deviceGemv, T)

TARN_GEMV(S, tarnFloat)
TARN_GEMV(D, tarnDouble)
TARN_GEMV(C, tarnFloatComplex)
TARN_GEMV(Z, tarnDoubleComplex)
