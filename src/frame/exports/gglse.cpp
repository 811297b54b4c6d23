// tarn<X>gglse and tarnDevice<X>gglse.
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "lapack/qr/qr.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

template <class T>
tarnStatus deviceGglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x)
{
    return deviceForm<T>([&] { qr::gglse(m, n, p, a, lda, b, ldb, c, d, x); });
}

template <class T>
tarnStatus hostGglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x)
{
    return hostForm<T>([&] {
        qr::checkGglse(m, n, p, a, lda, b, ldb, c, d, x);
        // Without unknowns c, and without constraints b and d, may be null.
        const unsigned equations = n > 0 ? MirrorIn | MirrorOut : 0, constraints = p > 0 ? MirrorIn | MirrorOut : 0;
        DeviceMirror<T> A({m, n, 1}, a, lda, MirrorIn | MirrorOut);
        DeviceMirror<T> B({p, n, 1}, b, ldb, constraints);
        DeviceMirror<T> c1({m, 1, 1}, c, m, equations);
        DeviceMirror<T> d1({p, 1, 1}, d, p, constraints);
        DeviceMirror<T> x1({n, 1, 1}, x, n, MirrorOut);
        // Without rows A and c have no device copy; the device form wants an address that it does not use.
        T* const rows = m > 0 ? A.data() : x1.data();
        T* const values = m > 0 ? c1.data() : x1.data();
        return finished(deviceGglse(m, n, p, rows, A.deviceLd(), B.data(), B.deviceLd(), values, d1.data(), x1.data()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_GGLSE(X, T)                                                                                               \
    tarnStatus tarn##X##gglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x)                     \
    {                                                                                                                  \
        return hostGglse(m, n, p, elements(a), lda, elements(b), ldb, elements(c), elements(d), elements(x));          \
    }                                                                                                                  \
    tarnStatus tarnDevice##X##gglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x)               \
    {                                                                                                                  \
        return deviceGglse(m, n, p, elements(a), lda, elements(b), ldb, elements(c), elements(d), elements(x));        \
    }

TARN_GGLSE(S, tarnFloat)
TARN_GGLSE(C, tarnFloatComplex)
