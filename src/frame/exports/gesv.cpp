// tarn<X>gesv and tarnDevice<X>gesv.
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "lapack/lu/lu.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

template <class T>
tarnStatus deviceGesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb)
{
    return deviceForm<T>([&] { lu::gesv(n, nrhs, a, lda, ipiv, b, ldb); });
}

template <class T>
tarnStatus hostGesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb)
{
    return hostForm<T>([&] {
        lu::checkGesv(n, nrhs, a, lda, ipiv, b, ldb);
        DeviceMirror<T> A({n, n, 1}, a, lda, MirrorIn | MirrorOut);
        DeviceMirror<T> B({n, nrhs, 1}, b, ldb, MirrorIn | MirrorOut);
        DeviceMirror<int> P({n, 1, 1}, ipiv, n, MirrorOut);
        // Without right-hand sides B has no device copy that the device form's check would accept.
        if (nrhs == 0)
            return finished(deviceForm<T>([&] { lu::getrf(n, n, A.data(), A.deviceLd(), P.data()); }));
        return finished(deviceGesv(n, nrhs, A.data(), A.deviceLd(), P.data(), B.data(), B.deviceLd()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_GESV(X, T)                                                                                                \
    tarnStatus tarn##X##gesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb)                                 \
    {                                                                                                                  \
        return hostGesv(n, nrhs, elements(a), lda, ipiv, elements(b), ldb);                                            \
    }                                                                                                                  \
    tarnStatus tarnDevice##X##gesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb)                           \
    {                                                                                                                  \
        return deviceGesv(n, nrhs, elements(a), lda, ipiv, elements(b), ldb);                                          \
    }

TARN_GESV(S, tarnFloat)
TARN_GESV(C, tarnFloatComplex)
