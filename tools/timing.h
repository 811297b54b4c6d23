// Wall-clock times, and the work of the LAPACK routines.
#pragma once

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

} // namespace tarn::tool
