// Double-precision solutions by factors in single precision: backward errors beside those of the CPU's double-precision
// solver, the way that is taken, and what is left alone.
#include "refinement.h"
#include "support/api.h"
#include "support/device.h"
#include "support/matrix.h"

#include "tarn_refine.h"

#include <gtest/gtest.h>

namespace {

using namespace test;
using Z = tarn::Complex<double>;

/// A vector of norm2 sqrt(2): I - v v^H is a reflection.
template <class W>
std::vector<W> reflector(int n, unsigned seed)
{
    Random<W> next(seed);
    std::vector<W> v(n);
    double square = 0;
    for (W& x : v) {
        x = next();
        square += std::norm(wide(x));
    }
    for (W& x : v)
        x = std::sqrt(2 / square) * x;
    return v;
}

/// Reflections of a diagonal from 1 down to 1 / condition: a matrix of that condition in the 2-norm.
template <class W>
Matrix<W> matrixOfCondition(int n, double condition, int ld)
{
    const auto u = reflector<W>(n, 3), v = reflector<W>(n, 4);
    Matrix<W> a(n, n, ld);
    std::vector<double> d(n);
    std::complex<double> inner = 0; // u^H D v
    for (int i = 0; i < n; ++i) {
        d[i] = n == 1 ? 1 : std::pow(condition, -double(i) / (n - 1));
        inner += std::conj(wide(u[i])) * d[i] * wide(v[i]);
    }
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < n; ++i) {
            const auto ui = wide(u[i]), vj = std::conj(wide(v[j]));
            const auto x =
                (i == j ? d[i] : 0) - ui * std::conj(wide(u[j])) * d[j] - d[i] * wide(v[i]) * vj + ui * inner * vj;
            if constexpr (tarn::isComplex<W>)
                a(i, j) = W(x.real(), x.imag());
            else
                a(i, j) = x.real();
        }
    return a;
}

template <class W>
std::complex<double> element(const Matrix<W>& a, char trans, int i, int j)
{
    const auto x = trans == 'N' ? wide(a(i, j)) : wide(a(j, i));
    return trans == 'C' ? std::conj(x) : x;
}

/// norm_inf(b - op(A) x) / (norm_inf(op(A)) norm_inf(x) eps), the worst column's.
template <class W>
double backwardError(char trans, const Matrix<W>& a, const Matrix<W>& b, const Matrix<W>& x)
{
    double normA = 0, worst = 0;
    for (int i = 0; i < a.n; ++i) {
        double sum = 0;
        for (int j = 0; j < a.n; ++j)
            sum += std::abs(element(a, trans, i, j));
        normA = std::max(normA, sum);
    }
    for (int k = 0; k < b.n; ++k) {
        double residual = 0, normX = 0;
        for (int i = 0; i < a.n; ++i) {
            std::complex<long double> sum = wide(b(i, k));
            for (int j = 0; j < a.n; ++j)
                sum -= std::complex<long double>(element(a, trans, i, j)) * std::complex<long double>(wide(x(j, k)));
            residual = std::max(residual, double(std::abs(sum)));
            normX = std::max(normX, std::abs(wide(x(i, k))));
        }
        if (!(residual <= worst * normA * normX * eps<W>))
            worst = residual / (normA * normX * eps<W>);
    }
    return worst;
}

tarnStatus gesv(char trans, const Matrix<double>& a, const Matrix<double>& b, Matrix<double>& x, tarnRefinement& how)
{
    return tarnDsgesv(trans, a.n, b.n, a.elements().data(), a.ld, b.elements().data(), b.ld, x.data(), x.ld, &how);
}

tarnStatus gesv(char trans, const Matrix<Z>& a, const Matrix<Z>& b, Matrix<Z>& x, tarnRefinement& how)
{
    const auto c = [](const Matrix<Z>& m) { return reinterpret_cast<const tarnDoubleComplex*>(m.elements().data()); };
    return tarnZcgesv(trans, a.n, b.n, c(a), a.ld, c(b), b.ld, reinterpret_cast<tarnDoubleComplex*>(x.data()), x.ld,
                      &how);
}

