// The modules that treat every element by itself: copies, fills, conjugation, sums, differences and conversions.
#include "kernels/fixture.h"
#include "lapack/kernels.h"

#include <cstdint>
#include <type_traits>

namespace {

using namespace test;
namespace kernel = tarn::kernel;

template <class T>
class Elements : public KernelTest<T>
{};
TYPED_TEST_SUITE(Elements, ElementTypes);

TYPED_TEST(Elements, MatricesAreCopiedWholeOrByTriangle)
{
    using T = TypeParam;
    for (const auto& [m, n] : shapes) {
        const auto A = Matrix<T>::random(m, n, m + 2, 7);
        const DeviceArray<T> a(A.elements());
        const auto copy = [&](T* b, int ldb) { kernel::CopyMatrix(A.m, A.n, b, ldb, a.data(), A.ld); };
        expectSame<T>(m, n, copy, [&](auto& B) { visit(B, [&](int i, int j, T& b) { b = A(i, j); }); });
        for (const char uplo : {'L', 'l', 'U', 'u', 'A', 'F', 'f'}) {
            SCOPED_TRACE(uplo);
            const bool lower = uplo == 'L' || uplo == 'l', upper = uplo == 'U' || uplo == 'u';
            const auto lacpy = [&](T* b, int ldb) { kernel::LACPY(uplo, A.m, A.n, a.data(), A.ld, b, ldb); };
            expectSame<T>(m, n, lacpy, [&](auto& B) {
                visit(B, [&](int i, int j, T& b) { b = (lower && j > i) || (upper && j < i) ? b : A(i, j); });
            });
        }
    }
}

TYPED_TEST(Elements, TrianglesAreCleared)
{
    using T = TypeParam;
    for (const auto& [m, n] : shapes)
        for (const char uplo : {'U', 'L', '?'})
            for (const char diag : {'U', 'Z', 'N'}) {
                SCOPED_TRACE(testing::Message() << uplo << diag);
                const bool upper = uplo == 'U', unit = diag != 'N';
                const auto outside = [&](int i, int j) { return upper ? i > j : j > i; };
                expectSame<T>(
                    m, n, [&, m = m, n = n](T* a, int lda) { kernel::MakeTriangular(uplo, diag, m, n, a, lda); },
                    [&](auto& A) {
                        visit(A, [&](int i, int j, T& x) { x = outside(i, j) ? T(0) : unit && i == j ? T(1) : x; });
                    });
                expectSame<T>(
                    m, n,
                    [&, m = m, n = n](T* a, int lda) {
                        kernel::SetTriangularMatrix<1>(upper, unit, m, n, a, lda, T(5));
                    },
                    [&](auto& A) {
                        visit(A, [&](int i, int j, T& x) { x = outside(i, j) ? T(1) : unit && i == j ? T(5) : x; });
                    });
            }
}

TYPED_TEST(Elements, MatricesAreFilled)
{
    using T = TypeParam;
    for (const auto& size : shapes) {
        const int m = size.first, n = size.second;
        const auto fill = [](T value) { return [value](auto& A) { A.each([&](T& x) { x = value; }); }; };
        expectSame<T>(
            m, n, [&](T* a, int lda) { kernel::SetMatrixZero(m, n, a, lda); }, fill(T(0)));
        expectSame<T>(
            m, n, [&](T* a, int lda) { kernel::SetMatrix<1>(m, n, a, lda); }, fill(T(1)));
        for (const char uplo : {'L', 'u', 'A', 'F'}) {
            SCOPED_TRACE(uplo);
            expectSame<T>(
                m, n, [&](T* a, int lda) { kernel::LASET(uplo, m, n, T(2), T(3), a, lda); },
                [&](auto& A) {
                    visit(A, [&](int i, int j, T& x) {
                        const bool filled = i > j ? uplo != 'u' : uplo != 'L';
                        x = i == j ? T(3) : filled ? T(2) : x;
                    });
                });
        }
    }
}

/// A vector of n elements inc apart as row 0 of a matrix: what lies between is padding.
template <class T>
Matrix<T> vectorOf(int n, int inc)
{
    return Matrix<T>::random(1, n, inc, unsigned(n + inc));
}

TYPED_TEST(Elements, VectorsAreCopiedFilledAndConjugated)
{
    using T = TypeParam;
    using R = tarn::Real<T>;
    for (const int n : {1, 17, 256, 257, 1000})
        for (const auto& [incX, incY] : {std::pair(1, 1), std::pair(3, 2)}) {
            SCOPED_TRACE(testing::Message() << n << " by " << incX << ", " << incY);
            auto source = vectorOf<T>(n, incX), expected = vectorOf<T>(n, incY), y = expected;
            const auto reals = vectorOf<R>(n, incX);
            const DeviceArray<T> x(source.elements()), copied(y.elements()), widened(y.elements());
            const DeviceArray<R> real(reals.elements());
            kernel::CopyVector(n, copied.data(), incY, x.data(), incX);
            download(y, copied);
            visit(expected, [&](int, int j, T& e) { e = source(0, j); });
            EXPECT_TRUE(identical(y, expected));

            kernel::CopyVectorRealToComplex(n, widened.data(), incY, real.data(), incX);
            download(y, widened);
            visit(expected, [&](int, int j, T& e) {
                if constexpr (tarn::isComplex<T>)
                    e = T(reals(0, j), R(0));
                else
                    e = reals(0, j);
            });
            EXPECT_TRUE(identical(y, expected));

            kernel::ConjugateVector(n, x.data(), incX);
            expected = source;
            expected.each([](T& e) { e = conjugate(e); });
            download(source, x);
            EXPECT_TRUE(identical(source, expected));

            for (const int value : {0, 1}) {
                if (value == 0)
                    kernel::SetVectorZero(n, x.data(), incX);
                else
                    kernel::SetVector<1>(n, x.data(), incX);
                expected.each([&](T& e) { e = T(value); });
                download(source, x);
                EXPECT_TRUE(identical(source, expected));
            }
        }
}

TYPED_TEST(Elements, SinglesAreCopiedAndSet)
{
    using T = TypeParam;
    using R = tarn::Real<T>;
    Random<T> random;
    const T first = random(), second = random();
    DeviceArray<T> x(std::vector<T>{first, second});
    kernel::CopySingle(x.data(), x.data() + 1);
    EXPECT_EQ(x.download(), (std::vector<T>{second, second}));
    kernel::SetOne(x.data());
    EXPECT_EQ(x.download(), (std::vector<T>{T(1), second}));
    kernel::SetSingle<0>(x.data() + 1);
    EXPECT_EQ(x.download(), (std::vector<T>{T(1), T(0)}));

    const DeviceArray<R> real(std::vector<R>{R(7)});
    x.upload({first, second});
    kernel::CopyRealToComplex(x.data(), real.data());
    EXPECT_EQ(x.download(), (std::vector<T>{T(7), second}));
    if constexpr (tarn::isComplex<T>) {
        kernel::CopyComplexToReal(real.data(), x.data() + 1);
        EXPECT_EQ(real.download(), std::vector<R>{second.real()});
    }
}

TYPED_TEST(Elements, PartsOfMatricesAreConjugated)
{
    using T = TypeParam;
    for (const auto& size : shapes) {
        const int m = size.first, n = size.second;
        if constexpr (tarn::isComplex<T>)
            expectSame<T>(
                m, n, [&](T* a, int lda) { kernel::ConjugateMatrix(m, n, a, lda); },
                [](auto& A) { A.each([](T& x) { x = conjugate(x); }); });
        const auto expectPart = [&](auto upper, auto withDiagonal) {
            expectSame<T>(
                m, n,
                [&](T* a, int lda) {
                    kernel::ConjugateMatrixTriangular<decltype(upper)::value, decltype(withDiagonal)::value>(m, n, a,
                                                                                                             lda);
                },
                [&](auto& A) {
                    visit(A, [&](int i, int j, T& x) {
                        if (i == j ? withDiagonal() : upper() ? i < j : j < i)
                            x = conjugate(x);
                    });
                });
        };
        expectPart(std::true_type(), std::true_type());
        expectPart(std::true_type(), std::false_type());
        expectPart(std::false_type(), std::true_type());
        expectPart(std::false_type(), std::false_type());
    }
}

/// A(i, j), or A(j, i) of a matrix that is stored transposed.
template <class T, class M>
auto& at(M& A, bool transposed, int i, int j)
{
    return transposed ? A(j, i) : A(i, j);
}

template <class T>
T minus(T a, T b)
{
    if constexpr (tarn::isComplex<T>)
        return T(a.real() - b.real(), a.imag() - b.imag());
    else
        return a - b;
}

TYPED_TEST(Elements, MatricesAreSubtractedInEitherForm)
{
    using T = TypeParam;
    for (const auto& size : shapes)
        for (const char transa : {'N', 'T', 'C'})
            for (const char transb : {'N', 'T', 'C'}) {
                SCOPED_TRACE(testing::Message() << transa << transb);
                const int m = size.first, n = size.second;
                const bool ta = transa != 'N', tb = transb != 'N';
                const auto B = Matrix<T>::random(tb ? n : m, tb ? m : n, (tb ? n : m) + 1, 9);
                const DeviceArray<T> b(B.elements());
                expectSame<T>(
                    ta ? n : m, ta ? m : n,
                    [&](T* a, int lda) { kernel::SubtractMatrix(transa, transb, m, n, a, lda, b.data(), B.ld); },
                    [&](auto& A) {
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < m; ++i) {
                                T& x = at<T>(A, ta, i, j);
                                const T y = at<T>(B, tb, i, j);
                                x = minus(ta ? conjugate(x) : x, tb ? conjugate(y) : y);
                            }
                    });
            }
}

