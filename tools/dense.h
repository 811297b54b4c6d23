// Dense matrices of the tool, and norms and residuals in extended precision.
#pragma once

#include "elements.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace tarn::tool {

/// Column-major matrix without padding: element (i, j), from 0, is values[j * rows + i].
template <class T>
struct Matrix
{
    using value_type = T;

    Matrix() = default;
    Matrix(int m, int n) : rows(m), cols(n), values(std::size_t(m) * std::size_t(n)) {}

    T* column(int j) { return values.data() + std::int64_t(j) * rows; }
    const T* column(int j) const { return values.data() + std::int64_t(j) * rows; }
    T& operator()(int i, int j) { return column(j)[i]; }
    const T& operator()(int i, int j) const { return column(j)[i]; }
    int ld() const { return std::max(1, rows); }

    int rows = 0, cols = 0;
    std::vector<T> values;
};

/// Element-wise conversion between precisions, and from real to complex.
template <class T, class From>
Matrix<T> convert(const Matrix<From>& from)
{
    Matrix<T> to(from.rows, from.cols);
    std::transform(from.values.begin(), from.values.end(), to.values.begin(), [](const From& x) {
        if constexpr (isComplex<From>)
            return T(Real<T>(x.real()), Real<T>(x.imag()));
        else
            return T(Real<T>(x));
    });
    return to;
}

/// Largest column sum of magnitudes.
template <class T>
double norm1(const Matrix<T>& a)
{
    double norm = 0;
    for (int j = 0; j < a.cols; ++j) {
        double sum = 0;
        for (int i = 0; i < a.rows; ++i)
            sum += double(std::abs(a(i, j)));
        if (std::isnan(sum))
            return sum;
        norm = std::max(norm, sum);
    }
    return norm;
}

/// Square root of the sum of squares.
template <class T>
double normF(const Matrix<T>& a)
{
    double sum = 0;
    for (const T& x : a.values) {
        const double magnitude = double(std::abs(x));
        sum += magnitude * magnitude;
    }
    return std::sqrt(sum);
}

/// normF(X - Y)
template <class T>
double distance(Matrix<T> x, const Matrix<T>& y)
{
    for (std::size_t i = 0; i < x.values.size(); ++i)
        x.values[i] -= y.values[i];
    return normF(x);
}

namespace detail {

template <class W>
void multiplyAdd(W& sum, W a, W b)
{
    // std::complex multiplication treats infinities with care, at several times the cost of the product.
    if constexpr (isComplex<W>)
        sum = {sum.real() + (a.real() * b.real() - a.imag() * b.imag()),
               sum.imag() + (a.real() * b.imag() + a.imag() * b.real())};
    else
        sum += a * b;
}

} // namespace detail

/// Y := Y + alpha op(A) X in the wide type of A; op(A) = A ("N"), A^T ("T") or A^H ("C"). 2 A.rows A.cols X.cols flops.
template <class T>
void multiplyAdd(Matrix<Wide<T>>& y, Wide<T> alpha, char op, const Matrix<T>& a, const Matrix<Wide<T>>& x)
{
    using W = Wide<T>;
    std::vector<W> wide(a.rows);
    for (int j = 0; j < a.cols; ++j) {
        std::transform(a.column(j), a.column(j) + a.rows, wide.begin(), [op](const T& v) {
            if constexpr (isComplex<T>)
                return W(v.real(), op == 'C' ? -v.imag() : v.imag());
            else
                return (void)op, W(v);
        });
        for (int k = 0; k < x.cols; ++k) {
            const W* xk = x.column(k);
            W* yk = y.column(k);
            if (op == 'N') {
                const W factor = alpha * xk[j];
                for (int i = 0; i < a.rows; ++i)
                    detail::multiplyAdd(yk[i], wide[i], factor);
            } else {
                W sum = 0;
                for (int i = 0; i < a.rows; ++i)
                    detail::multiplyAdd(sum, wide[i], xk[i]);
                detail::multiplyAdd(yk[j], alpha, sum);
            }
        }
    }
}

/// error / bound, and 0 where there is no error at all.
inline double ratio(double error, double bound) { return error == 0 ? 0 : error / bound; }

/// norm1(B - A X) / (n norm1(A) norm1(X) eps), the backward error of a solution of A X = B; 0 for n = 0.
template <class T>
double solveBackwardError(const Matrix<T>& a, const Matrix<T>& b, const Matrix<T>& x)
{
    if (a.rows == 0 || b.cols == 0)
        return 0;
    Matrix<Wide<T>> residual = convert<Wide<T>>(b);
    multiplyAdd(residual, Wide<T>(-1), 'N', a, convert<Wide<T>>(x));
    return ratio(norm1(residual), a.rows * norm1(a) * norm1(x) * epsilon<T>);
}

} // namespace tarn::tool
