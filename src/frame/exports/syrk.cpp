// tarn<X>syrk, tarn<X>herk and their device forms.
#include "blas/blas.h"
#include "blas/checks.h"
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

/// syrk or herk, with its check; S is the type of their scalars.
template <class T, class S>
struct RankK
{
    decltype(&checkSyrk) check;
    void (*run)(char uplo, char trans, int n, int k, S alpha, const T* a, int lda, S beta, T* c, int ldc);
};

template <class T, class S>
tarnStatus deviceRankK(RankK<T, S> routine, char uplo, char trans, int n, int k, S alpha, T* a, int lda, S beta, T* c,
                       int ldc)
{
    return deviceForm<T>([&] { routine.run(uplo, trans, n, k, alpha, a, lda, beta, c, ldc); });
}

template <class T, class S>
tarnStatus hostRankK(RankK<T, S> routine, char uplo, char trans, int n, int k, S alpha, T* a, int lda, S beta, T* c,
                     int ldc)
{
    return hostForm<T>([&] {
        routine.check(uplo, trans, n, k, a, lda, c, ldc);
        // A null C passes the check where k is 0; there is nothing to scale then.
        if (n == 0 || !c)
            return finished(tarnNoError);
        DeviceMirror<T> A(transposedExtent(trans, n, k), a, lda, MirrorIn);
        DeviceMirror<T> C({n, n, 1}, c, ldc, MirrorIn | MirrorOut);
        return finished(
            deviceRankK(routine, uplo, trans, n, k, alpha, A.data(), A.deviceLd(), beta, C.data(), C.deviceLd()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_RANK_K_FORM(name, form, routine, check, T, S)                                                             \
    tarnStatus name(char uplo, char trans, int n, int k, S alpha, T* a, int lda, S beta, T* c, int ldc)                \
    {                                                                                                                  \
        return form(RankK<Element<T>, Element<S>>{check, blas::routine}, uplo, trans, n, k, element(alpha),            \
                    elements(a), lda, element(beta), elements(c), ldc);                                                \
    }
#define TARN_RANK_K(X, routine, check, T, S)                                                                           \
    TARN_RANK_K_FORM(tarn##X##routine, hostRankK, routine, check, T, S)                                                \
    TARN_RANK_K_FORM(tarnDevice##X##routine, deviceRankK, routine, check, T, S)

TARN_RANK_K(S, syrk, checkSyrk, tarnFloat, tarnFloat)
TARN_RANK_K(D, syrk, checkSyrk, tarnDouble, tarnDouble)
TARN_RANK_K(C, syrk, checkSyrk, tarnFloatComplex, tarnFloatComplex)
TARN_RANK_K(Z, syrk, checkSyrk, tarnDoubleComplex, tarnDoubleComplex)
TARN_RANK_K(C, herk, checkHerk, tarnFloatComplex, tarnFloat)
TARN_RANK_K(Z, herk, checkHerk, tarnDoubleComplex, tarnDouble)
