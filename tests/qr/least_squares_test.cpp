// gels and gglse: backward errors in both forms, what stands below the solution, rank deficiency, empty problems.
#include "qr/factors.h"
#include "qr/ratios.h"
#include "support/forms.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

namespace {

using namespace test;
using C = tarn::Complex<float>;

template <class T>
class LeastSquares : public BlockedTest<T>
{};

using Types = testing::Types<float, C>;
TYPED_TEST_SUITE(LeastSquares, Types);

template <class T>
tarnStatus gels(Form form, char trans, Matrix<T>& A, Matrix<T>& B)
{
    const auto routine = form == Form::host ? Api<T>::gels : Api<T>::deviceGels;
    return callIn(
        form, [&](auto* a, auto* b) { return routine(trans, A.m, A.n, B.n, a, A.ld, b, B.ld); }, A.elements(),
        B.elements());
}

/// 2-norm of rows first, ... of column j.
template <class T>
double normBelow(const Matrix<T>& A, int first, int j)
{
    double sum = 0;
    for (int i = first; i < A.m; ++i)
        sum += std::norm(wide(A(i, j)));
    return std::sqrt(sum);
}

template <class T>
void expectSolution(char trans, int m, int n, int nrhs)
{
    const auto A = Matrix<T>::random(m, n, m + 2, m + n), B = Matrix<T>::random(std::max(m, n), nrhs, m + n, nrhs);
    const bool plain = std::toupper(trans) == 'N';
    const int rows = plain ? m : n, unknowns = plain ? n : m;
    for (const Form form : {Form::host, Form::device}) {
        SCOPED_TRACE(testing::Message() << trans << ' ' << m << " x " << n << ", " << nrhs
                                        << (form == Form::host ? " host" : " device"));
        auto factors = A, X = B;
        ASSERT_EQ(gels(form, trans, factors, X), tarnNoError);
        EXPECT_LT(gelsRatio(plain ? 'N' : 'C', A, B, X), rows >= unknowns ? 10 : 30);
        EXPECT_TRUE(factors.paddingIntact() && X.paddingIntact());
        if (rows <= unknowns)
            continue;
        // The rows below X have the norm of the residual.
        WideMatrix a = plain ? widened(A) : adjoint(widened(A)), x = rowsOf(widened(X), 0, unknowns),
                   R = rowsOf(widened(B), 0, rows);
        multiplyAdd(-1, a, x, 1, R);
        auto equations = rowsOf(widened(X), 0, rows);
        for (int j = 0; j < nrhs; ++j)
            EXPECT_NEAR(normBelow(equations, unknowns, j), normBelow(R, 0, j), 1e-4 * normBelow(R, 0, j));
    }
}

TYPED_TEST(LeastSquares, SolvesOverdeterminedAndUnderdetermined)
{
    const int nb = this->block;
    const std::tuple<int, int, int> shapes[] = {
        {1, 1, 1},           {300, 1, 2}, {nb + 40, nb - 1, 3}, {nb + 50, nb + 1, 1},
        {2 * nb, 2 * nb, 5}, {700, 5, 9}, {600, nb, 600},       {3 * nb + 5, 2 * nb + 1, 3}};
    for (const auto& [m, n, nrhs] : shapes)
        for (const char trans : {'N', 'C'}) {
            expectSolution<TypeParam>(trans, m, n, nrhs);
            expectSolution<TypeParam>(trans, n, m, nrhs);
        }
    for (const char trans : {'n', 'c', 't', 'T'})
        expectSolution<TypeParam>(trans, nb + 9, nb + 1, 2);
}

/// Zero column (tall A) or row (wide A) j gives an exact zero at j of the triangular factor's diagonal.
TYPED_TEST(LeastSquares, RankDeficientMatrixGivesPositionAndFactors)
{
    using T = TypeParam;
    const int k = 2 * this->block + 1, p = k + 30;
    for (const int j : {3, this->block + 2, k})
        for (const bool tall : {true, false})
            for (const char trans : {'N', 'C'}) {
                SCOPED_TRACE(testing::Message() << j << (tall ? " tall " : " wide ") << trans);
                auto A = Matrix<T>::random(tall ? p : k, tall ? k : p, p + 1, j), B = Matrix<T>::random(p, 2, p, j);
                for (int i = 0; i < p; ++i)
                    A(tall ? i : j - 1, tall ? j - 1 : i) = T(0);
                auto factors = A, X = B;
                EXPECT_EQ(gels(j == 3 ? Form::device : Form::host, trans, factors, X), tarnDataError);
                EXPECT_EQ(tarnGetErrorInfo(), j);
                EXPECT_EQ(tarnGetLastStatus(), tarnDataError);
                EXPECT_EQ(factors(j - 1, j - 1), T(0));
                EXPECT_FALSE(identical(factors, A));
                // Where Q comes before the triangular solve, it has been applied: a rotation of B.
                if (tall == (trans == 'N')) {
                    EXPECT_FALSE(identical(X, B));
                    EXPECT_NEAR(normBelow(X, 0, 1), normBelow(B, 0, 1), 1e-4 * normBelow(B, 0, 1));
                } else {
                    EXPECT_TRUE(identical(X, B));
                }
            }
}

TYPED_TEST(LeastSquares, EmptyProblems)
{
    using T = TypeParam;
    for (const Form form : {Form::host, Form::device}) {
        for (const auto& [m, n] : {std::pair{0, 5}, {5, 0}}) {
            Matrix<T> A(m, n, std::max(1, m));
            auto B = Matrix<T>::random(5, 2, 7);
            EXPECT_EQ(gels(form, 'N', A, B), tarnNoError);
            EXPECT_EQ(norm1(B), 0);
            EXPECT_TRUE(B.paddingIntact());
        }
        const auto A = Matrix<T>::random(5, 3, 5);
        auto same = A;
        Matrix<T> B(5, 0);
        EXPECT_EQ(gels(form, 'N', same, B), tarnNoError);
        EXPECT_TRUE(identical(same, A));
        const auto routine = form == Form::host ? Api<T>::gels : Api<T>::deviceGels;
        EXPECT_EQ(routine('N', 2, 2, 0, nullptr, 2, nullptr, 2), tarnNoError);
    }
    for (const auto routine : {Api<T>::gels, Api<T>::deviceGels})
        EXPECT_EQ(routine('N', 0, 0, 3, nullptr, 1, nullptr, 1), tarnNoError);
    for (const auto routine : {Api<T>::gglse, Api<T>::deviceGglse})
        EXPECT_EQ(routine(5, 0, 0, nullptr, 5, nullptr, 1, nullptr, nullptr, nullptr), tarnNoError);
}

/// A problem of m equations and p constraints on n unknowns. Without constraints their arrays are empty: null.
template <class T>
struct Constrained
{
    Constrained(int m, int n, int p)
        : A(Matrix<T>::random(m, n, m + 3, m)), B(Matrix<T>::random(p, n, p > 0 ? p + 2 : 0, p + 50)),
          c(Matrix<T>::random(m, 1, m + 1, 3)), d(Matrix<T>::random(p, 1, p, 4)), x(n, 1)
    {}

