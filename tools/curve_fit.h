// A least squares problem with constraints: a polynomial through noisy samples that must meet some points exactly.
#pragma once

#include "dense.h"

namespace tarn::tool {

/// f(t) = 1 / (1 + 25 t^2) on [-1, 1] in the basis of Chebyshev polynomials; the unknowns x are their coefficients.
struct CurveFit
{
    Matrix<double> basis, samples;      ///< basis x = samples, the noisy values at the Chebyshev points
    Matrix<double> constraints, values; ///< constraints x = values, exact ones at the given points
    Matrix<double> exact;               ///< f at the Chebyshev points
};

/// Samples with normally distributed noise, the same in every run; the given points are equidistant from -1 to 1.
CurveFit noisySamples(int samples, int unknowns, int givenPoints, double noise);

/// Largest distance of the curve from the values at the given points.
double deviation(const CurveFit& fit, const Matrix<double>& x);

/// Root mean square of the distance of the curve from f at the samples.
double curveError(const CurveFit& fit, const Matrix<double>& x);

} // namespace tarn::tool