TYPED_TEST(Elements, ScaledMatricesAreAddedInEitherForm)
{
    using T = TypeParam;
    using R = tarn::Real<T>;
    const R alpha = R(0.5), beta = R(-2); // products are exact, fused or not
    for (const auto& size : shapes)
        for (const char transa : {'N', 'T'})
            for (const char transb : {'N', 'T'}) {
                SCOPED_TRACE(testing::Message() << transa << transb);
                const int m = size.first, n = size.second;
                const bool ta = transa != 'N', tb = transb != 'N';
                const auto A = Matrix<T>::random(ta ? n : m, ta ? m : n, (ta ? n : m) + 2, 8);
                const auto B = Matrix<T>::random(tb ? n : m, tb ? m : n, (tb ? n : m) + 1, 9);
                const DeviceArray<T> a(A.elements()), b(B.elements());
                expectSame<T>(
                    ta ? n : m, ta ? m : n,
                    [&](T* c, int ldc) {
                        kernel::MADD(transa, transb, m, n, alpha, a.data(), A.ld, beta, b.data(), B.ld, c, ldc);
                    },
                    [&](auto& C) {
                        for (int j = 0; j < n; ++j)
                            for (int i = 0; i < m; ++i) {
                                const T x = at<T>(A, ta, i, j), y = at<T>(B, tb, i, j);
                                if constexpr (tarn::isComplex<T>)
                                    at<T>(C, ta, i, j) =
                                        T(alpha * x.real() + beta * y.real(), alpha * x.imag() + beta * y.imag());
                                else
                                    at<T>(C, ta, i, j) = alpha * x + beta * y;
                            }
                    });
            }
}

