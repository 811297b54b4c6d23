// tarn<X>gemm and tarnDevice<X>gemm.
#include "blas/blas.h"
#include "blas/checks.h"
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

template <class T>
tarnStatus deviceGemm(char transa, char transb, int m, int n, int k, T alpha, T* a, int lda, T* b, int ldb, T beta,
                      T* c, int ldc)
{
    return deviceForm<T>([&] { blas::gemm(transa, transb, m, n, k, alpha, a, lda, b, ldb, beta, c, ldc); });
}

template <class T>
tarnStatus hostGemm(char transa, char transb, int m, int n, int k, T alpha, T* a, int lda, T* b, int ldb, T beta, T* c,
                    int ldc)
{
    return hostForm<T>([&] {
        checkGemm(transa, transb, m, n, k, a, lda, b, ldb, c, ldc);
        // A null C passes the check where k is 0; there is nothing to scale then.
        if (m == 0 || n == 0 || !c)
            return finished(tarnNoError);
        DeviceMirror<T> A(transposedExtent(transa, m, k), a, lda, MirrorIn);
        DeviceMirror<T> B(transposedExtent(transb, k, n), b, ldb, MirrorIn);
        DeviceMirror<T> C({m, n, 1}, c, ldc, mirrorByBeta(beta));
        return finished(deviceGemm(transa, transb, m, n, k, alpha, A.data(), A.deviceLd(), B.data(), B.deviceLd(), beta,
                                   C.data(), C.deviceLd()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_GEMM_FORM(name, form, T)                                                                                  \
    tarnStatus name(char transa, char transb, int m, int n, int k, T alpha, T* a, int lda, T* b, int ldb, T beta,      \
                    T* c, int ldc)                                                                                     \
    {                                                                                                                  \
        return form(transa, transb, m, n, k, element(alpha), elements(a), lda, elements(b), ldb, element(beta),        \
                    elements(c), ldc);                                                                                 \
    }
#define TARN_GEMM(X, T)                                                                                                \
    TARN_GEMM_FORM(tarn##X##gemm, hostGemm, T)                                                                         \
    TARN_GEMM_FORM(tarnDevice##X##gemm, deviceGemm, T)

TARN_GEMM(S, tarnFloat)
TARN_GEMM(D, tarnDouble)
TARN_GEMM(C, tarnFloatComplex)
TARN_GEMM(Z, tarnDoubleComplex)
