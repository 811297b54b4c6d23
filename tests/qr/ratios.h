// Backward errors of least squares: those that the tool prints, which see an error of 1e-3 in X. The bound is 10.
#pragma once

#include "support/matrix.h"

namespace test {

/// Of X, which minimises normF(B - op(A) X), or has the least norm of all solutions, for trans "N" or "C". B and X have
/// max(m, n) rows, of which the first count.
template <class T>
double gelsRatio(char trans, const Matrix<T>& A, const Matrix<T>& B, const Matrix<T>& X);

/// Of x, which minimises norm2(c - A x) subject to B x = d.
template <class T>
double gglseRatio(const Matrix<T>& A, const Matrix<T>& B, const Matrix<T>& c, const Matrix<T>& d, const Matrix<T>& x);

} // namespace test
