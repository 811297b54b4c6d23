// Iterative refinement of a solution in double precision W by factors in single precision T.
#pragma once

#include "lu.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>

namespace tarn::refine {

/// The pairs of element types: factors in the first, residuals and solution in the second.
template <class W>
using Narrow = std::conditional_t<isComplex<W>, std::complex<float>, float>;

/// op(A) X = B, all in the caller's storage.
template <class W>
struct System
{
    char trans;
    int n, nrhs;
    const W* a;
    int lda;
    const W* b;
    int ldb;
    W* x;
    int ldx;
};

inline std::int64_t offset(int i, int j, int ld) { return i + std::int64_t(j) * ld; }

/// abs(re) + abs(im), as LAPACK measures complex vectors.
template <class W>
double magnitude(W x)
{
    return std::abs(std::real(x)) + std::abs(std::imag(x));
}

/// The modulus without overflow, at a fraction of the cost of std::abs.
inline double modulus(std::complex<double> x)
{
    const double re = std::abs(x.real()), im = std::abs(x.imag());
    const double longer = std::max(re, im), quotient = std::min(re, im) / longer;
    return longer == 0 ? 0 : longer * std::sqrt(1 + quotient * quotient);
}

/// The largest magnitude of n elements, NaN if there is one.
template <class W>
double largest(int n, const W* x)
{
    double most = 0;
    for (int i = 0; i < n; ++i) {
        const double size = magnitude(x[i]);
        most = most < size || std::isnan(size) ? size : most;
    }
    return most;
}

/// A rounded to single precision, and what one pass over A tells of it.
template <class W>
struct Rounded
{
    using T = Narrow<W>;

    explicit Rounded(const System<W>& system);

    std::vector<T> values; ///< n by n without padding
    double norm1 = 0;      ///< of op(A)
    double normInf = 0;    ///< of op(A)
    bool fits = true;      ///< no column's sum of magnitudes is beyond single precision
};

template <class W>
Rounded<W>::Rounded(const System<W>& system)
{
    const int n = system.n;
    values.resize(std::size_t(n) * std::size_t(n));
    std::vector<double> rowSums(n);
    double columnNorm = 0;
    for (int j = 0; j < n; ++j) {
        const W* column = system.a + offset(0, j, system.lda);
        T* out = values.data() + offset(0, j, n);
        double sum = 0;
        for (int i = 0; i < n; ++i) {
            const W x = column[i];
            double size;
            if constexpr (isComplex<W>) {
                out[i] = T(float(x.real()), float(x.imag()));
                size = modulus(x);
            } else {
                out[i] = float(x);
                size = std::abs(x);
            }
            rowSums[i] += size;
            sum += size;
        }
        fits = fits && sum <= double(std::numeric_limits<float>::max());
        columnNorm = std::max(columnNorm, sum);
    }
    const double rowNorm = n == 0 ? 0 : *std::max_element(rowSums.begin(), rowSums.end());
    norm1 = system.trans == 'N' ? columnNorm : rowNorm;
    normInf = system.trans == 'N' ? rowNorm : columnNorm;
}

/// The iteration X := X + op(A)^-1 (B - op(A) X) from X = 0, with the inverse by factors in single precision.
template <class W>
class Refinement
{
public:
    static constexpr int mostSteps = 30; ///< LAPACK's ITERMAX

    Refinement(const System<W>& system, const Narrow<W>* factors, const int* factorPivots, double normInf)
        : s(system), lu(factors), pivots(factorPivots),
          bound(std::sqrt(double(s.n)) * 0.5 * std::numeric_limits<double>::epsilon() * normInf),
          residual(std::size_t(s.n) * std::size_t(s.nrhs)), correction(residual.size()), sizes(s.nrhs)
    {}

    /// iter: the number of refinements made, or tarnIterNotConverged where X does not reach the bound.
    tarnStatus run(int& iter);

private:
    void start();
    tarnStatus correct();
    tarnStatus computeResidual();
    double worstRatio() const;

