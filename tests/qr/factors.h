// Factorisations whose Q is a product of reflectors, in LAPACK's layouts: what double precision makes of them.
#pragma once

#include "support/residuals.h"

namespace test {

using FortranMultiply = void(const char* side, const char* trans, const int* m, const int* n, const int* k,
                             const void* a, const int* lda, const void* tau, void* c, const int* ldc, void* work,
                             const int* lwork, int* info, std::size_t, std::size_t);
using FortranGenerate = void(const int* m, const int* n, const int* k, void* a, const int* lda, const void* tau,
                             void* work, const int* lwork, int* info);

extern "C" {
FortranMultiply zunmqr_, zunmlq_, zunmrq_;
FortranGenerate zungqr_, zunglq_, zungrq_;
}

/// The LAPACK routines of a factorisation, and where its triangular factor stands in an m by n matrix.
struct Family
{
    const char* name;
    FortranMultiply* multiply;
    FortranGenerate* generate;
    bool byColumn; ///< reflectors are columns, and Q^H stands on the left of A: Q^H A = R; else A Q^H = L or R
    bool (*inTriangle)(int i, int j, int m, int n);
};

inline const Family qr{"QR", zunmqr_, zungqr_, true, [](int i, int j, int, int) { return i <= j; }};
inline const Family lq{"LQ", zunmlq_, zunglq_, false, [](int i, int j, int, int) { return i >= j; }};
inline const Family rq{"RQ", zunmrq_, zungrq_, false, [](int i, int j, int m, int n) { return i - m <= j - n; }};

/// C := op(Q) C or C op(Q) with the k reflectors in V, for trans "N" or "C".
inline void multiplyByQ(const Family& family, char side, char trans, int k, WideMatrix& V, WideMatrix& tau,
                        WideMatrix& C)
{
    const int lwork = 64 * (std::max(C.m, C.n) + 65), ldv = std::max(1, V.ld);
    std::vector<tarn::Complex<double>> work(lwork);
    int info = 0;
    family.multiply(&side, &trans, &C.m, &C.n, &k, V.data(), &ldv, tau.data(), C.data(), &C.ld, work.data(), &lwork,
                    &info, 1, 1);
}

/// V := the first V.n columns, or the first (LQ) or last (RQ) V.m rows, of Q with k reflectors.
inline void generateQ(const Family& family, int k, WideMatrix& V, WideMatrix& tau)
{
    const int lwork = 64 * std::max(V.m, V.n);
    std::vector<tarn::Complex<double>> work(lwork);
    int info = 0;
    family.generate(&V.m, &V.n, &k, V.data(), &V.ld, tau.data(), work.data(), &lwork, &info);
}

/// An array as a matrix of one column.
template <class T>
Matrix<T> columnOf(const std::vector<T>& x)
{
    Matrix<T> column(int(x.size()), 1);
    column.elements() = x;
    return column;
}

/// norm1(A - B) / (scale norm1(B) eps)
template <class T>
double difference(const Matrix<T>& A, const WideMatrix& B, int scale)
{
    WideMatrix D = widened(A);
    for (std::size_t i = 0; i < D.elements().size(); ++i)
        D.elements()[i] += -1.0 * B.elements()[i];
    return norm1(D) / (scale * norm1(B) * eps<T>);
}

/// The part of a factorisation of an m by n matrix that holds the reflectors.
inline WideMatrix reflectorsOf(const Family& family, const WideMatrix& F)
{
    const int k = std::min(F.m, F.n);
    if (family.byColumn) {
        WideMatrix V(F.m, k);
        std::copy_n(F.elements().begin(), V.elements().size(), V.elements().begin());
        return V;
    }
    return family.generate == zungrq_ ? rowsOf(F, F.m - k, F.m) : rowsOf(F, 0, k);
}

/// The larger of norm1(R - Q^H A) / (p norm1(A) eps), or the same of L - A Q^H and R - A Q^H, and of
/// norm1(I - Q^H Q) / (p eps), p the length of the reflectors: of a factorisation of A in LAPACK's layout.
template <class T>
double factorRatio(const Family& family, const Matrix<T>& A, const Matrix<T>& factors, const std::vector<T>& tau)
{
    const int k = std::min(A.m, A.n);
    WideMatrix F = widened(factors), V = reflectorsOf(family, F), t = widened(columnOf(tau)), R = widened(A);
    multiplyByQ(family, family.byColumn ? 'L' : 'R', 'C', k, V, t, R);
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.m; ++i)
            if (family.inTriangle(i, j, A.m, A.n))
                R(i, j) += -1.0 * F(i, j);

    WideMatrix I(k, k);
    for (int i = 0; i < k; ++i)
        I(i, i) = tarn::Complex<double>(-1);
    generateQ(family, k, V, t);
    multiplyAdd(1, family.byColumn ? 'C' : 'N', V, family.byColumn ? 'N' : 'C', V, 1, I);
    const double unit = (family.byColumn ? A.m : A.n) * eps<T>;
    return larger(norm1(R) / norm1(A), norm1(I)) / unit;
}

} // namespace test
