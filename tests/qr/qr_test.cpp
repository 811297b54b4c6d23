// geqrf: backward errors around every edge of the algorithm, in both forms, and the checks of all arguments.
#include "qr/factors.h"
#include "support/forms.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

namespace {

using namespace test;
using C = tarn::Complex<float>;

template <class T>
class Qr : public BlockedTest<T>
{};

using Types = testing::Types<float, C>;
TYPED_TEST_SUITE(Qr, Types);

template <class T>
tarnStatus geqrf(Form form, Matrix<T>& A, std::vector<T>& tau)
{
    const auto routine = form == Form::host ? Api<T>::geqrf : Api<T>::deviceGeqrf;
    return callIn(
        form, [&](auto* a, auto* t) { return routine(A.m, A.n, a, A.ld, t); }, A.elements(), tau);
}

template <class T>
void expectFactors(int m, int n)
{
    for (const Form form : {Form::host, Form::device}) {
        SCOPED_TRACE(testing::Message() << m << " x " << n << (form == Form::host ? " host" : " device"));
        const auto A = Matrix<T>::random(m, n, m + n % 3, m + n);
        auto factors = A;
        std::vector<T> tau(std::min(m, n));
        ASSERT_EQ(geqrf(form, factors, tau), tarnNoError);
        EXPECT_LT(factorRatio(qr, A, factors, tau), 30);
        EXPECT_TRUE(factors.paddingIntact());
    }
}

TYPED_TEST(Qr, FactorsAroundEveryEdge)
{
    const int nb = this->block;
    for (const int k : {1, 2, nb - 1, nb, nb + 1, 2 * nb, 2 * nb + 1}) {
        expectFactors<TypeParam>(k, k);
        expectFactors<TypeParam>(k + 77, k);
        expectFactors<TypeParam>(k, k + 77);
    }
    // A wide matrix leaves all columns to the right of the last block to the last step.
    for (const auto& [m, n] : {std::pair{nb + 1, 10 * nb}, {5 * nb + 3, 3 * nb + 1}, {1, 300}, {300, 1}, {2000, 99}})
        expectFactors<TypeParam>(m, n);
}

TYPED_TEST(Qr, RankDeficientMatrixIsNoError)
{
    using T = TypeParam;
    const int m = 3 * this->block, n = 2 * this->block + 5;
    auto A = Matrix<T>::random(m, n, m);
    for (const int column : {0, 7, this->block, n - 1})
        std::fill_n(&A(0, column), m, T(0));
    auto factors = A;
    std::vector<T> tau(n);
    EXPECT_EQ(geqrf(Form::host, factors, tau), tarnNoError);
    EXPECT_LT(factorRatio(qr, A, factors, tau), 30);
    EXPECT_EQ(factors(this->block, this->block), T(0));
}

TYPED_TEST(Qr, EmptyProblems)
{
    for (const auto routine : {Api<TypeParam>::geqrf, Api<TypeParam>::deviceGeqrf})
        for (const auto& [m, n] : {std::pair{0, 0}, {0, 5}, {5, 0}, {1, 0}, {0, 1}})
            EXPECT_EQ(routine(m, n, nullptr, std::max(1, m), nullptr), tarnNoError) << m << " x " << n;
}

TYPED_TEST(Qr, ArgumentsAreCheckedInOrder)
{
    using T = TypeParam;
    // One array stands for all: a call that touched any would change it, or fault in the device forms.
    const std::vector<T> before(9, T(7));
    std::vector<T> array = before;
    const auto x = native(array.data());
    const auto none = decltype(x)(nullptr);
    const auto expect = [](int info, tarnStatus status) {
        EXPECT_EQ(status, tarnArgumentError) << info;
        EXPECT_EQ(tarnGetLastStatus(), tarnArgumentError) << info;
        EXPECT_EQ(tarnGetErrorInfo(), info);
    };

    for (const auto geqrf : {Api<T>::geqrf, Api<T>::deviceGeqrf}) {
        expect(-1, geqrf(-1, -1, none, 0, none));
        expect(-2, geqrf(3, -1, none, 0, none));
        expect(-4, geqrf(3, 3, none, 2, none));
        expect(-4, geqrf(0, 3, none, 0, none));
        expect(-3, geqrf(3, 3, none, 3, none));
        expect(-3, geqrf(1, 2, none, 1, none));
        expect(-5, geqrf(2, 1, x, 3, none));
    }
    for (const auto gels : {Api<T>::gels, Api<T>::deviceGels}) {
        expect(-1, gels('Q', -1, -1, -1, none, 0, none, 0));
        expect(-2, gels('n', -1, -1, -1, none, 0, none, 0));
        expect(-3, gels('T', 3, -1, -1, none, 0, none, 0));
        expect(-4, gels('c', 3, 2, -1, none, 0, none, 0));
        expect(-6, gels('N', 3, 2, 1, none, 2, none, 0));
        expect(-6, gels('N', 0, 0, 0, none, 0, none, 0));
        expect(-8, gels('N', 3, 2, 1, none, 3, none, 2));
        expect(-8, gels('N', 2, 3, 1, none, 2, none, 2));
        expect(-8, gels('N', 0, 0, 0, none, 1, none, 0));
        expect(-5, gels('N', 3, 2, 1, none, 3, none, 3));
        expect(-7, gels('t', 3, 2, 1, x, 3, none, 3));
        expect(-7, gels('N', 0, 3, 1, none, 1, none, 3)); // B is to become zero
    }
    for (const auto gglse : {Api<T>::gglse, Api<T>::deviceGglse}) {
        expect(-1, gglse(-1, -1, -1, none, 0, none, 0, none, none, none));
        expect(-2, gglse(3, -1, -1, none, 0, none, 0, none, none, none));
        expect(-3, gglse(3, 2, -1, none, 0, none, 0, none, none, none));
        expect(-3, gglse(3, 2, 3, none, 0, none, 0, none, none, none));
        expect(-3, gglse(1, 3, 1, none, 0, none, 0, none, none, none));
        expect(-5, gglse(3, 3, 2, none, 2, none, 0, none, none, none));
        expect(-7, gglse(3, 3, 2, none, 3, none, 1, none, none, none));
        expect(-7, gglse(3, 0, 0, none, 3, none, 0, none, none, none));
        expect(-4, gglse(3, 3, 2, none, 3, none, 2, none, none, none));
        expect(-6, gglse(3, 3, 2, x, 3, none, 2, none, none, none));
        expect(-8, gglse(3, 3, 2, x, 3, x, 2, none, none, none));
        expect(-8, gglse(3, 3, 0, x, 3, none, 1, none, none, none));
        expect(-9, gglse(3, 3, 2, x, 3, x, 2, x, none, none));
        expect(-10, gglse(3, 3, 2, x, 3, x, 2, x, x, none));
        expect(-10, gglse(3, 3, 0, x, 3, none, 1, x, none, none));
    }
    EXPECT_EQ(array, before);
}

} // namespace