/// The CPU's solution in double precision.
template <class W>
Matrix<W> reference(char trans, Matrix<W> a, const Matrix<W>& b)
{
    using E = std::conditional_t<tarn::isComplex<W>, std::complex<double>, double>;
    Matrix<W> x = b;
    std::vector<int> pivots(a.n);
    int info = 0;
    auto* pa = reinterpret_cast<E*>(a.data());
    auto* px = reinterpret_cast<E*>(x.data());
    using tarn::tool::select;
    select<E>(nullptr, &tarn::tool::dgetrf_, nullptr, &tarn::tool::zgetrf_)(&a.n, &a.n, pa, &a.ld, pivots.data(),
                                                                            &info);
    select<E>(nullptr, &tarn::tool::dgetrs_, nullptr, &tarn::tool::zgetrs_)(&trans, &a.n, &b.n, pa, &a.ld,
                                                                            pivots.data(), px, &x.ld, &info, 1);
    return x;
}

template <class W>
class Refine : public testing::Test
{
protected:
    const Initialized library;
};

using Types = testing::Types<double, Z>;
TYPED_TEST_SUITE(Refine, Types);

TYPED_TEST(Refine, ReachesTheBackwardErrorOfADoublePrecisionSolve)
{
    using W = TypeParam;
    const auto check = [](int n, int nrhs, char trans, double condition, int iterLeast, int iterMost) {
        SCOPED_TRACE(testing::Message() << "n " << n << ", nrhs " << nrhs << ", " << trans << ", condition "
                                        << condition);
        const auto a = matrixOfCondition<W>(n, condition, n + 3);
        const auto b = Matrix<W>::random(n, nrhs, n + 1);
        auto keptA = a, keptB = b;
        Matrix<W> x(n, nrhs, n + 2);
        tarnRefinement how{};
        ASSERT_EQ(gesv(trans, a, b, x, how), tarnNoError);
        // That x is rounded can alone leave an error of up to a half: a twentieth is allowed for luck.
        EXPECT_LE(backwardError(trans, a, b, x), 2 * backwardError(trans, a, b, reference(trans, a, b)) + 0.05);
        EXPECT_GE(how.iter, iterLeast);
        EXPECT_LE(how.iter, iterMost);
        if (n > 1 && condition < 1e14) {
            EXPECT_GT(how.rcond, 1 / (condition * n)) << "between the condition in the 2-norm and n times that";
            EXPECT_LT(how.rcond, 2 * n / condition);
        }
        EXPECT_TRUE(identical(a, keptA) && identical(b, keptB));
        EXPECT_TRUE(x.paddingIntact());
    };
    for (const char trans : {'N', 'T', 'C'}) {
        check(300, 1, trans, 10, 1, 4);
        check(300, 3, trans, 1e4, 2, 6);
    }
    check(257, 1, 'N', 1e6, 2, 30);
    check(300, 2, 'N', 1e10, tarnIterNotConverged, tarnIterNotConverged);
    check(300, 1, 'N', 1e17, tarnIterNotConverged, tarnIterNotConverged);
    check(1, 1, 'N', 1, tarnIterSmall, tarnIterSmall);
    check(255, 2, 'T', 1e4, tarnIterSmall, tarnIterSmall);
}

TYPED_TEST(Refine, ServesEveryRangeOfDoublePrecision)
{
    using W = TypeParam;
    const int n = 260;
    const auto solve = [&](double matrixSize, double rhsSize) {
        auto a = matrixOfCondition<W>(n, 100, n);
        auto b = Matrix<W>::random(n, 1, n);
        a.each([&](W& x) { x = matrixSize * x; });
        b.each([&](W& x) { x = rhsSize * x; });
        Matrix<W> x(n, 1);
        tarnRefinement how{};
        EXPECT_EQ(gesv('N', a, b, x, how), tarnNoError);
        EXPECT_GT(how.rcond, 1e-5) << matrixSize;
        const auto y = reference('N', a, b);
        for (int i = 0; i < n; ++i)
            EXPECT_NEAR(std::abs(wide(x(i, 0)) / wide(y(i, 0))), 1, 1e-9);
        return how.iter;
    };
    EXPECT_GT(solve(1, 1e-200), 0);
    EXPECT_GT(solve(1, 1e200), 0);
    EXPECT_EQ(solve(1e180, 1e150), tarnIterRange);
    EXPECT_EQ(solve(1e-180, 1e-150), tarnIterSingular) << "all of it is zero in single precision";
}

