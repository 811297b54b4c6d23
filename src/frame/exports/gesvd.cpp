// tarn<X>gesvd and tarnDevice<X>gesvd.
#include "blas/letters.h"
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "lapack/svd/svd.h"
#include "memory/mirrors.h"

#include <algorithm>

namespace tarn {

namespace {

template <class T>
tarnStatus deviceGesvd(char jobu, char jobvt, int m, int n, T* a, int lda, Real<T>* s, T* u, int ldu, T* vt, int ldvt)
{
    return deviceForm<T>([&] { svd::gesvd(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt); });
}

/// Flags of a matrix of vectors: only "A" and "S" return one.
unsigned mirrorByJob(char job) { return isOneOf(job, "AS") ? unsigned(MirrorOut) : 0; }

template <class T>
tarnStatus hostGesvd(char jobu, char jobvt, int m, int n, T* a, int lda, Real<T>* s, T* u, int ldu, T* vt, int ldvt)
{
    return hostForm<T>([&] {
        svd::checkGesvd(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt);
        const int k = std::min(m, n);
        if (k == 0)
            return finished(tarnNoError);
        DeviceMirror<T> A({m, n, 1}, a, lda, MirrorIn | MirrorOut);
        DeviceMirror<Real<T>> values({k, 1, 1}, s, k, MirrorOut);
        DeviceMirror<T> U({m, jobu == 'A' ? m : jobu == 'S' ? k : 1, 1}, u, ldu, mirrorByJob(jobu));
        DeviceMirror<T> Vt({jobvt == 'S' ? k : n, n, 1}, vt, ldvt, mirrorByJob(jobvt));
        return finished(deviceGesvd(jobu, jobvt, m, n, A.data(), A.deviceLd(), values.data(), U.data(), U.deviceLd(),
                                    Vt.data(), Vt.deviceLd()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_GESVD(X, T, R)                                                                                            \
    tarnStatus tarn##X##gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, R* s, T* u, int ldu, T* vt,          \
                              int ldvt)                                                                                \
    {                                                                                                                  \
        return hostGesvd(jobu, jobvt, m, n, elements(a), lda, s, elements(u), ldu, elements(vt), ldvt);                \
    }                                                                                                                  \
    tarnStatus tarnDevice##X##gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, R* s, T* u, int ldu, T* vt,    \
                                    int ldvt)                                                                          \
    {                                                                                                                  \
        return deviceGesvd(jobu, jobvt, m, n, elements(a), lda, s, elements(u), ldu, elements(vt), ldvt);              \
    }

TARN_GESVD(S, tarnFloat, tarnFloat)
TARN_GESVD(C, tarnFloatComplex, tarnFloat)
