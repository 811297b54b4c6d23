// What a routine's descriptor says: operands, calls and error at one size.
#pragma once

#include "../dense.h"

#include <cstdint>
#include <functional>
#include <random>
#include <vector>

namespace tarn::bench {

using tool::call;
using tool::epsilon;
using tool::isComplex;
using tool::letter;
using tool::Matrix;
using tool::ratio;
using tool::Real;
using tool::select;
using tool::Wide;

/// Sizes of one call; those that a routine does not have are 0.
struct Dimensions
{
    int m = 0, n = 0, k = 0, nrhs = 0;
};

/// Arrays of one call, all in host memory or all in device memory.
template <class T>
struct Arrays
{
    std::vector<T*> operand; ///< in the order of Problem::operands
    int* pivots = nullptr;   ///< Problem::pivots elements

    T* operator[](std::size_t i) const { return operand[i]; }
};

/// What a call left behind, in host memory.
template <class T>
struct Outcome
{
    std::vector<Matrix<T>> operand; ///< in the order of Problem::operands; only the overwritten ones are set
    std::vector<int> pivots;
};

/// One routine at one size. Operands have no padding: the leading dimension of each is Matrix::ld.
template <class T>
struct Problem
{
    std::vector<Matrix<T>> operands;      ///< as they stand before each call
    std::vector<std::size_t> overwritten; ///< which of them a call changes
    int pivots = 0;                       ///< length of the pivot array, 0 if there is none

    std::function<tarnStatus(const Arrays<T>&)> host, device;

    /// The same by the reference library; its pivots are its own affair.
    std::function<void(const Arrays<T>&)> reference;

    /// Backward error in units of eps.
    std::function<double(const Problem&, const Outcome<T>&)> error;
};

/// Numbers from -scale to scale, the same ones in every run.
template <class T>
Matrix<T> randomMatrix(int m, int n, unsigned seed, double scale = 1)
{
    Matrix<T> a(m, n);
    std::mt19937 bits(seed);
    const double unit = scale / 2147483648.0;
    const auto next = [&] { return Real<T>(std::int32_t(bits()) * unit); };
    for (T& x : a.values) {
        x = next();
        if constexpr (isComplex<T>)
            x.imag(next());
    }
    return a;
}

/**
 * n by 1, entries +1 and -1. For a matrix E the expected value of norm2(E w)^2 over such w is normF(E)^2, so a product
 * with w shows a wrong entry anywhere in E at the cost of a matrix-vector product.
 */
template <class T>
Matrix<Wide<T>> probe(int n)
{
    Matrix<Wide<T>> w(n, 1);
    std::mt19937 bits(1);
    for (Wide<T>& x : w.values)
        x = bits() & 1 ? 1 : -1;
    return w;
}

/// alpha op(A) x in the wide type; op(A) = A ("N"), A^T ("T") or A^H ("C").
template <class T>
Matrix<Wide<T>> product(char op, const Matrix<T>& a, const Matrix<Wide<T>>& x, Wide<T> alpha = 1)
{
    Matrix<Wide<T>> y(op == 'N' ? a.rows : a.cols, x.cols);
    tool::multiplyAdd(y, alpha, op, a, x);
    return y;
}

/// The square matrix whose lower triangle is that of a; a Hermitian one has a real diagonal.
template <class T>
Matrix<T> mirrored(Matrix<T> a, bool hermitian)
{
    const auto image = [hermitian](const T& x) {
        if constexpr (isComplex<T>)
            return hermitian ? std::conj(x) : x;
        else
            return (void)hermitian, x;
    };
    for (int j = 0; j < a.cols; ++j) {
        if (hermitian)
            a(j, j) = std::real(a(j, j));
        for (int i = j + 1; i < a.rows; ++i)
            a(j, i) = image(a(i, j));
    }
    return a;
}

/// A factor of the routines that scale: with an imaginary part where there can be one.
template <class T>
T scalar(double re, double im)
{
    if constexpr (isComplex<T>)
        return {Real<T>(re), Real<T>(im)};
    else
        return (void)im, T(re);
}

/**
 * normF(X - Xref) / ((sqrt(k + 2) terms + 2 addend) eps): the error of X := (sums of k products) + beta C, where terms
 * is abs(alpha) normF(A) normF(B) and addend is abs(beta) normF(C).
 */
template <class T>
double updateError(const Matrix<Wide<T>>& x, const Matrix<Wide<T>>& expected, int k, double terms, double addend)
{
    return ratio(distance(x, expected), (std::sqrt(k + 2.0) * terms + 2 * addend) * epsilon<T>);
}

} // namespace tarn::bench
