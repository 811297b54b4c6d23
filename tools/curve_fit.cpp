#include "curve_fit.h"

#include <random>

namespace tarn::tool {

namespace {

constexpr double pi = 3.14159265358979323846;

double f(double t) { return 1 / (1 + 25 * t * t); }

/// Row i of basis: the Chebyshev polynomials at t.
void evaluate(Matrix<double>& basis, int i, double t)
{
    for (int j = 0; j < basis.cols; ++j)
        basis(i, j) = j == 0 ? 1 : j == 1 ? t : 2 * t * basis(i, j - 1) - basis(i, j - 2);
}

/// A x - b
Matrix<double> differences(const Matrix<double>& a, const Matrix<double>& x, const Matrix<double>& b)
{
    Matrix<double> difference(b.rows, 1);
    for (int i = 0; i < b.rows; ++i) {
        double sum = -b(i, 0);
        for (int j = 0; j < a.cols; ++j)
            sum += a(i, j) * x(j, 0);
        difference(i, 0) = sum;
    }
    return difference;
}

} // namespace

CurveFit noisySamples(int samples, int unknowns, int givenPoints, double noise)
{
    CurveFit fit{Matrix<double>(samples, unknowns), Matrix<double>(samples, 1), Matrix<double>(givenPoints, unknowns),
                 Matrix<double>(givenPoints, 1), Matrix<double>(samples, 1)};
    std::mt19937 bits(1);
    std::normal_distribution<double> distribution(0, noise);
    for (int i = 0; i < samples; ++i) {
        const double t = std::cos(pi * (i + 0.5) / samples);
        evaluate(fit.basis, i, t);
        fit.exact(i, 0) = f(t);
        fit.samples(i, 0) = f(t) + distribution(bits);
    }
    for (int i = 0; i < givenPoints; ++i) {
        const double t = 2.0 * i / (givenPoints - 1) - 1;
        evaluate(fit.constraints, i, t);
        fit.values(i, 0) = f(t);
    }
    return fit;
}

double deviation(const CurveFit& fit, const Matrix<double>& x)
{
    double largest = 0;
    for (const double difference : differences(fit.constraints, x, fit.values).values) {
        if (std::isnan(difference))
            return difference;
        largest = std::max(largest, std::abs(difference));
    }
    return largest;
}

double curveError(const CurveFit& fit, const Matrix<double>& x)
{
    return normF(differences(fit.basis, x, fit.exact)) / std::sqrt(double(fit.exact.rows));
}

} // namespace tarn::tool
