// getrf and gesv.
#pragma once

#include "call.h"

namespace tarn::dropin {

/// Operations of the LU factorisation of an m by n matrix.
template <class T>
double luFlops(double m, double n)
{
    const double k = std::min(m, n);
    return operations<T> * (2 * m * n * k - (m + n) * k * k + 2.0 / 3 * k * k * k);
}

/// A = P L U, A m by n.
template <class T>
struct Getrf
{
    using Device = tarnStatus(int, int, T*, int, int*);

    int m, n;
    T* a;
    int lda;
    int* ipiv;
    int* info;

    static constexpr Kind kind() { return Kind::lu; }
    double flops() const { return luFlops<T>(m, n); }
    double bytes() const { return sizeof(T) * 2.0 * m * n; }
    Size size() const { return {m, n, 1}; }

    bool wellFormed() const { return m > 0 && n > 0 && fits(lda, m); }
    Outcome run(Device* device) const { return outcome(device(m, n, a, lda, ipiv), info); }
};

/// A X = B, A of order n, B n by nrhs.
template <class T>
struct Gesv
{
    using Device = tarnStatus(int, int, T*, int, int*, T*, int);

    int n, nrhs;
    T* a;
    int lda;
    int* ipiv;
    T* b;
    int ldb;
    int* info;

    static constexpr Kind kind() { return Kind::lu; }
    double flops() const { return luFlops<T>(n, n) + 2 * operations<T> * n * n * nrhs; }
    double bytes() const { return sizeof(T) * 2.0 * n * (double(n) + nrhs); }
    Size size() const { return {n, n, nrhs}; }

    bool wellFormed() const { return n > 0 && nrhs > 0 && fits(lda, n) && fits(ldb, n); }
    Outcome run(Device* device) const { return outcome(device(n, nrhs, a, lda, ipiv, b, ldb), info); }
};

} // namespace tarn::dropin
