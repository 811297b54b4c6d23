// tarn<X>gels and tarnDevice<X>gels.
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "lapack/qr/qr.h"
#include "memory/mirrors.h"

#include <algorithm>

namespace tarn {

namespace {

template <class T>
tarnStatus deviceGels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb)
{
    return deviceForm<T>([&] { qr::gels(trans, m, n, nrhs, a, lda, b, ldb); });
}

template <class T>
tarnStatus hostGels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb)
{
    return hostForm<T>([&] {
        qr::checkGels(trans, m, n, nrhs, a, lda, b, ldb);
        // Where there is nothing to solve A is not looked at, and may be null.
        DeviceMirror<T> A({m, n, 1}, a, lda, nrhs == 0 ? 0 : MirrorIn | MirrorOut);
        DeviceMirror<T> B({std::max(m, n), nrhs, 1}, b, ldb, MirrorIn | MirrorOut);
        return finished(deviceGels(trans, m, n, nrhs, A.data(), A.deviceLd(), B.data(), B.deviceLd()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_GELS(X, T)                                                                                                \
    tarnStatus tarn##X##gels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb)                         \
    {                                                                                                                  \
        return hostGels(trans, m, n, nrhs, elements(a), lda, elements(b), ldb);                                        \
    }                                                                                                                  \
    tarnStatus tarnDevice##X##gels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb)                   \
    {                                                                                                                  \
        return deviceGels(trans, m, n, nrhs, elements(a), lda, elements(b), ldb);                                      \
    }

TARN_GELS(S, tarnFloat)
TARN_GELS(C, tarnFloatComplex)
