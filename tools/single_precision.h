// Matrices from files as the systems in single precision that solve and lstsq work on.
#pragma once

#include "failure.h"
#include "matrix_market.h"

#include <fmt/format.h>

#include <utility>

namespace tarn::tool {

/// Rows and columns.
inline std::pair<int, int> shapeOf(const AnyMatrix& any)
{
    return std::visit([](const auto& a) { return std::pair(a.rows, a.cols); }, any);
}

inline bool holdsComplex(const AnyMatrix& any) { return std::holds_alternative<Matrix<std::complex<double>>>(any); }

/// Fails for a right-hand side that is none.
inline void checkHasColumns(const std::string& file, const AnyMatrix& rhs)
{
    if (shapeOf(rhs).second == 0)
        throw Failure(file + ": the right-hand side has no columns");
}

/// Rounds to single precision; fails for a value that does not fit.
template <class T>
Matrix<T> toSingle(const std::string& file, const AnyMatrix& any)
{
    return std::visit(
        [&](const auto& wide) -> Matrix<T> {
            using From = typename std::decay_t<decltype(wide)>::value_type;
            if constexpr (isComplex<From> && !isComplex<T>) {
                throw Failure(file + ": complex values in a real system");
            } else {
                Matrix<T> single = convert<T>(wide);
                for (int j = 0; j < single.cols; ++j)
                    for (int i = 0; i < single.rows; ++i)
                        if (!(std::abs(single(i, j)) <= std::numeric_limits<float>::max()))
                            throw Failure(fmt::format("{}: entry ({}, {}) is too large for single precision", file,
                                                      i + 1, j + 1));
                return single;
            }
        },
        any);
}

/// A times ones, n by 1.
template <class T>
Matrix<T> rowSums(const Matrix<T>& a)
{
    Matrix<Wide<T>> ones(a.cols, 1), sums(a.rows, 1);
    std::fill(ones.values.begin(), ones.values.end(), Wide<T>(1));
    multiplyAdd(sums, Wide<T>(1), 'N', a, ones);
    return convert<T>(sums);
}

} // namespace tarn::tool