    const System<W>& s;
    const Narrow<W>* const lu;
    const int* const pivots;
    const double bound; ///< of the residual's norm over that of x
    std::vector<W> residual;
    std::vector<Narrow<W>> correction;
    std::vector<double> sizes; ///< of the columns of the residual
};

/// X := 0, with the residual B.
template <class W>
void Refinement<W>::start()
{
    for (int j = 0; j < s.nrhs; ++j) {
        std::copy_n(s.b + offset(0, j, s.ldb), s.n, residual.data() + offset(0, j, s.n));
        std::fill_n(s.x + offset(0, j, s.ldx), s.n, W(0));
        sizes[j] = largest(s.n, s.b + offset(0, j, s.ldb));
    }
}

/// X := X + op(A)^-1 residual. Each column is solved for at size 1, so that none is too large or too small for single
/// precision.
template <class W>
tarnStatus Refinement<W>::correct()
{
    for (int j = 0; j < s.nrhs; ++j)
        for (int i = 0; i < s.n; ++i)
            correction[offset(i, j, s.n)] = Narrow<W>(sizes[j] == 0 ? W(0) : residual[offset(i, j, s.n)] / W(sizes[j]));
    const tarnStatus status = solve(s.trans, s.n, s.nrhs, lu, s.n, pivots, correction.data(), s.n);
    for (int j = 0; j < s.nrhs; ++j)
        for (int i = 0; i < s.n; ++i)
            s.x[offset(i, j, s.ldx)] += sizes[j] * W(correction[offset(i, j, s.n)]);
    return status;
}

/// residual := B - op(A) X
template <class W>
tarnStatus Refinement<W>::computeResidual()
{
    for (int j = 0; j < s.nrhs; ++j)
        std::copy_n(s.b + offset(0, j, s.ldb), s.n, residual.data() + offset(0, j, s.n));
    const W minusOne = -1, one = 1;
    tarnStatus status = tarnNoError;
    if (s.nrhs == 1) {
        const int increment = 1;
        select<W>(nullptr, &tool::dgemv_, nullptr, &tool::zgemv_)(&s.trans, &s.n, &s.n, &minusOne, s.a, &s.lda, s.x,
                                                                  &increment, &one, residual.data(), &increment, 1);
    } else if (s.nrhs < manyColumns) {
        select<W>(nullptr, &tool::dgemm_, nullptr, &tool::zgemm_)(
            &s.trans, "N", &s.n, &s.nrhs, &s.n, &minusOne, s.a, &s.lda, s.x, &s.ldx, &one, residual.data(), &s.n, 1, 1);
    } else {
        status = call(select<W>(nullptr, &tarnDgemm, nullptr, &tarnZgemm), s.trans, 'N', s.n, s.nrhs, s.n, minusOne,
                      const_cast<W*>(s.a), s.lda, s.x, s.ldx, one, residual.data(), s.n);
    }
    for (int j = 0; j < s.nrhs; ++j)
        sizes[j] = largest(s.n, residual.data() + offset(0, j, s.n));
    return status;
}

/// The largest residual in units of its bound; NaN where a column is not finite.
template <class W>
double Refinement<W>::worstRatio() const
{
    double worst = 0;
    for (int j = 0; j < s.nrhs; ++j) {
        const double ratio = sizes[j] == 0 ? 0 : sizes[j] / (bound * largest(s.n, s.x + offset(0, j, s.ldx)));
        worst = worst < ratio || std::isnan(ratio) ? ratio : worst;
    }
    return worst;
}

template <class W>
tarnStatus Refinement<W>::run(int& iter)
{
    // A double-precision solve ends well below LAPACK's bound: go on to epsilon / 32, in units of that bound.
    const double aim = 1 / (32 * std::sqrt(double(s.n)));
    start();
    double last = std::numeric_limits<double>::infinity();
    for (iter = 0; iter <= mostSteps; ++iter) {
        tarnStatus status = correct();
        if (status == tarnNoError)
            status = computeResidual();
        if (status != tarnNoError)
            return status;
        const double ratio = worstRatio(), rate = std::isinf(last) ? 1 : ratio / last;
        if (ratio <= aim)
            return tarnNoError;
        if (ratio <= 1 && ratio * rate <= aim) { // the next step gets there: no need to look
            ++iter;
            return correct();
        }
        const bool stalls = !(ratio <= last / 2); // a NaN does
        if (ratio <= 1 && (stalls || iter == mostSteps))
            return tarnNoError;
        if (stalls)
            break;
        last = ratio;
    }
    iter = -mostSteps - 1;
    return tarnNoError;
}

} // namespace tarn::refine
