// References of the BLAS tests. Operands are expanded to the full matrices that they stand for; a product is then
// checked by its effect on a random vector, in a precision above that of the elements: for w with independent elements
// of variance 1 the mean of norm2(E w)^2 is normF(E)^2.
#pragma once

#include "support/matrix.h"

#include <limits>
#include <type_traits>
#include <vector>

namespace test {

template <class R>
using WiderReal = std::conditional_t<std::is_same_v<R, float>, double, long double>;

/// The type in which references of elements T are summed.
template <class T>
using Wider = std::conditional_t<tarn::isComplex<T>, tarn::Complex<WiderReal<tarn::Real<T>>>, WiderReal<T>>;

template <class T>
Wider<T> wider(T x)
{
    if constexpr (tarn::isComplex<T>)
        return Wider<T>(x.real(), x.imag());
    else
        return x;
}

template <class T>
T conjugate(T x)
{
    if constexpr (tarn::isComplex<T>)
        x.imag(-x.imag());
    return x;
}

/// A scalar with both parts, where the type has two.
template <class T>
T scalar(double re, double im)
{
    if constexpr (tarn::isComplex<T>)
        return T(tarn::Real<T>(re), tarn::Real<T>(im));
    else
        return T(re);
}

template <class T>
T notANumber()
{
    constexpr auto nan = std::numeric_limits<tarn::Real<T>>::quiet_NaN();
    return scalar<T>(nan, nan);
}

inline char upper(char letter) { return letter >= 'a' ? char(letter - 'a' + 'A') : letter; }

/// True for the places of a triangle, diagonal included.
inline bool inTriangle(char uplo, int i, int j) { return upper(uplo) == 'U' ? i <= j : i >= j; }

/// op(A) of a general matrix.
template <class T>
Matrix<T> general(char trans, const Matrix<T>& A)
{
    if (upper(trans) == 'N') {
        Matrix<T> full(A.m, A.n);
        for (int j = 0; j < A.n; ++j)
            for (int i = 0; i < A.m; ++i)
                full(i, j) = A(i, j);
        return full;
    }
    Matrix<T> full(A.n, A.m);
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.m; ++i)
            full(j, i) = upper(trans) == 'C' ? conjugate(A(i, j)) : A(i, j);
    return full;
}

/// The symmetric or Hermitian matrix of which A stores one triangle.
template <class T>
Matrix<T> symmetric(char uplo, bool hermitian, const Matrix<T>& A)
{
    Matrix<T> full(A.n, A.n);
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.n; ++i) {
            T x = inTriangle(uplo, i, j) ? A(i, j) : hermitian ? conjugate(A(j, i)) : A(j, i);
            if constexpr (tarn::isComplex<T>)
                if (hermitian && i == j)
                    x.imag(0);
            full(i, j) = x;
        }
    return full;
}

/// op(A) of a triangular matrix.
template <class T>
Matrix<T> triangular(char uplo, char trans, char diag, const Matrix<T>& A)
{
    Matrix<T> full(A.n, A.n);
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.n; ++i)
            if (inTriangle(uplo, i, j))
                full(i, j) = i == j && upper(diag) == 'U' ? T(1) : A(i, j);
    return general(trans, full);
}

/// Puts a NaN in every place of A that a routine which is given this triangle must not read.
template <class T>
void poisonOtherTriangle(char uplo, Matrix<T>& A)
{
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.n; ++i)
            if (!inTriangle(uplo, i, j))
                A(i, j) = notANumber<T>();
}

template <class T>
double normF(const Matrix<T>& A)
{
    double sum = 0;
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.m; ++i)
            sum += std::norm(wide(A(i, j)));
    return std::sqrt(sum);
}

/// alpha left right: a summand of a result.
template <class T>
struct Term
{
    T alpha;
    const Matrix<T>& left;
    const Matrix<T>& right;
};

/// y += alpha A x.
template <class T>
void addProduct(std::vector<Wider<T>>& y, const Wider<T>& alpha, const Matrix<T>& A, const std::vector<Wider<T>>& x)
{
    for (int j = 0; j < A.n; ++j) {
        Wider<T> scale = alpha;
        scale *= x[j];
        for (int i = 0; i < A.m; ++i) {
            Wider<T> product = wider(A(i, j));
            product *= scale;
            y[i] += product;
        }
    }
}

/// normF(C - (the terms + beta C0)) / ((sum of sqrt(k + 2) abs(alpha) normF(left) normF(right), + 2 abs(beta)
/// normF(C0)) eps), estimated by a random vector. The bound is 3. C0 counts for nothing where beta is 0.
template <class T>
double ratio(const Matrix<T>& C, const std::vector<Term<T>>& terms, T beta, const Matrix<T>& C0)
{
    using W = Wider<T>;
    std::mt19937 engine(7);
    std::uniform_real_distribution<double> ofVariance1(-std::sqrt(3.0), std::sqrt(3.0));
    std::vector<W> w(C.n), difference(C.m, W(0));
    for (W& x : w)
        x = scalar<W>(ofVariance1(engine), 0);

    double scale = 0;
    for (const Term<T>& term : terms) {
        std::vector<W> inner(term.right.m, W(0));
        addProduct(inner, W(1), term.right, w);
        addProduct(difference, wider(term.alpha), term.left, inner);
        scale += std::sqrt(term.left.n + 2.0) * std::abs(wide(term.alpha)) * normF(term.left) * normF(term.right);
    }
    if (beta != T(0)) {
        addProduct(difference, wider(beta), C0, w);
        scale += 2 * std::abs(wide(beta)) * normF(C0);
    }
    addProduct(difference, W(-1), C, w);
    double sum = 0;
    for (const W& x : difference) {
        if constexpr (tarn::isComplex<T>)
            sum += double(x.real() * x.real() + x.imag() * x.imag());
        else
            sum += double(x * x);
    }
    return sum == 0 ? 0 : std::sqrt(sum) / (scale * eps<T>);
}

} // namespace test
