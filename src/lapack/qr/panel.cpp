#include "lapack/qr/panel.h"

#include "blas/cpu.h"

#include <algorithm>
#include <memory>

namespace tarn::qr {

namespace {

/// Panels up to this width are factorised column by column. Measured for 64 and 96 columns of 100 to 16384 rows: 8 and
/// 32 take up to a third longer.
constexpr int narrow = 16;

float conjugate(float x) { return x; }
Complex<float> conjugate(Complex<float> x) { return {x.real(), -x.imag()}; }

/// M(i:i+rows-1, j:j+cols-1)
template <class T>
MatrixView<T> block(const MatrixView<T>& M, int i, int j, int rows, int cols)
{
    return {M.at(i, j), rows, cols, M.ld};
}

/// The factor of the product of two block reflectors, whose own factors stand in the diagonal blocks of F:
/// F12 = -F11 V1^H V2 F22. V1 takes the first n1 columns of V, V2, which begins n1 rows further down, the others.
template <class T>
void joinFactors(MatrixView<T> V, MatrixView<T> F, int n1)
{
    const int n = V.cols, n2 = n - n1, below = V.rows - n;
    T* const f12 = F.at(1, n1 + 1);

    // V1^H V2, of the rows with the triangle of V2, and of those below it.
    for (int j = 1; j <= n2; ++j)
        for (int i = 1; i <= n1; ++i)
            *F.at(i, n1 + j) = conjugate(*V.at(n1 + j, i));
    cpu::trmm('R', 'L', 'N', 'U', n1, n2, T(1), V.at(n1 + 1, n1 + 1), V.ld, f12, F.ld);
    if (below > 0)
        cpu::gemm('C', 'N', n1, n2, below, T(1), V.at(n + 1, 1), V.ld, V.at(n + 1, n1 + 1), V.ld, T(1), f12, F.ld);

    cpu::trmm('L', 'U', 'N', 'N', n1, n2, T(-1), F.data, F.ld, f12, F.ld);
    cpu::trmm('R', 'U', 'N', 'N', n1, n2, T(1), F.at(n1 + 1, n1 + 1), F.ld, f12, F.ld);
}

} // namespace

template <class T>
void factorisePanel(MatrixView<T> A, T* tau, MatrixView<T> F)
{
    const int m = A.rows, n = A.cols;
    if (n <= narrow) {
        cpu::geqr2(m, n, A.data, A.ld, tau);
        cpu::larft('F', 'C', m, n, A.data, A.ld, tau, F.data, F.ld);
        return;
    }
    const cpu::Turn turn(2.0 * m * n * n);
    const int n1 = (n / 2 + narrow - 1) / narrow * narrow, n2 = n - n1;
    factorisePanel(block(A, 1, 1, m, n1), tau, block(F, 1, 1, n1, n1));
    cpu::larfb('L', 'C', 'F', 'C', m, n2, n1, A.data, A.ld, F.data, F.ld, A.at(1, n1 + 1), A.ld);
    factorisePanel(block(A, n1 + 1, n1 + 1, m - n1, n2), tau + n1, block(F, n1 + 1, n1 + 1, n2, n2));
    joinFactors(A, F, n1);
}

template <class T>
void factoriseOnHost(MatrixView<T> A, T* tau)
{
    const int k = std::min(A.rows, A.cols), rest = A.cols - k;
    const std::unique_ptr<T[]> factor(new T[std::size_t(k) * k]);
    factorisePanel(block(A, 1, 1, A.rows, k), tau, {factor.get(), k, k, k});
    if (rest > 0)
        cpu::larfb('L', 'C', 'F', 'C', A.rows, rest, k, A.data, A.ld, factor.get(), k, A.at(1, k + 1), A.ld);
}

template void factorisePanel(MatrixView<float>, float*, MatrixView<float>);
template void factorisePanel(MatrixView<Complex<float>>, Complex<float>*, MatrixView<Complex<float>>);
template void factoriseOnHost(MatrixView<float>, float*);
template void factoriseOnHost(MatrixView<Complex<float>>, Complex<float>*);

} // namespace tarn::qr
