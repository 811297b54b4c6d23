// Matrix Market files: the text exchange format of sparse (coordinate) and dense (array) matrices.
#pragma once

#include "dense.h"

#include <complex>
#include <stdexcept>
#include <string>
#include <variant>

namespace tarn::tool {

/// A file that cannot be read, or is not Matrix Market: the text names file, line and cause.
class MatrixMarketError : public std::runtime_error
{
public:
    /// line counts from 1; 0 where no line is to blame.
    MatrixMarketError(const std::string& file, std::int64_t line, const std::string& cause)
        : std::runtime_error(file + (line > 0 ? ":" + std::to_string(line) : "") + ": " + cause)
    {}
};

/// A file's matrix, every entry of it stored: complex for a complex file, else real.
using AnyMatrix = std::variant<Matrix<double>, Matrix<std::complex<double>>>;

/**
 * Reads a whole file: coordinate or array format; real, integer, complex or pattern entries (a pattern counts ones);
 * general, symmetric, skew-symmetric or Hermitian. Entries of a coordinate file that name the same position add up.
 * Comments and blank lines may stand anywhere after the banner. The file may be compressed by gzip; an exponent may be
 * marked by D.
 *
 * Everything else must be exact: one entry a line and nothing behind it, indices inside the matrix, the lower triangle
 * only (without the diagonal if skew-symmetric) where there is a symmetry, real diagonal if Hermitian, finite values,
 * and as many entries as announced. Raises MatrixMarketError.
 */
AnyMatrix readMatrixMarket(const std::string& path);

/// Writes array format, general, each value with 9 significant digits, or 17 in double precision, as an OutputFile.
/// Raises Failure.
void writeMatrixMarket(const std::string& path, const Matrix<float>& a);
void writeMatrixMarket(const std::string& path, const Matrix<std::complex<float>>& a);
void writeMatrixMarket(const std::string& path, const Matrix<double>& a);
void writeMatrixMarket(const std::string& path, const Matrix<std::complex<double>>& a);

} // namespace tarn::tool
