// gemv, symv and hemv: every letter, type and form against a reference, around the sizes at which the library's kernels
// change their ways, with all kinds of increments.
#include "blas/reference.h"
#include "blas/routines.h"

#include <gtest/gtest.h>

#include <tuple>

namespace {

using namespace test;
using C = tarn::Complex<float>;
using Z = tarn::Complex<double>;

constexpr double bound = 3;
constexpr int pad = 5;

template <class T>
class Level2 : public testing::Test
{
protected:
    const Initialized library;
};

using Types = testing::Types<float, double, C, Z>;
TYPED_TEST_SUITE(Level2, Types);

/// A vector of n elements in memory, inc apart: a matrix of one row. A negative increment starts at the far end.
template <class T>
Matrix<T> strided(int n, int inc, unsigned seed)
{
    return Matrix<T>::random(1, n, std::abs(inc), seed);
}

/// The elements of such a vector in their order.
template <class T>
Matrix<T> gathered(const Matrix<T>& x, int inc)
{
    Matrix<T> column(x.n, 1);
    for (int i = 0; i < x.n; ++i)
        column(i, 0) = x(0, inc > 0 ? i : x.n - 1 - i);
    return column;
}

template <class T>
struct Vectors
{
    T alpha, beta;
    int incx, incy;
};

/// op(A) x, which `call` is to add to y; full: op(A), A, x as stored.
template <class T, class Call>
void expectProduct(const Matrix<T>& full, const Matrix<T>& A, Vectors<T> v, const Call& call)
{
    const auto x0 = strided<T>(full.n, v.incx, 2);
    auto y0 = strided<T>(full.m, v.incy, 3);
    if (v.beta == T(0))
        y0.each([](T& y) { y = notANumber<T>(); });
    const auto right = gathered(x0, v.incx), old = gathered(y0, v.incy);
    for (const Form form : bothForms) {
        SCOPED_TRACE(testing::Message() << form << " increments " << v.incx << " " << v.incy);
        auto a = A, x = x0, y = y0;
        ASSERT_EQ(call(form, a, x, y), tarnNoError);
        EXPECT_LE(ratio(gathered(y, v.incy), {{v.alpha, full, right}}, v.beta, old), bound);
        EXPECT_TRUE(y.paddingIntact() && identical(a, A) && identical(x, x0));
    }
}

template <class T>
void expectGemv(char trans, int m, int n, Vectors<T> v)
{
    SCOPED_TRACE(testing::Message() << trans << " " << m << " " << n);
    const auto A = Matrix<T>::random(m, n, m + pad);
    expectProduct(general(trans, A), A, v, [&](Form form, Matrix<T>& a, Matrix<T>& x, Matrix<T>& y) {
        return Routines<T>::gemv[form](trans, m, n, native(v.alpha), Placed(form, a).address(), a.ld,
                                       Placed(form, x).address(), v.incx, native(v.beta), Placed(form, y).address(),
                                       v.incy);
    });
}

TYPED_TEST(Level2, GemvSizesAroundTheChunksOfTheKernel)
{
    using T = TypeParam;
    const T alpha = scalar<T>(-0.7, 0.4), beta = scalar<T>(0.6, -1.3);
    for (const char trans : {'N', 'T', 'C', 'c'}) {
        for (const int m : {1, 2, 15, 16, 31, 127, 128, 129, 511, 512, 513, 1300})
            expectGemv<T>(trans, m, 37, {alpha, beta, 1, 1});
        for (const int n : {1, 15, 16, 17, 31, 32, 33, 600})
            expectGemv<T>(trans, 600, n, {alpha, beta, 1, 1});
    }
}

TYPED_TEST(Level2, GemvScalarsAndIncrements)
{
    using T = TypeParam;
    for (const char trans : {'N', 't', 'C'}) {
        for (const T alpha : {T(0), T(1), scalar<T>(-0.7, 0.4)})
            for (const T beta : {T(0), T(1), scalar<T>(2, 0), scalar<T>(0.6, -1.3)})
                expectGemv<T>(trans, 540, 70, {alpha, beta, 1, 1});
        for (const auto& [incx, incy] : {std::tuple(2, 3), {-1, 1}, {1, -1}, {-2, -3}})
            for (const T beta : {T(0), scalar<T>(0.6, -1.3)})
                expectGemv<T>(trans, 540, 70, {scalar<T>(-0.7, 0.4), beta, incx, incy});
    }
}

/// The symmetric product of real types, the Hermitian one of complex types.
template <class T>
constexpr auto* symvOrHemv()
{
    if constexpr (tarn::isComplex<T>)
        return Routines<T>::hemv;
    else
        return Routines<T>::symv;
}

/// A with what must not count: a NaN in the other triangle, garbage in the imaginary part of a Hermitian diagonal.
template <class T>
Matrix<T> stored(char uplo, int n)
{
    auto A = Matrix<T>::random(n, n, n + pad);
    poisonOtherTriangle(uplo, A);
    if constexpr (tarn::isComplex<T>)
        for (int i = 0; i < n; ++i)
            A(i, i).imag(100);
    return A;
}

template <class T>
void expectSymv(char uplo, const Matrix<T>& A, const std::vector<Vectors<T>>& all)
{
    const int n = A.n;
    SCOPED_TRACE(testing::Message() << uplo << " " << n);
    const auto full = symmetric(uplo, tarn::isComplex<T>, A);
    for (const Vectors<T>& v : all)
        expectProduct(full, A, v, [&](Form form, Matrix<T>& a, Matrix<T>& x, Matrix<T>& y) {
            return symvOrHemv<T>()[form](uplo, n, native(v.alpha), Placed(form, a).address(), a.ld,
                                         Placed(form, x).address(), v.incx, native(v.beta), Placed(form, y).address(),
                                         v.incy);
        });
}

TYPED_TEST(Level2, SymvSizesAroundTheKernelsThreshold)
{
    using T = TypeParam;
    const Vectors<T> v{scalar<T>(-0.7, 0.4), scalar<T>(0.6, -1.3), 1, 1};
    for (const char uplo : {'U', 'l'})
        for (const int n : {1, 2, 33, 1199, 1200, 1201, 1216, 1217, 1231})
            expectSymv<T>(uplo, stored<T>(uplo, n), {v});
}

/// With alpha 0 the result is beta y, whatever stands in A and x.
TYPED_TEST(Level2, AlphaOf0ReadsNeitherMatrixNorX)
{
    using T = TypeParam;
    const T alpha(0), beta = scalar<T>(0.6, -1.3);
    for (const int n : {40, 1210}) {
        Matrix<T> A(n, n), x(n, 1), y0 = Matrix<T>::random(n, 1, n, 3);
        A.each([](T& a) { a = notANumber<T>(); });
        x.each([](T& a) { a = notANumber<T>(); });
        const auto expectBetaY = [&](char letter, const auto& call) {
            SCOPED_TRACE(testing::Message() << letter << " " << n);
            auto y = y0;
            EXPECT_EQ(call(native(A.data()), native(x.data()), native(y.data())), tarnNoError);
            EXPECT_LE(ratio(y, {}, beta, y0), bound);
        };
        for (const char trans : {'N', 'T', 'C'})
            expectBetaY(trans, [&](auto* a, auto* px, auto* y) {
                return Routines<T>::gemv[onHost](trans, n, n, native(alpha), a, n, px, 1, native(beta), y, 1);
            });
        for (const char uplo : {'U', 'L'})
            expectBetaY(uplo, [&](auto* a, auto* px, auto* y) {
                return symvOrHemv<T>()[onHost](uplo, n, native(alpha), a, n, px, 1, native(beta), y, 1);
            });
    }
}

TYPED_TEST(Level2, SymvScalarsAndIncrements)
{
    using T = TypeParam;
    std::vector<Vectors<T>> all{{T(1), T(0), 2, 3}, {T(1), scalar<T>(0.6, -1.3), 3, 2}};
    for (const T alpha : {T(0), T(1), scalar<T>(-0.7, 0.4)})
        for (const T beta : {T(0), T(1), scalar<T>(0.6, -1.3)})
            all.push_back({alpha, beta, 1, 1});
    for (const int n : {64, 1200})
        for (const char uplo : {'u', 'L'})
            expectSymv<T>(uplo, stored<T>(uplo, n), all);
}

} // namespace
