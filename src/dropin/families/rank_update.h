// syrk, herk, syr2k and her2k.
#pragma once

#include "call.h"
#include "storage.h"

#include <type_traits>

namespace tarn::dropin {

/// The transposition letter that the library takes: it knows no "C" for symmetric updates.
template <bool isHermitian>
char updateLetter(char trans)
{
    return trans == 'C' && !isHermitian ? 'T' : trans;
}

/// The letters of a rank k update: a complex one takes either transposition or conjugation.
template <class T, bool isHermitian>
constexpr const char* updateLetters = !isComplex<T> ? "NTC"
                                      : isHermitian ? "NC"
                                                    : "NT";

/// C := alpha A A^T + beta C or alpha A^T A + beta C; with real scalars S and complex T the same with A^H.
template <class T, class S>
struct Syrk
{
    using Device = tarnStatus(char, char, int, int, S, T*, int, S, T*, int);
    static constexpr bool isHermitian = !std::is_same_v<T, S>;

    char uplo, trans;
    int n, k;
    S alpha;
    T* a;
    int lda;
    S beta;
    T* c;
    int ldc;

    static constexpr Kind kind() { return Kind::level3; }
    double flops() const { return operations<T> * n * n * k; }
    double bytes() const { return sizeof(T) * (double(n) * k + 1.0 * n * n); }
    Size size() const { return {n, n, k}; }

    bool wellFormed() const
    {
        return isOneOf(uplo, "UL") && isOneOf(trans, updateLetters<T, isHermitian>) && n > 0 && k > 0 &&
               !isZero(alpha) && fits(lda, trans == 'N' ? n : k) && fits(ldc, n);
    }

    Outcome run(Device* device) const
    {
        return outcome(device(uplo, updateLetter<isHermitian>(trans), n, k, alpha, a, lda, beta, c, ldc));
    }

    /// The other triangle; A stored by rows is A^T, or conj(A)^H, stored by columns.
    void byColumns()
    {
        uplo = otherTriangle(uplo);
        trans = otherUpdate(trans, isHermitian, isComplex<T>);
    }
};

/// C := alpha A B^T + alpha B A^T + beta C, or the same with A^T B and B^T A; with real S and complex T
/// alpha A B^H + conj(alpha) B A^H + beta C.
template <class T, class S>
struct Syr2k
{
    using Device = tarnStatus(char, char, int, int, T, T*, int, T*, int, S, T*, int);
    static constexpr bool isHermitian = !std::is_same_v<T, S>;

    char uplo, trans;
    int n, k;
    T alpha;
    T* a;
    int lda;
    T* b;
    int ldb;
    S beta;
    T* c;
    int ldc;

    static constexpr Kind kind() { return Kind::level3; }
    double flops() const { return 2 * operations<T> * n * n * k; }
    double bytes() const { return sizeof(T) * (2.0 * n * k + 1.0 * n * n); }
    Size size() const { return {n, n, k}; }

    bool wellFormed() const
    {
        const int rows = trans == 'N' ? n : k;
        return isOneOf(uplo, "UL") && isOneOf(trans, updateLetters<T, isHermitian>) && n > 0 && k > 0 &&
               !isZero(alpha) && fits(lda, rows) && fits(ldb, rows) && fits(ldc, n);
    }

    Outcome run(Device* device) const
    {
        return outcome(device(uplo, updateLetter<isHermitian>(trans), n, k, alpha, a, lda, b, ldb, beta, c, ldc));
    }

    /// As of syrk; the transpose of alpha A B^H is alpha conj(B) A^T, which in terms of what is stored stands with
    /// conj(alpha) first.
    void byColumns()
    {
        uplo = otherTriangle(uplo);
        trans = otherUpdate(trans, isHermitian, isComplex<T>);
        if (isHermitian)
            alpha = conjugate(alpha);
    }
};

} // namespace tarn::dropin
