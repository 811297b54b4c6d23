// Errors of decompositions A = U B V^H in units of machine epsilon, of single precision.
#pragma once

#include "support/matrix.h"
#include "support/residuals.h"

#include <algorithm>
#include <vector>

extern "C" void zgesdd_(const char*, const int*, const int*, void*, const int*, double*, void*, const int*, void*,
                        const int*, void*, const int*, double*, int*, int*, std::size_t);

namespace test {

using WideComplex = tarn::Complex<double>;

/// Rows [0, rows) and columns [0, cols) of A.
inline WideMatrix corner(const WideMatrix& A, int rows, int cols)
{
    WideMatrix B(rows, cols);
    B.each([&, p = B.data()](WideComplex& x) { x = A(int((&x - p) % rows), int((&x - p) / rows)); });
    return B;
}

/// The matrix with diagonal d, and e above it or, for uplo 'L', below.
inline WideMatrix bidiagonal(const std::vector<float>& d, const std::vector<float>& e = {}, char uplo = 'U')
{
    const int n = int(d.size());
    WideMatrix B(n, n);
    for (int i = 0; i < n; ++i)
        B(i, i) = WideComplex(d[i], 0);
    for (int i = 0; i < int(e.size()); ++i)
        (uplo == 'U' ? B(i, i + 1) : B(i + 1, i)) = WideComplex(e[i], 0);
    return B;
}

inline WideMatrix product(WideMatrix A, WideMatrix B)
{
    WideMatrix C(A.m, B.n);
    multiplyAdd(1, A, B, 0, C);
    return C;
}

/// norm1(A - B)
inline double distance(WideMatrix A, WideMatrix B)
{
    WideMatrix I = bidiagonal(std::vector<float>(A.n, 1));
    multiplyAdd(-1, B, I, 1, A);
    return norm1(A);
}

/// norm1(I - Q^H Q) / (rows eps), Q with orthonormal columns.
inline double orthogonality(const WideMatrix& Q)
{
    return distance(product(adjoint(Q), Q), bidiagonal(std::vector<float>(Q.n, 1))) / (Q.m * eps<float>);
}

/// norm1(A - U B Vh) / (max(m, n) norm1(A) eps); the error itself for A = 0.
inline double decompositionRatio(const WideMatrix& A, const WideMatrix& U, const WideMatrix& B, const WideMatrix& Vh)
{
    const double error = distance(A, product(product(U, B), Vh)), norm = norm1(A);
    return norm == 0 ? error : error / (std::max(A.m, A.n) * norm * eps<float>);
}

/// Room behind a matrix for the CPU LAPACK: some kernels of OpenBLAS's zgemv load a little from beyond its end.
inline void extendStorage(WideMatrix& A) { A.elements().resize(A.elements().size() + 64); }

/// Singular values by the CPU LAPACK in double precision.
inline std::vector<double> singularValues(WideMatrix A)
{
    extendStorage(A);
    const int k = std::min(A.m, A.n), one = 1, lwork = 5 * (A.m + A.n);
    std::vector<double> s(k), rwork(7 * k);
    std::vector<WideComplex> work(lwork);
    std::vector<int> iwork(8 * k);
    int info = 0;
    zgesdd_("N", &A.m, &A.n, A.data(), &A.ld, s.data(), nullptr, &one, nullptr, &one, work.data(), &lwork, rwork.data(),
            iwork.data(), &info, 1);
    return s;
}

} // namespace test
