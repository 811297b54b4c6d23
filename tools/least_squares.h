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
Matrix<Wide<T>> adjoint(const Matrix<T>& a)
{
    Matrix<Wide<T>> b(a.cols, a.rows);
    for (int j = 0; j < a.cols; ++j)
        for (int i = 0; i < a.rows; ++i)
            if constexpr (isComplex<T>)
                b(j, i) = std::conj(Wide<T>(a(i, j)));
            else
                b(j, i) = a(i, j);
    return b;
}

/// Z^H X, the columns of Z an orthonormal basis of what is orthogonal to the columns of A, m by n with m >= n: the rows
/// below the solution that gels leaves. W is double or std::complex<double>.
template <class W>
Matrix<W> orthogonalPart(Matrix<W> a, Matrix<W> x)
{
    if (a.cols > 0) {
        const int nrhs = x.cols, lda = a.ld(), ldx = x.ld();
        int info = 0;
        withWorkspace<W>([&](W* work, const int* lwork) {
            select<W>(nullptr, dgels_, nullptr, zgels_)("N", &a.rows, &a.cols, &nrhs, a.values.data(), &lda,
                                                        x.values.data(), &ldx, work, lwork, &info, 1);
        });
    }
    Matrix<W> part(a.rows - a.cols, x.cols);
    for (int j = 0; j < x.cols; ++j)
        std::copy(x.column(j) + a.cols, x.column(j) + a.rows, part.column(j));
    return part;
}

/// norm1(A^H (B - A X)) / (m norm1(A) norm1(B) eps) for A m by n, m > n. Else the larger of
/// norm1(B - A X) / (n norm1(A) norm1(X) eps) and norm1(Z^H X) / (n norm1(X) eps), Z orthogonal to the range of A^H.
template <class T>
double leastSquaresBackwardError(const Matrix<T>& a, const Matrix<T>& b, const Matrix<T>& x)
{
    const Matrix<Wide<T>> r = residual(a, b, x);
    const double unit = std::max(a.rows, a.cols) * epsilon<T>;
    if (a.rows > a.cols) {
        Matrix<Wide<T>> gradient(a.cols, b.cols);
        multiplyAdd(gradient, Wide<T>(1), 'C', a, r);
        return ratio(norm1(gradient), unit * norm1(a) * norm1(b));
    }
    const double equations = ratio(norm1(r), unit * norm1(a) * norm1(x));
    if (a.rows == a.cols || std::isnan(equations))
        return equations;
    const double outside = norm1(orthogonalPart(adjoint(a), convert<Wide<T>>(x)));
    return std::max(equations, ratio(outside, unit * norm1(x)));
}

/// The larger of norm1(d - B x) / (n (norm1(B) norm1(x) + norm1(d)) eps) and
/// norm1(Z^H A^H (c - A x)) / (n norm1(A) (norm1(A) norm1(x) + norm1(c)) eps), Z a basis of the null space of B.
template <class T>
double constrainedBackwardError(const Matrix<T>& a, const Matrix<T>& c, const Matrix<T>& b, const Matrix<T>& d,
                                const Matrix<T>& x)
{
    const double unit = a.cols * epsilon<T>, normX = norm1(x);
    const double constraints = ratio(norm1(residual(b, d, x)), unit * (norm1(b) * normX + norm1(d)));
    if (std::isnan(constraints))
        return constraints;
    Matrix<Wide<T>> gradient(a.cols, 1);
    multiplyAdd(gradient, Wide<T>(1), 'C', a, residual(a, c, x));
    const double free = norm1(orthogonalPart(adjoint(b), gradient));
    return std::max(constraints, ratio(free, unit * norm1(a) * (norm1(a) * normX + norm1(c))));
}

} // namespace tarn::tool
