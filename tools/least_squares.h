// Residuals and backward errors of least squares problems in single precision, computed in double precision.
#pragma once

#include "dense.h"
#include "lapack.h"

namespace tarn::tool {

/// B - A X
template <class T>
Matrix<Wide<T>> residual(const Matrix<T>& a, const Matrix<T>& b, const Matrix<T>& x)
{
    Matrix<Wide<T>> r = convert<Wide<T>>(b);
    multiplyAdd(r, Wide<T>(-1), 'N', a, convert<Wide<T>>(x));
    return r;
}

/// A^H
template <class T>
Matrix<T> adjoint(const Matrix<T>& a)
{
    Matrix<T> b(a.cols, a.rows);
    for (int j = 0; j < a.cols; ++j)
        for (int i = 0; i < a.rows; ++i)
            if constexpr (isComplex<T>)
                b(j, i) = std::conj(a(i, j));
            else
                b(j, i) = a(i, j);
    return b;
}

/// X := the X that minimises normF(B - A X) for m by n A, m >= n, as gels leaves it in place of B: its rows, and below
/// them the residual in the basis of Q. A := its factors. W is double or std::complex<double>.
template <class W>
void solveInPlace(Matrix<W>& a, Matrix<W>& b)
{
    const int nrhs = b.cols, lda = a.ld(), ldb = b.ld();
    int info = 0;
    withWorkspace<W>([&](W* work, const int* lwork) {
        select<W>(nullptr, dgels_, nullptr, zgels_)("N", &a.rows, &a.cols, &nrhs, a.values.data(), &lda,
                                                    b.values.data(), &ldb, work, lwork, &info, 1);
    });
}

/// Z^H X, the columns of Z an orthonormal basis of what is orthogonal to the columns of A, m by n with m >= n.
template <class W>
Matrix<W> orthogonalPart(Matrix<W> a, Matrix<W> x)
{
    if (a.cols > 0)
        solveInPlace(a, x);
    Matrix<W> part(a.rows - a.cols, x.cols);
    for (int j = 0; j < x.cols; ++j)
        std::copy(x.column(j) + a.cols, x.column(j) + a.rows, part.column(j));
    return part;
}

/// 2-norm of column j.
template <class W>
double norm2(const Matrix<W>& a, int j)
{
    double sum = 0;
    for (int i = 0; i < a.rows; ++i)
        sum += std::norm(a(i, j));
    return std::sqrt(sum);
}

/// A NaN counts as larger than any number.
inline double larger(double a, double b) { return std::isnan(a) || a > b ? a : b; }

/// Norm of the least change of A, m by n, after which X minimises normF(B - A X), to within a factor of 2; R = B - A X.
/// With mu = normF(R) / normF(X) and K = (A; mu I) it is the largest over the columns of
/// norm2(P (r; 0)) / norm2(x), P the projection onto the range of K: for P (r; 0) = K y, the length of the first n
/// elements of Q^H (r; 0) = (U y; ...), K = Q (U; 0). Source: R. Karlson, B. Walden, Estimation of optimal backward
/// perturbation bounds for the linear least squares problem, BIT 37, 1997.
template <class W>
double changeOfMatrix(const Matrix<W>& a, const Matrix<W>& r, const Matrix<W>& x)
{
    const int n = a.cols;
    const double mu = normF(r) / normF(x);
    if (n == 0 || normF(r) == 0 || !std::isfinite(mu)) // exact, or X is zero or not finite
        return n == 0 ? 0 : normF(r);
    Matrix<W> k(a.rows + n, n), y(a.rows + n, r.cols);
    for (int j = 0; j < n; ++j) {
        std::copy_n(a.column(j), a.rows, k.column(j));
        k(a.rows + j, j) = mu;
    }
    for (int j = 0; j < r.cols; ++j)
        std::copy_n(r.column(j), a.rows, y.column(j));
    solveInPlace(k, y);
    double change = 0;
    for (int j = 0; j < r.cols; ++j) {
        double square = 0;
        for (int i = 0; i < n; ++i) {
            W element = 0;
            for (int l = i; l < n; ++l)
                element += k(i, l) * y(l, j);
            square += std::norm(element);
        }
        change = larger(change, ratio(std::sqrt(square), norm2(x, j)));
    }
    return change;
}

/// Backward error of X, which minimises normF(B - A X): the norm of the least change of A that makes it exact, over
/// normF(A) eps. With fewer equations than unknowns the largest over the columns, r = b - A x, of
/// norm2(r) / (normF(A) norm2(x) eps) and norm2(Z^H x) / (norm2(x) eps), Z orthogonal to the range of A^H. An error of
/// 1e-3 in X makes it a hundred times what rounding does; bounds are 10, and 30 with fewer equations.
template <class T>
double leastSquaresBackwardError(const Matrix<T>& a, const Matrix<T>& b, const Matrix<T>& x)
{
    using W = Wide<T>;
    const Matrix<W> r = residual(a, b, x), solution = convert<W>(x);
    const double unit = normF(a) * epsilon<T>;
    if (a.rows >= a.cols)
        return ratio(changeOfMatrix(convert<W>(a), r, solution), unit);
    const Matrix<W> outside = orthogonalPart(adjoint(convert<W>(a)), solution);
    double error = 0;
    for (int j = 0; j < b.cols; ++j) {
        const double normX = norm2(solution, j);
        error = larger(error, ratio(norm2(r, j), unit * normX));
        error = larger(error, ratio(norm2(outside, j), normX * epsilon<T>));
    }
    return error;
}

/// Backward error of x, which minimises norm2(c - A x) subject to B x = d: the larger of
/// norm2(d - B x) / ((normF(B) norm2(x) + norm2(d)) eps) and, over normF(A) eps, the norm of the least change of A
/// after which c - A x is orthogonal to A Z, Z a basis of the null space of B. The bound is 10.
template <class T>
double constrainedBackwardError(const Matrix<T>& a, const Matrix<T>& c, const Matrix<T>& b, const Matrix<T>& d,
                                const Matrix<T>& x)
{
    using W = Wide<T>;
    const double constraints = ratio(normF(residual(b, d, x)), (normF(b) * normF(x) + normF(d)) * epsilon<T>);
    const Matrix<W> free = adjoint(orthogonalPart(adjoint(convert<W>(b)), adjoint(convert<W>(a))));
    const double optimality = changeOfMatrix(free, residual(a, c, x), convert<W>(x));
    return larger(constraints, ratio(optimality, normF(a) * epsilon<T>));
}

} // namespace tarn::tool
