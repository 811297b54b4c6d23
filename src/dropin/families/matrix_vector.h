// gemv, symv and hemv.
#pragma once

#include "call.h"
#include "storage.h"

#include <utility>

namespace tarn::dropin {

/// y := alpha op(A) x + beta y, A m by n.
template <class T>
struct Gemv
{
    using Device = tarnStatus(char, int, int, T, T*, int, T*, int, T, T*, int);

    char trans;
    int m, n;
    T alpha;
    T* a;
    int lda;
    T* x;
    int incx;
    T beta;
    T* y;
    int incy;

    static constexpr Kind kind() { return Kind::level2; }
    double flops() const { return 2 * operations<T> * m * n; }
    double bytes() const { return sizeof(T) * (double(m) * n + 2.0 * m + 2.0 * n); }
    Size size() const { return {m, n, 1}; }

    bool wellFormed() const
    {
        return isOneOf(trans, "NTC") && m > 0 && n > 0 && !isZero(alpha) && fits(lda, m) && incx != 0 && incy != 0;
    }

    Outcome run(Device* device) const { return outcome(device(trans, m, n, alpha, a, lda, x, incx, beta, y, incy)); }

    /// A^H x of an A stored by rows is the conjugate of what is stored times x: no product of the library.
    void byColumns()
    {
        trans = trans == 'N' ? 'T' : trans == 'T' || (trans == 'C' && !isComplex<T>) ? 'N' : noLetter;
        std::swap(m, n);
    }
};

/// y := alpha A x + beta y, A symmetric or, for complex elements, Hermitian. The library takes no negative increments.
template <class T>
struct Symv
{
    using Device = tarnStatus(char, int, T, T*, int, T*, int, T, T*, int);

    char uplo;
    int n;
    T alpha;
    T* a;
    int lda;
    T* x;
    int incx;
    T beta;
    T* y;
    int incy;

    static constexpr Kind kind() { return Kind::level2; }
    double flops() const { return 2 * operations<T> * n * n; }
    double bytes() const { return sizeof(T) * (0.5 * n * n + 3.0 * n); }
    Size size() const { return {n, n, 1}; }

    bool wellFormed() const
    {
        return isOneOf(uplo, "UL") && n > 0 && !isZero(alpha) && fits(lda, n) && incx > 0 && incy > 0;
    }

    Outcome run(Device* device) const { return outcome(device(uplo, n, alpha, a, lda, x, incx, beta, y, incy)); }

    /// A Hermitian A stored by rows is conj(A) by columns: no product of the library.
    void byColumns() { uplo = isComplex<T> ? noLetter : otherTriangle(uplo); }
};

} // namespace tarn::dropin
