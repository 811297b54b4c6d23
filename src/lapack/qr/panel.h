// The QR factorisation on the CPU of panels, and of matrices that are no more than that.
#pragma once

#include "memory/matrix_view.h"

namespace tarn::qr {

/// A = Q R with Q = I - V T V^H, A m by n with m >= n, on the host: R and the unit lower trapezoid V replace A as geqrf
/// leaves them, the upper triangle of F (n by n) becomes T, and tau its diagonal. Works by halves (Elmroth, Gustavson,
/// 2000), so that nearly all of it is products of matrices, which the threads of the CPU BLAS share, and T comes out on
/// the way. 3 m n^2 - n^3 flops about, times 4 for complex.
template <class T>
void factorisePanel(MatrixView<T> A, T* tau, MatrixView<T> F);

/// A = Q R on the host, A m by n with k = min(m, n) scalars tau: for few reflectors.
template <class T>
void factoriseOnHost(MatrixView<T> A, T* tau);

} // namespace tarn::qr
