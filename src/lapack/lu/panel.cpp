#include "lapack/lu/panel.h"

#include "blas/cpu.h"
#include "frame/error_state.h"

#include <algorithm>

namespace tarn::lu {

namespace {

/// Panels of m rows up to this width are left to the CPU LAPACK. Measured for 64 to 192 columns of 64 to 16384 rows:
/// its routine keeps to one thread up to some width, and takes a third longer than halves do for 192 columns, at all
/// heights.
int narrow(int m) { return m < 768 ? 64 : 24; }

/// The same by the CPU LAPACK.
template <class T>
int factoriseNarrow(MatrixView<T> A, int* pivots)
{
    try {
        cpu::getrf(A.rows, A.cols, A.data, A.ld, pivots);
    } catch (const InfoException& failure) {
        if (failure.status() != tarnDataError)
            throw;
        return failure.info();
    }
    return 0;
}

} // namespace

template <class T>
int factorisePanel(MatrixView<T> A, int* pivots)
{
    const int m = A.rows, n = A.cols;
    if (n <= narrow(m) || m < n)
        return factoriseNarrow(A, pivots);
    const cpu::Turn turn(double(m) * n * n);
    const int n1 = n / 2, n2 = n - n1;
    T* const a12 = A.at(1, n1 + 1);
    const MatrixView<T> A22{A.at(n1 + 1, n1 + 1), m - n1, n2, A.ld};

    const int first = factorisePanel(MatrixView<T>{A.data, m, n1, A.ld}, pivots);
    cpu::laswp(n2, a12, A.ld, 1, n1, pivots);
    cpu::trsm('L', 'L', 'N', 'U', n1, n2, T(1), A.data, A.ld, a12, A.ld);
    cpu::gemm('N', 'N', m - n1, n2, n1, T(-1), A.at(n1 + 1, 1), A.ld, a12, A.ld, T(1), A22.data, A.ld);
    const int second = factorisePanel(A22, pivots + n1);
    std::for_each_n(pivots + n1, n2, [n1](int& pivot) { pivot += n1; });
    cpu::laswp(n1, A.data, A.ld, n1 + 1, n, pivots);
    return first != 0 || second == 0 ? first : n1 + second;
}

template int factorisePanel(MatrixView<float>, int*);
template int factorisePanel(MatrixView<Complex<float>>, int*);

} // namespace tarn::lu
