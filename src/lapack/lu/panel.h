// The LU factorisation on the CPU of panels, and of matrices that are no more than that.
#pragma once

#include "memory/matrix_view.h"

namespace tarn::lu {

/// A = P L U on the host, A m by n: L and U replace A, and pivots gets min(m, n) one-based rows. Returns the one-based
/// column of the first zero pivot, 0 if there is none; the factorisation is complete either way. Where m >= n it works
/// by halves (Toledo, 1997), so that nearly all of it is products of matrices, which the threads of the CPU BLAS share.
/// m n^2 - n^3 / 3 flops, times 4 for complex.
template <class T>
int factorisePanel(MatrixView<T> A, int* pivots);

} // namespace tarn::lu