    tarnStatus solve(Form form)
    {
        const auto routine = form == Form::host ? Api<T>::gglse : Api<T>::deviceGglse;
        return callIn(
            form,
            [&](auto* a, auto* b, auto* c1, auto* d1, auto* x1) {
                return routine(A.m, A.n, B.m, a, A.ld, b, std::max(1, B.ld), c1, d1, x1);
            },
            A.elements(), B.elements(), c.elements(), d.elements(), x.elements());
    }

    Matrix<T> A, B, c, d, x;
};

TYPED_TEST(LeastSquares, SolvesWithConstraints)
{
    using T = TypeParam;
    const int nb = this->block;
    const std::tuple<int, int, int> shapes[] = {{2 * nb + 10, nb + 5, 7},     // m >= n, everything in one panel but A
                                                {3 * nb, 2 * nb + 1, nb + 1}, // blocks everywhere
                                                {50, nb + 60, nb + 40},       // m < n
                                                {nb + 3, 3 * nb, 2 * nb - 3}, // m < n and m + p = n
                                                {2 * nb, nb + 1, 0},          // no constraints
                                                {nb, nb + 2, nb + 2},         // no freedom
                                                {0, nb + 2, nb + 2},          // nothing but constraints
                                                {1, 1, 0},
                                                {1, 1, 1},
                                                {0, 1, 1},
                                                {40, 2, 1},
                                                {700, 300, 290}};
    for (const auto& [m, n, p] : shapes)
        for (const Form form : {Form::host, Form::device}) {
            SCOPED_TRACE(testing::Message()
                         << m << ", " << n << ", " << p << (form == Form::host ? " host" : " device"));
            const Constrained<T> before(m, n, p);
            Constrained<T> after = before;
            ASSERT_EQ(after.solve(form), tarnNoError);
            EXPECT_LT(gglseRatio(before.A, before.B, before.c, before.d, after.x), 10);
            EXPECT_TRUE(m < 2 || !identical(after.A, before.A)) << "the factors reach the caller";
            EXPECT_TRUE(p < 2 || !identical(after.B, before.B));
            EXPECT_TRUE(after.A.paddingIntact() && after.B.paddingIntact());
            EXPECT_TRUE(after.c.paddingIntact());
            if (m + p <= n)
                continue;
            // The last elements of c have the norm of the residual.
            WideMatrix a = widened(before.A), x = widened(after.x), r = widened(before.c);
            multiplyAdd(-1, a, x, 1, r);
            EXPECT_NEAR(normBelow(after.c, n - p, 0), normBelow(r, 0, 0), 1e-3 * normBelow(r, 0, 0));
        }
}

TYPED_TEST(LeastSquares, DependentConstraintsAndUndeterminedUnknowns)
{
    using T = TypeParam;
    const int n = 2 * this->block + 9, p = this->block + 2, m = n + 4;
    softdevSetPoison(true);
    for (const Form form : {Form::host, Form::device})
        for (const bool dependent : {true, false}) {
            // B = (0 I) makes Q a diagonal matrix, so that the zero column of A stays one.
            Constrained<T> problem(m, n, p);
            problem.B.each([](T& element) { element = T(0); });
            for (int i = 0; i < p; ++i)
                problem.B(i, n - p + i) = T(1);
            std::fill_n(&problem.A(0, this->block), m, T(0));
            if (dependent)
                problem.B(this->block, n - p + this->block) = T(0);
            EXPECT_EQ(problem.solve(form), tarnDataError);
            EXPECT_EQ(tarnGetErrorInfo(), dependent ? 1 : 2);
            EXPECT_EQ(tarnGetLastStatus(), tarnDataError);
            EXPECT_TRUE(std::isfinite(norm1(problem.x))) << "nothing that the device's memory held before";
            EXPECT_TRUE(problem.A.paddingIntact() && problem.B.paddingIntact());
        }
    softdevSetPoison(false);
}

} // namespace
