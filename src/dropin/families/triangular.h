// trmm and trsm.
#pragma once

#include "call.h"
#include "storage.h"

#include <utility>

namespace tarn::dropin {

/// B := alpha op(A) B or alpha B op(A), A triangular (trmm), or the same with its inverse (trsm).
template <class T>
struct Triangular
{
    using Device = tarnStatus(char, char, char, char, int, int, T, T*, int, T*, int);

    char side, uplo, transa, diag;
    int m, n;
    T alpha;
    T* a;
    int lda;
    T* b;
    int ldb;

    int order() const { return side == 'L' ? m : n; }

    static constexpr Kind kind() { return Kind::level3; }
    double flops() const { return operations<T> * m * n * order(); }
    double bytes() const { return sizeof(T) * (0.5 * order() * order() + 2.0 * m * n); }
    Size size() const { return {m, n, order()}; }

    bool wellFormed() const
    {
        return isOneOf(side, "LR") && isOneOf(uplo, "UL") && isOneOf(transa, "NTC") && isOneOf(diag, "UN") && m > 0 &&
               n > 0 && !isZero(alpha) && fits(lda, order()) && fits(ldb, m);
    }

    Outcome run(Device* device) const { return outcome(device(side, uplo, transa, diag, m, n, alpha, a, lda, b, ldb)); }

    /// op(A)^T is the same op of the transposed triangle.
    void byColumns()
    {
        side = otherSide(side);
        uplo = otherTriangle(uplo);
        std::swap(m, n);
    }
};

} // namespace tarn::dropin
