// How far the digits of a solution can be trusted: condition numbers, estimated from factors.
#pragma once

#include "dense.h"

#include <string>

namespace tarn::tool {

/// An estimate of 1 / (norm1(A) norm1(A^-1)) for A of order n, from its LU factors in `lu` and norm1(A) (xGECON). 1 for
/// n = 0. Some 4 n^2 operations, on the CPU.
template <class T>
double reciprocalConditionOfLu(const Matrix<T>& lu, double norm);

/// The same for the triangle `uplo` ("U", "L") of order n in the first rows and columns of `factors` (xTRCON).
template <class T>
double reciprocalConditionOfTriangle(char uplo, int n, const Matrix<T>& factors);

/// A line on the error stream if the matrix of that file is singular to the precision of T.
template <class T>
void warnOfCondition(const std::string& file, double rcond);

/// The largest deviation of x from 1, where all of it should be 1.
template <class T>
double deviationFromOnes(const Matrix<T>& x)
{
    double error = 0;
    for (const T& value : x.values)
        error = std::max(error, double(std::abs(value - T(1))));
    return error;
}

extern template double reciprocalConditionOfLu(const Matrix<float>&, double);
extern template double reciprocalConditionOfLu(const Matrix<std::complex<float>>&, double);
extern template double reciprocalConditionOfTriangle(char, int, const Matrix<float>&);
extern template double reciprocalConditionOfTriangle(char, int, const Matrix<std::complex<float>>&);
extern template void warnOfCondition<float>(const std::string&, double);
extern template void warnOfCondition<double>(const std::string&, double);

} // namespace tarn::tool
