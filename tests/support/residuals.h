// Backward errors in units of machine epsilon, computed in double precision. The usual bound is 30.
#pragma once

#include "support/matrix.h"

#include <algorithm>
#include <cmath>
#include <utility>

extern "C" void zgemm_(const char*, const char*, const int*, const int*, const int*, const void*, const void*,
                       const int*, const void*, const int*, const void*, void*, const int*, std::size_t, std::size_t);

namespace test {

using WideMatrix = Matrix<tarn::Complex<double>>;

/// C := alpha op(A) op(B) + beta C; op is "N" or "C".
inline void multiplyAdd(double alpha, char opA, WideMatrix& A, char opB, WideMatrix& B, double beta, WideMatrix& C)
{
    const tarn::Complex<double> scale(alpha, 0), keep(beta, 0);
    const int k = opA == 'N' ? A.n : A.m, lda = std::max(1, A.ld), ldb = std::max(1, B.ld), ldc = std::max(1, C.ld);
    zgemm_(&opA, &opB, &C.m, &C.n, &k, &scale, A.data(), &lda, B.data(), &ldb, &keep, C.data(), &ldc, 1, 1);
}

/// C := alpha A B + beta C.
inline void multiplyAdd(double alpha, WideMatrix& A, WideMatrix& B, double beta, WideMatrix& C)
{
    multiplyAdd(alpha, 'N', A, 'N', B, beta, C);
}

/// A^H
inline WideMatrix adjoint(const WideMatrix& A)
{
    WideMatrix B(A.n, A.m);
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.m; ++i)
            B(j, i) = tarn::Complex<double>(A(i, j).real(), -A(i, j).imag());
    return B;
}

/// Rows first, ..., last - 1 of A.
inline WideMatrix rowsOf(const WideMatrix& A, int first, int last)
{
    WideMatrix B(last - first, A.n);
    for (int j = 0; j < A.n; ++j)
        for (int i = first; i < last; ++i)
            B(i - first, j) = A(i, j);
    return B;
}

/// norm1(P A - L U) / (max(m, n) norm1(A) eps) of a factorisation in LAPACK's layout; infinite if a pivot is not in its
/// range.
template <class T>
double luRatio(const Matrix<T>& A, const Matrix<T>& factors, const std::vector<int>& ipiv)
{
    const int m = A.m, n = A.n, k = std::min(m, n);
    WideMatrix L(m, k), U(k, n), R = widened(A);
    const WideMatrix F = widened(factors);
    for (int j = 0; j < k; ++j)
        for (int i = j; i < m; ++i)
            L(i, j) = i == j ? tarn::Complex<double>(1) : F(i, j);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i <= std::min(j, k - 1); ++i)
            U(i, j) = F(i, j);
    for (int i = 0; i < k; ++i) {
        if (ipiv[i] < i + 1 || ipiv[i] > m)
            return INFINITY;
        for (int j = 0; j < n; ++j)
            std::swap(R(i, j), R(ipiv[i] - 1, j));
    }
    multiplyAdd(-1, L, U, 1, R);
    return norm1(R) / (std::max(m, n) * norm1(A) * eps<T>);
}

/// norm1(B - A X) / (n norm1(A) norm1(X) eps).
template <class T>
double solveRatio(const Matrix<T>& A, const Matrix<T>& B, const Matrix<T>& X)
{
    WideMatrix R = widened(B), a = widened(A), x = widened(X);
    multiplyAdd(-1, a, x, 1, R);
    return norm1(R) / (A.n * norm1(A) * norm1(X) * eps<T>);
}

/// A NaN counts as larger than any number.
inline double larger(double a, double b) { return std::isnan(a) || a > b ? a : b; }

} // namespace test
