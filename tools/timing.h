// Wall-clock times, and the work of the LAPACK routines.
#pragma once

#include <algorithm>
#include <chrono>

namespace tarn::tool {

/// Seconds that a call takes.
template <class Call>
double secondsOf(Call&& call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Multiplications and additions of gesv for real elements; complex ones take four times as many.
inline double gesvFlops(double n, double nrhs) { return 2.0 / 3.0 * n * n * n + 2.0 * n * n * nrhs; }

/// The same of geqrf and gelqf of an m by n matrix.
inline double geqrfFlops(double m, double n)
{
    const double longer = std::max(m, n), k = std::min(m, n);
    return 2 * longer * k * k - 2.0 / 3.0 * k * k * k;
}

/// The same of gels: factorisation, multiplication by Q and triangular solve.
inline double gelsFlops(double m, double n, double nrhs)
{
    const double longer = std::max(m, n), k = std::min(m, n);
    return geqrfFlops(m, n) + (4 * longer * k - k * k) * nrhs;
}

/// The same of gglse: RQ factorisation of B, its Q applied to A, and QR factorisation of the product.
inline double gglseFlops(double m, double n, double p)
{
    return geqrfFlops(n, p) + 4 * m * n * p - 2 * m * p * p + geqrfFlops(m, n);
}

/// The same of gesvd for m >= n and both jobs "N", "A", or "S" or "O"; the iteration's share is an estimate (Golub and
/// Van Loan, Matrix Computations).
inline double gesvdFlops(double m, double n, char jobs)
{
    if (jobs == 'N')
        return 4 * m * n * n - 4.0 / 3.0 * n * n * n;
    if (jobs == 'A')
        return 4 * m * m * n + 8 * m * n * n + 9 * n * n * n;
    return 14 * m * n * n + 8 * n * n * n;
}

} // namespace tarn::tool
