// tarn<X>getrf and tarnDevice<X>getrf.
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "lapack/lu/lu.h"
#include "memory/mirrors.h"

#include <algorithm>

namespace tarn {

namespace {

template <class T>
tarnStatus deviceGetrf(int m, int n, T* a, int lda, int* ipiv)
{
    return deviceForm<T>([&] { lu::getrf(m, n, a, lda, ipiv); });
}

template <class T>
tarnStatus hostGetrf(int m, int n, T* a, int lda, int* ipiv)
{
    return hostForm<T>([&] {
        lu::checkGetrf(m, n, a, lda, ipiv);
        const int pivots = std::min(m, n);
        DeviceMirror<T> A({m, n, 1}, a, lda, MirrorIn | MirrorOut);
        DeviceMirror<int> P({pivots, 1, 1}, ipiv, pivots, MirrorOut);
        return finished(deviceGetrf(m, n, A.data(), A.deviceLd(), P.data()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_GETRF(X, T)                                                                                               \
    tarnStatus tarn##X##getrf(int m, int n, T* a, int lda, int* ipiv)                                                  \
    {                                                                                                                  \
        return hostGetrf(m, n, elements(a), lda, ipiv);                                                                \
    }                                                                                                                  \
    tarnStatus tarnDevice##X##getrf(int m, int n, T* a, int lda, int* ipiv)                                            \
    {                                                                                                                  \
        return deviceGetrf(m, n, elements(a), lda, ipiv);                                                              \
    }

TARN_GETRF(S, tarnFloat)
TARN_GETRF(C, tarnFloatComplex)
