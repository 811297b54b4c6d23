// What a set of singular values tells.
#pragma once

#include <cmath>
#include <vector>

namespace tarn::tool {

/// Singular values of an m by n matrix in descending order, not empty.
struct Spectrum
{
    int m, n;
    std::vector<float> values;

    double largest() const { return values.front(); }
    double smallest() const { return values.back(); }

    /// Of the 2-norm; infinite for a singular matrix.
    double condition() const { return smallest() == 0 ? INFINITY : largest() / smallest(); }

    /// max(m, n) eps s[0], eps = 2^-23: what rounding may make of a value 0.
    double noise() const;

    /// Number of values above noise().
    int rank() const;

    /// Square root of the sum of squares of the values from index k on: the distance to the nearest matrix of rank k in
    /// the Frobenius norm.
    double tail(int k) const;
};

} // namespace tarn::tool