template <class R>
using OtherReal = std::conditional_t<std::is_same_v<R, float>, double, float>;

template <class T>
using OtherPrecision = std::conditional_t<tarn::isComplex<T>, tarn::Complex<OtherReal<tarn::Real<T>>>, OtherReal<T>>;

template <class Dst, class Src>
Dst converted(Src x)
{
    if constexpr (tarn::isComplex<Src>)
        return Dst(tarn::Real<Dst>(x.real()), tarn::Real<Dst>(x.imag()));
    else
        return Dst(x);
}

TYPED_TEST(Elements, PrecisionIsConverted)
{
    using Src = TypeParam;
    using Dst = OtherPrecision<Src>;
    const DeviceArray<int> flag(std::vector<int>{0});
    for (const auto& [m, n] : shapes) {
        const auto A = Matrix<Src>::random(m, n, m + 2, 3);
        const DeviceArray<Src> a(A.elements());
        expectSame<Dst>(
            m, n, [&](Dst* b, int ldb) { kernel::PrecisionConvert(A.m, A.n, a.data(), A.ld, b, ldb, flag.data()); },
            [&](auto& B) { visit(B, [&](int i, int j, Dst& x) { x = converted<Dst>(A(i, j)); }); });
    }
    for (const int n : {1, 16, 33, 257})
        for (const bool upper : {false, true}) {
            const auto A = Matrix<Src>::random(n, n, n + 2, 3);
            const DeviceArray<Src> a(A.elements());
            expectSame<Dst>(
                n, n,
                [&](Dst* b, int ldb) {
                    kernel::PrecisionConvertTriangular(upper, n, a.data(), A.ld, b, ldb, flag.data());
                },
                [&](auto& B) {
                    visit(B,
                          [&](int i, int j, Dst& x) { x = (upper ? i <= j : j <= i) ? converted<Dst>(A(i, j)) : x; });
                });
        }
    EXPECT_EQ(flag.download()[0], 0);
}

