// gesvd.
#pragma once

#include "call.h"

#include <cmath>
#include <limits>
#include <memory>
#include <new>

namespace tarn::dropin {

/// A = U S V^H, A m by n.
template <class T>
struct Gesvd
{
    using R = Real<T>;
    using Device = tarnStatus(char, char, int, int, T*, int, R*, T*, int, T*, int);

    char jobu, jobvt;
    int m, n;
    T* a;
    int lda;
    R* s;
    T* u;
    int ldu;
    T* vt;
    int ldvt;
    T* work;
    int lwork;
    R* rwork; ///< of complex routines
    int* info;

    Kind kind() const { return jobu == 'N' && jobvt == 'N' ? Kind::singularValues : Kind::singularVectors; }

    double flops() const
    {
        const double k = std::min(m, n), l = std::max(m, n);
        const double reduction = 4 * l * k * k - 4.0 / 3 * k * k * k;
        return operations<T> * (kind() == Kind::singularValues ? reduction : 14 * l * k * k + 8 * k * k * k);
    }
    double bytes() const
    {
        return sizeof(T) * (double(m) * n + (jobu == 'N' ? 0.0 : double(m) * std::min(m, n)) +
                            (jobvt == 'N' ? 0.0 : double(n) * std::min(m, n)));
    }
    Size size() const { return {m, n, 1}; }

    /// The length of the workspace below which LAPACK may refuse a call; it takes less on some paths.
    double leastWork() const
    {
        const double k = std::min(m, n), l = std::max(m, n);
        return isComplex<T> ? 2 * k + l : std::max(3 * k + l, 5 * k);
    }

    bool wellFormed() const
    {
        const int k = std::min(m, n);
        return isOneOf(jobu, "ASON") && isOneOf(jobvt, "ASON") && !(jobu == 'O' && jobvt == 'O') && k > 0 &&
               fits(lda, m) && fits(ldu, isOneOf(jobu, "AS") ? m : 1) &&
               fits(ldvt, jobvt == 'A'   ? n
                          : jobvt == 'S' ? k
                                         : 1) &&
               lwork >= leastWork();
    }

    /// LAPACK scales matrices beyond these bounds.
    static bool isPlain(float norm)
    {
        const float smallest = std::sqrt(std::numeric_limits<float>::min()) / std::numeric_limits<float>::epsilon();
        return norm >= smallest && norm <= 1 / smallest;
    }

    /// What LAPACK leaves behind where the iteration does not converge, the library does not: such a call begins anew
    /// on the CPU, with the matrix that is put aside for that.
    Outcome run(Device* device) const
    {
        if (!isPlain(largest(m, n, a, lda)))
            return Outcome::declined;
        const std::unique_ptr<T[]> aside(new (std::nothrow) T[std::size_t(m) * std::size_t(n)]);
        if (!aside)
            return Outcome::declined;
        copy(a, lda, aside.get(), m);
        const tarnStatus status = device(jobu, jobvt, m, n, a, lda, s, u, ldu, vt, ldvt);
        if (status == tarnDataError)
            copy(aside.get(), m, a, lda);
        return status == tarnDataError ? Outcome::failed : outcome(status, info);
    }

    template <class Fortran>
    void setOptimalWork(Fortran* cpu) const
    {
        const int query = -1;
        int ignored = 0;
        if constexpr (isComplex<T>)
            cpu(&jobu, &jobvt, &m, &n, a, &lda, s, u, &ldu, vt, &ldvt, work, &query, rwork, &ignored, 1, 1);
        else
            cpu(&jobu, &jobvt, &m, &n, a, &lda, s, u, &ldu, vt, &ldvt, work, &query, &ignored, 1, 1);
    }

private:
    void copy(const T* from, int ldFrom, T* to, int ldTo) const
    {
        for (int j = 0; j < n; ++j)
            std::copy_n(from + std::size_t(j) * std::size_t(ldFrom), m, to + std::size_t(j) * std::size_t(ldTo));
    }
};

} // namespace tarn::dropin
