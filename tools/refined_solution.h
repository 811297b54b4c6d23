// Systems from files in double precision, by factors in single precision and refinement.
#pragma once

#include "matrix_market.h"
#include "tarn_refine.h"

namespace tarn::tool {

/// Below this, single precision loses more than half of its digits: the root of its epsilon.
inline constexpr double rcondOfHalfTheDigits = 3.45e-4;

/// Whether rounding to single precision changes a value.
bool holdsDoubles(const AnyMatrix& any);

template <class W>
struct RefinedSolution
{
    Matrix<W> x;
    tarnRefinement how;
    double seconds;
};

/// Solves A X = B; W is double or complex double. Raises Failure, which names the file of A.
template <class W>
RefinedSolution<W> solveRefined(const std::string& file, const Matrix<W>& a, const Matrix<W>& b);

/// How the solution came about, in words.
std::string wayOf(const tarnRefinement& how);

extern template RefinedSolution<double> solveRefined(const std::string&, const Matrix<double>&, const Matrix<double>&);
extern template RefinedSolution<std::complex<double>>
solveRefined(const std::string&, const Matrix<std::complex<double>>&, const Matrix<std::complex<double>>&);

} // namespace tarn::tool