/// The flag after the conversion of a 20 by 20 matrix of ones with x in place (i, j): of all, of the lower triangle.
template <class T>
std::pair<int, int> overflowOf(T x, int i, int j)
{
    Matrix<T> A(20, 20);
    A.each([](T& e) { e = T(1); });
    A(i, j) = x;
    const DeviceArray<T> a(A.elements());
    const DeviceArray<OtherPrecision<T>> b(20 * 20);
    const DeviceArray<int> flags(std::vector<int>{0, 0});
    kernel::PrecisionConvert(20, 20, a.data(), 20, b.data(), 20, flags.data());
    kernel::PrecisionConvertTriangular(false, 20, a.data(), 20, b.data(), 20, flags.data() + 1);
    return {flags.download()[0], flags.download()[1]};
}

TEST(Precision, OverflowIsReportedWhereItIsConverted)
{
    using Flags = std::pair<int, int>;
    using Z = tarn::Complex<double>;
    for (const double large : {1e300, -1e300, 3.5e38, double(INFINITY), double(NAN)}) {
        EXPECT_EQ(overflowOf(large, 19, 3), Flags(1, 1)) << large;
        EXPECT_EQ(overflowOf(large, 3, 19), Flags(1, 0)) << large;
        EXPECT_EQ(overflowOf(Z(large, 0), 17, 17), Flags(1, 1)) << large;
        EXPECT_EQ(overflowOf(Z(0, large), 3, 19), Flags(1, 0)) << large;
    }
    EXPECT_EQ(overflowOf(1e30, 5, 5), Flags(0, 0));
    EXPECT_EQ(overflowOf(Z(1e30, -3.4e38), 5, 5), Flags(0, 0));
    EXPECT_EQ(overflowOf(float(INFINITY), 5, 5), Flags(0, 0)) << "widening does not test";

    // The value arrives, and a flag that is set stays set.
    DeviceArray<double> a(std::vector<double>{1e300});
    const DeviceArray<float> b(1);
    const DeviceArray<int> flag(std::vector<int>{0});
    kernel::PrecisionConvert(1, 1, a.data(), 1, b.data(), 1, flag.data());
    EXPECT_EQ(b.download()[0], INFINITY);
    a.upload({1});
    kernel::PrecisionConvert(1, 1, a.data(), 1, b.data(), 1, flag.data());
    EXPECT_EQ(b.download()[0], 1);
    EXPECT_EQ(flag.download()[0], 1);
}

