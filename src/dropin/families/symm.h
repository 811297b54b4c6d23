// symm and hemm.
#pragma once

#include "call.h"
#include "storage.h"

#include <utility>

namespace tarn::dropin {

/// C := alpha A B + beta C or alpha B A + beta C, A symmetric or Hermitian.
template <class T>
struct Symm
{
    using Device = tarnStatus(char, char, int, int, T, T*, int, T*, int, T, T*, int);

    char side, uplo;
    int m, n;
    T alpha;
    T* a;
    int lda;
    T* b;
    int ldb;
    T beta;
    T* c;
    int ldc;

    int order() const { return side == 'L' ? m : n; }

    static constexpr Kind kind() { return Kind::level3; }
    double flops() const { return 2 * operations<T> * m * n * order(); }
    double bytes() const { return sizeof(T) * (0.5 * order() * order() + 3.0 * m * n); }
    Size size() const { return {m, n, order()}; }

    bool wellFormed() const
    {
        return isOneOf(side, "LR") && isOneOf(uplo, "UL") && m > 0 && n > 0 && !isZero(alpha) && fits(lda, order()) &&
               fits(ldb, m) && fits(ldc, m);
    }

    Outcome run(Device* device) const { return outcome(device(side, uplo, m, n, alpha, a, lda, b, ldb, beta, c, ldc)); }

    /// C^T = alpha B^T A^T + beta C^T, where the transpose of a Hermitian A is Hermitian too.
    void byColumns()
    {
        side = otherSide(side);
        uplo = otherTriangle(uplo);
        std::swap(m, n);
    }
};

} // namespace tarn::dropin
