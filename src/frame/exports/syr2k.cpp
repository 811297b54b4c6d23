// tarn<X>syr2k, tarn<X>her2k and their device forms.
#include "blas/blas.h"
#include "blas/checks.h"
#include "frame/exports/elements.h"
#include "frame/routine.h"
#include "memory/mirrors.h"

namespace tarn {

namespace {

/// syr2k or her2k, with its check; S is the type of beta.
template <class T, class S>
struct Rank2K
{
    decltype(&checkSyr2k) check;
    void (*run)(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, S beta, T* c,
                int ldc);
};

template <class T, class S>
tarnStatus deviceRank2K(Rank2K<T, S> routine, char uplo, char trans, int n, int k, T alpha, T* a, int lda, T* b,
                        int ldb, S beta, T* c, int ldc)
{
    return deviceForm<T>([&] { routine.run(uplo, trans, n, k, alpha, a, lda, b, ldb, beta, c, ldc); });
}

template <class T, class S>
tarnStatus hostRank2K(Rank2K<T, S> routine, char uplo, char trans, int n, int k, T alpha, T* a, int lda, T* b, int ldb,
                      S beta, T* c, int ldc)
{
    return hostForm<T>([&] {
        routine.check(uplo, trans, n, k, a, lda, b, ldb, c, ldc);
        // A null C passes the check where k is 0; there is nothing to scale then.
        if (n == 0 || !c)
            return finished(tarnNoError);
        const Extent operand = transposedExtent(trans, n, k);
        DeviceMirror<T> A(operand, a, lda, MirrorIn);
        DeviceMirror<T> B(operand, b, ldb, MirrorIn);
        DeviceMirror<T> C({n, n, 1}, c, ldc, MirrorIn | MirrorOut);
        return finished(deviceRank2K(routine, uplo, trans, n, k, alpha, A.data(), A.deviceLd(), B.data(), B.deviceLd(),
                                     beta, C.data(), C.deviceLd()));
    });
}

} // namespace

} // namespace tarn

using namespace tarn;

#define TARN_RANK_2K_FORM(name, form, routine, check, T, S)                                                            \
    tarnStatus name(char uplo, char trans, int n, int k, T alpha, T* a, int lda, T* b, int ldb, S beta, T* c, int ldc) \
    {                                                                                                                  \
        return form(Rank2K<Element<T>, Element<S>>{check, blas::routine}, uplo, trans, n, k, element(alpha),           \
                    elements(a), lda, elements(b), ldb, element(beta), elements(c), ldc);                              \
    }
#define TARN_RANK_2K(X, routine, check, T, S)                                                                          \
    TARN_RANK_2K_FORM(tarn##X##routine, hostRank2K, routine, check, T, S)                                              \
    TARN_RANK_2K_FORM(tarnDevice##X##routine, deviceRank2K, routine, check, T, S)

TARN_RANK_2K(S, syr2k, checkSyr2k, tarnFloat, tarnFloat)
TARN_RANK_2K(D, syr2k, checkSyr2k, tarnDouble, tarnDouble)
TARN_RANK_2K(C, syr2k, checkSyr2k, tarnFloatComplex, tarnFloatComplex)
TARN_RANK_2K(Z, syr2k, checkSyr2k, tarnDoubleComplex, tarnDoubleComplex)
TARN_RANK_2K(C, her2k, checkHer2k, tarnFloatComplex, tarnFloat)
TARN_RANK_2K(Z, her2k, checkHer2k, tarnDoubleComplex, tarnDouble)