TYPED_TEST(Elements, ArgumentsAreCheckedInOrder)
{
    using T = TypeParam;
    const DeviceArray<T> array(4);
    T* const a = array.data();
    T* const null = nullptr;
    EXPECT_EQ(infoOf([&] { kernel::LACPY('X', -1, -1, null, -1, null, -1); }), -1);
    EXPECT_EQ(infoOf([&] { kernel::LACPY('l', -1, -1, null, -1, null, -1); }), -2);
    EXPECT_EQ(infoOf([&] { kernel::LACPY('U', 0, -1, null, -1, null, -1); }), -3);
    EXPECT_EQ(infoOf([&] { kernel::LACPY('U', 0, 5, null, -1, null, -1); }), 1);
    EXPECT_EQ(infoOf([&] { kernel::LACPY('A', 2, 2, null, 1, null, 1); }), -4);
    EXPECT_EQ(infoOf([&] { kernel::LACPY('A', 2, 2, a, 1, null, 1); }), -5);
    EXPECT_EQ(infoOf([&] { kernel::LACPY('A', 2, 2, a, 2, null, 1); }), -6);
    EXPECT_EQ(infoOf([&] { kernel::LACPY('A', 2, 2, a, 2, a, 1); }), -7);

    EXPECT_EQ(infoOf([&] { kernel::LASET('N', -1, -1, T(0), T(0), null, 0); }), -1);
    EXPECT_EQ(infoOf([&] { kernel::LASET('f', -1, -1, T(0), T(0), null, 0); }), -2);
    EXPECT_EQ(infoOf([&] { kernel::LASET('L', 0, -1, T(0), T(0), null, 0); }), -3);
    EXPECT_EQ(infoOf([&] { kernel::LASET('L', 5, 0, T(0), T(0), null, 0); }), 1);
    EXPECT_EQ(infoOf([&] { kernel::LASET('L', 2, 2, T(0), T(0), null, 1); }), -6);
    EXPECT_EQ(infoOf([&] { kernel::LASET('L', 2, 2, T(0), T(0), a, 1); }), -7);

    if constexpr (tarn::isComplex<T>) {
        EXPECT_EQ(infoOf([&] { kernel::ConjugateMatrix(-1, -1, null, -2); }), -1);
        EXPECT_EQ(infoOf([&] { kernel::ConjugateMatrix(2, -1, null, 1); }), -2);
        EXPECT_EQ(infoOf([&] { kernel::ConjugateMatrix(2, 0, null, 1); }), -4);
        EXPECT_EQ(infoOf([&] { kernel::ConjugateMatrix(2, 0, null, 2); }), 1);
        EXPECT_EQ(infoOf([&] { kernel::ConjugateMatrix(2, 2, null, 2); }), -3);
    }
}

/// Without controls of the device this still proves that nothing is written: no launch may fail either.
TYPED_TEST(Elements, EmptyProblemsLaunchNothing)
{
    using T = TypeParam;
    using R = tarn::Real<T>;
    const DeviceArray<T> array(std::vector<T>(4, T(9)));
    const DeviceArray<R> reals(4);
    T* const a = array.data();
    for (const int bad : {0, -1}) {
        kernel::CopyMatrix(bad, 2, a, 2, a, 2);
        kernel::CopyMatrix(2, bad, a, 2, a, 2);
        kernel::MakeTriangular('U', 'U', bad, 2, a, 2);
        kernel::SetVectorZero(bad, a, 1);
        kernel::SetVectorZero(4, a, bad);
        kernel::SetMatrixZero(2, bad, a, 2);
        kernel::SetMatrixZero(2, 2, a, bad);
        kernel::SubtractMatrix('N', 'C', bad, 2, a, 2, a, 2);
        kernel::CopyVectorRealToComplex(bad, a, 1, reals.data(), 1);
        kernel::CopyVectorRealToComplex(2, a, bad, reals.data(), 1);
        kernel::CopyVectorRealToComplex(2, a, 1, reals.data(), bad);
    }
    EXPECT_EQ(array.download(), std::vector<T>(4, T(9)));
}

} // namespace
