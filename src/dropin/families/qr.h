// geqrf, gels and gglse.
#pragma once

#include "call.h"

#include <limits>

namespace tarn::dropin {

/// Operations of the QR factorisation of an m by n matrix, or of its LQ factorisation.
template <class T>
double qrFlops(double m, double n)
{
    const double k = std::min(m, n), l = std::max(m, n);
    return operations<T> * (2 * l * k * k - 2.0 / 3 * k * k * k);
}

/// A = Q R, A m by n.
template <class T>
struct Geqrf
{
    using Device = tarnStatus(int, int, T*, int, T*);
    using Fortran = void(const int*, const int*, T*, const int*, T*, T*, const int*, int*);

    int m, n;
    T* a;
    int lda;
    T* tau;
    T* work;
    int lwork;
    int* info;

    static constexpr Kind kind() { return Kind::qr; }
    double flops() const { return qrFlops<T>(m, n); }
    double bytes() const { return sizeof(T) * 2.0 * m * n; }
    Size size() const { return {m, n, 1}; }

    bool wellFormed() const { return m > 0 && n > 0 && fits(lda, m) && lwork >= n; }
    Outcome run(Device* device) const { return outcome(device(m, n, a, lda, tau), info); }

    void setOptimalWork(Fortran* cpu) const
    {
        const int query = -1;
        int ignored = 0;
        cpu(&m, &n, a, &lda, tau, work, &query, &ignored);
    }
};

/// op(A) X = B in the sense of least squares or of least norm, A m by n, B with nrhs columns.
template <class T>
struct Gels
{
    using Device = tarnStatus(char, int, int, int, T*, int, T*, int);
    using Fortran = void(const char*, const int*, const int*, const int*, T*, const int*, T*, const int*, T*,
                         const int*, int*, std::size_t);

    char trans;
    int m, n, nrhs;
    T* a;
    int lda;
    T* b;
    int ldb;
    T* work;
    int lwork;
    int* info;

    static constexpr Kind kind() { return Kind::qr; }
    double flops() const
    {
        const double k = std::min(m, n), l = std::max(m, n);
        return qrFlops<T>(m, n) + operations<T> * (4 * l * k - k * k) * nrhs;
    }
    double bytes() const { return sizeof(T) * 2.0 * (double(m) * n + double(std::max(m, n)) * nrhs); }
    Size size() const { return {m, n, nrhs}; }

    bool wellFormed() const
    {
        const int k = std::min(m, n);
        return isOneOf(trans, isComplex<T> ? "NC" : "NT") && k > 0 && nrhs > 0 && fits(lda, m) &&
               fits(ldb, std::max(m, n)) && lwork >= double(k) + std::max(k, nrhs);
    }

    /// LAPACK scales matrices beyond these bounds, and answers a zero A without factorising it.
    static bool isPlain(float norm)
    {
        constexpr float smallest = std::numeric_limits<float>::min() / std::numeric_limits<float>::epsilon();
        return norm >= smallest && norm <= 1 / smallest;
    }

    Outcome run(Device* device) const
    {
        const float normB = largest(trans == 'N' ? m : n, nrhs, b, ldb);
        if (!isPlain(largest(m, n, a, lda)) || !(normB == 0 || isPlain(normB)))
            return Outcome::declined;
        return outcome(device(trans, m, n, nrhs, a, lda, b, ldb), info);
    }

    void setOptimalWork(Fortran* cpu) const
    {
        const int query = -1;
        int ignored = 0;
        cpu(&trans, &m, &n, &nrhs, a, &lda, b, &ldb, work, &query, &ignored, 1);
    }
};

/// The least norm of c - A x under B x = d, A m by n, B p by n.
template <class T>
struct Gglse
{
    using Device = tarnStatus(int, int, int, T*, int, T*, int, T*, T*, T*);
    using Fortran = void(const int*, const int*, const int*, T*, const int*, T*, const int*, T*, T*, T*, T*, const int*,
                         int*);

    int m, n, p;
    T* a;
    int lda;
    T* b;
    int ldb;
    T *c, *d, *x;
    T* work;
    int lwork;
    int* info;

    static constexpr Kind kind() { return Kind::constrained; }
    double flops() const
    {
        return qrFlops<T>(p, n) + qrFlops<T>(m, n) + operations<T> * (4.0 * m * n * p - 2.0 * m * p * p);
    }
    double bytes() const { return sizeof(T) * 2.0 * (double(m) + p) * n; }
    Size size() const { return {m, n, p}; }

    bool wellFormed() const
    {
        return m > 0 && n > 0 && p > 0 && p <= n && n - m <= p && fits(lda, m) && fits(ldb, p) &&
               lwork >= double(m) + n + p;
    }

    Outcome run(Device* device) const { return outcome(device(m, n, p, a, lda, b, ldb, c, d, x), info); }

    void setOptimalWork(Fortran* cpu) const
    {
        const int query = -1;
        int ignored = 0;
        cpu(&m, &n, &p, a, &lda, b, &ldb, c, d, x, work, &query, &ignored);
    }
};

} // namespace tarn::dropin