TYPED_TEST(Refine, TakesManyColumnsToTheDevice)
{
    using W = TypeParam;
    using E = std::conditional_t<tarn::isComplex<W>, std::complex<double>, double>;
    using T = tarn::refine::Narrow<E>;
    const int n = 40, nrhs = tarn::refine::manyColumns + 1;
    const auto a = matrixOfCondition<W>(n, 100, n);
    const auto b = Matrix<W>::random(n, nrhs, n);
    for (const char trans : {'N', 'T', 'C'}) {
        Matrix<W> x(n, nrhs);
        const tarn::refine::System<E> system{trans, n,
                                             nrhs,  reinterpret_cast<const E*>(a.elements().data()),
                                             n,     reinterpret_cast<const E*>(b.elements().data()),
                                             n,     reinterpret_cast<E*>(x.data()),
                                             n};
        tarn::refine::Rounded<E> lu(system);
        std::vector<int> pivots(n);
        ASSERT_EQ(tarn::tool::call(tarn::tool::select<T>(&tarnSgetrf, nullptr, &tarnCgetrf, nullptr), n, n,
                                   lu.values.data(), n, pivots.data()),
                  tarnNoError);
        int iter = 0;
        ASSERT_EQ(tarn::refine::Refinement<E>(system, lu.values.data(), pivots.data(), lu.normInf).run(iter),
                  tarnNoError);
        EXPECT_GT(iter, 0);
        EXPECT_LT(backwardError(trans, a, b, x), 1) << trans;
    }
}

TEST(RefineStatus, NamesWhatIsWrong)
{
    std::vector<double> a(300 * 300), b(300), x(300);
    tarnRefinement how{};
    EXPECT_EQ(tarnDsgesv('N', 1, 1, a.data(), 1, b.data(), 1, x.data(), 1, &how), tarnNotInitialized);

    const Initialized library;
    const double *pa = a.data(), *pb = b.data();
    double* px = x.data();
    const auto wrong = [](tarnStatus status) { return status == tarnArgumentError ? tarnGetErrorInfo() : 1; };
    EXPECT_EQ(wrong(tarnDsgesv('X', 2, 1, pa, 2, pb, 2, px, 2, &how)), -1);
    EXPECT_EQ(wrong(tarnDsgesv('N', -1, 1, pa, 2, pb, 2, px, 2, &how)), -2);
    EXPECT_EQ(wrong(tarnDsgesv('N', 2, -1, pa, 2, pb, 2, px, 2, &how)), -3);
    EXPECT_EQ(wrong(tarnDsgesv('N', 2, 1, nullptr, 2, pb, 2, px, 2, &how)), -4);
    EXPECT_EQ(wrong(tarnDsgesv('N', 2, 1, pa, 1, pb, 2, px, 2, &how)), -5);
    EXPECT_EQ(wrong(tarnDsgesv('N', 2, 1, pa, 2, nullptr, 2, px, 2, &how)), -6);
    EXPECT_EQ(wrong(tarnDsgesv('N', 2, 1, pa, 2, pb, 1, px, 2, &how)), -7);
    EXPECT_EQ(wrong(tarnDsgesv('N', 2, 1, pa, 2, pb, 2, nullptr, 2, &how)), -8);
    EXPECT_EQ(wrong(tarnDsgesv('N', 2, 1, pa, 2, pb, 2, px, 1, &how)), -9);

    // Zero from pivot 1 and from pivot 300 on, and nothing at all.
    EXPECT_EQ(tarnDsgesv('N', 300, 1, pa, 300, pb, 300, px, 300, &how), tarnDataError);
    EXPECT_EQ(tarnGetErrorInfo(), 1);
    EXPECT_EQ(how.rcond, 0);
    for (int i = 0; i < 299; ++i)
        a[i * 301] = 1;
    EXPECT_EQ(tarnDsgesv('N', 300, 1, pa, 300, pb, 300, px, 300, nullptr), tarnDataError);
    EXPECT_EQ(tarnGetErrorInfo(), 300);
    EXPECT_EQ(tarnDsgesv('N', 0, 0, nullptr, 1, nullptr, 1, nullptr, 1, &how), tarnNoError);
    EXPECT_EQ(tarnGetErrorInfo(), 0);
    EXPECT_EQ(how.rcond, 1);
}

} // namespace
