// tarn<X>geqrf and tarnDevice<X>geqrf.
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "lapack/qr/qr.h"
#include "memory/mirrors.h"

#include <algorithm>

namespace tarn {

namespace {

template <class T>
tarnStatus deviceGeqrf(int m, int n, T* a, int lda, T* tau)
{
    return deviceForm<T>([&] { qr::geqrf(m, n, a, lda, tau); });
}

template <class T>
tarnStatus hostGeqrf(int m, int n, T* a, int lda, T* tau)
{
    return hostForm<T>([&] {
        qr::checkGeqrf(m, n, a, lda, tau);
        const int k = std::min(m, n);
        DeviceMirror<T> A({m, n, 1}, a, lda, MirrorIn | MirrorOut);
        DeviceMirror<T> Tau({k, 1, 1}, tau, k, MirrorOut);
        return finished(deviceGeqrf(m, n, A.data(), A.deviceLd(), Tau.data()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_GEQRF(X, T)                                                                                               \
    tarnStatus tarn##X##geqrf(int m, int n, T* a, int lda, T* tau)                                                     \
    {                                                                                                                  \
        return hostGeqrf(m, n, elements(a), lda, elements(tau));                                                       \
    }                                                                                                                  \
    tarnStatus tarnDevice##X##geqrf(int m, int n, T* a, int lda, T* tau)                                               \
    {                                                                                                                  \
        return deviceGeqrf(m, n, elements(a), lda, elements(tau));                                                     \
    }

TARN_GEQRF(S, tarnFloat)
TARN_GEQRF(C, tarnFloatComplex)
