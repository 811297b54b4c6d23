// The bidiagonal QR iteration: values against the CPU LAPACK in double precision, and B = Q S P^T through the vectors.
#include "frame/device_table.h"
#include "frame/error_state.h"
#include "frame/exceptions.h"
#include "lapack/svd/svd.h"
#include "support/api.h"
#include "support/device.h"
#include "svd/checks.h"

#include <gtest/gtest.h>

#include <functional>

extern "C" void slasq1_(const int*, float*, float*, float*, int*);
extern "C" void sbdsqr_(const char*, const int*, const int*, const int*, const int*, float*, float*, float*, const int*,
                        float*, const int*, float*, const int*, float*, int*, std::size_t);
extern "C" void dbdsqr_(const char*, const int*, const int*, const int*, const int*, double*, double*, double*,
                        const int*, double*, const int*, double*, const int*, double*, int*, std::size_t);

namespace {

using namespace test;

struct Bidiagonal
{
    char uplo;
    std::vector<float> d, e;

    int n() const { return int(d.size()); }
    WideMatrix wide() const { return bidiagonal(d, e, uplo); }

    static Bidiagonal random(char uplo, int n, unsigned seed)
    {
        return {uplo, Matrix<float>::random(n, 1, n, seed).elements(),
                Matrix<float>::random(n - 1, 1, n - 1, seed + 1).elements()};
    }
};

std::vector<double> singularValues(const Bidiagonal& B)
{
    const int n = B.n(), none = 0, one = 1;
    std::vector<double> s(B.d.begin(), B.d.end()), e(B.e.begin(), B.e.end()), work(4 * n);
    int info = 0;
    dbdsqr_(&B.uplo, &n, &none, &none, &none, s.data(), e.data(), nullptr, &one, nullptr, &one, nullptr, &one,
            work.data(), &info, 1);
    return s;
}

template <class T>
Matrix<T> identity(int n)
{
    Matrix<T> I(n, n);
    for (int i = 0; i < n; ++i)
        I(i, i) = T(1);
    return I;
}

/// What bdsqr makes of B and of the vectors vt (n by ncvt) and u (nru by n).
template <class T>
struct Iterated
{
    Iterated(const Bidiagonal& B, const Matrix<T>& vt0, const Matrix<T>& u0) : d(B.d), e(B.e), vt(vt0), u(u0)
    {
        DeviceArray<T> v(vt.elements()), w(u.elements());
        DeviceArray<float> deviceD(d), deviceE(e);
        try {
            tarn::svd::bdsqr<T>(B.uplo, B.n(), vt.n, u.m, 0, deviceD.data(), deviceE.data(), v.data(), vt.ld, w.data(),
                                std::max(1, u.ld), nullptr, 1);
        } catch (const tarn::InfoException& failure) {
            EXPECT_EQ(failure.status(), tarnDataError);
            info = failure.info();
        }
        tarn::finishRoutine();
        d = deviceD.download();
        e = deviceE.download();
        vt.elements() = v.download();
        u.elements() = w.download();
    }

    std::vector<float> d, e;
    Matrix<T> vt, u;
    int info = 0;
};

/// Every value has its own relative accuracy, however small it is.
void expectValues(const Bidiagonal& B, const std::vector<float>& s)
{
    const auto expected = singularValues(B);
    for (int i = 0; i < B.n(); ++i)
        EXPECT_NEAR(s[i], expected[i], 100 * eps<float> * expected[i] + 1e-36) << i;
    EXPECT_TRUE(std::is_sorted(s.rbegin(), s.rend()));
    EXPECT_GE(s.back(), 0);
}

/// Right vectors of ncvt columns and left ones of nru rows; each kind by itself must come out as with the other.
template <class T>
void expectDecomposition(const Bidiagonal& B, int ncvt, int nru)
{
    SCOPED_TRACE(testing::Message() << B.uplo << " n " << B.n() << " ncvt " << ncvt << " nru " << nru);
    const int n = B.n();
    const auto vt0 = Matrix<T>::random(n, ncvt, n + 3, 11), u0 = Matrix<T>::random(nru, n, nru + 2, 12);
    const Matrix<T> noVt(n, 0), noU(0, n);
    const Iterated<T> both(B, vt0, u0), right(B, vt0, noU), left(B, noVt, u0), none(B, noVt, noU);
    EXPECT_EQ(both.info, 0);
    expectValues(B, both.d);
    expectValues(B, none.d);
    EXPECT_TRUE(both.d == right.d && both.d == left.d);
    EXPECT_TRUE(identical(both.vt, right.vt) && identical(both.u, left.u));
    EXPECT_TRUE(both.vt.paddingIntact() && both.u.paddingIntact());

    // u0 B vt0 = (u0 Q) S (P^T vt0)
    const WideMatrix U0 = widened(u0), Vt0 = widened(vt0), S = bidiagonal(both.d);
    const double error =
        distance(product(product(U0, B.wide()), Vt0), product(product(widened(both.u), S), widened(both.vt)));
    EXPECT_LE(error, 30 * n * eps<float> * norm1(U0) * norm1(B.wide()) * norm1(Vt0));

    // Orthogonality, where the vectors begin as the identity.
    const Iterated<T> square(B, identity<T>(n), identity<T>(n));
    EXPECT_LT(orthogonality(widened(square.u)), 30);
    EXPECT_LT(orthogonality(adjoint(widened(square.vt))), 30);
}

template <class T>
class Bdsqr : public testing::Test
{
protected:
    void SetUp() override { tarn::bindThreadDevice(); }
    const Initialized library;
};

using Types = testing::Types<float, tarn::Complex<float>>;
TYPED_TEST_SUITE(Bdsqr, Types);

TYPED_TEST(Bdsqr, DecomposesUpperAndLowerMatrices)
{
    for (const char uplo : {'U', 'L'})
        for (const int n : {1, 2, 3, 10, 65, 130})
            expectDecomposition<TypeParam>(Bidiagonal::random(uplo, n, n), n + n % 3 * 5, 2 * n + 1);
}

/// Matrices that are hard on the tests, shifts and directions of the iteration; e is used but for its last element.
std::vector<Bidiagonal> hardMatrices(char uplo)
{
    using Element = std::function<float(int)>;
    const auto power = [](float base, float exponent) { return std::pow(base, exponent); };
    const std::tuple<int, Element, Element> elements[] = {
        {60, [&](int i) { return power(10, -i / 6.f); }, [&](int i) { return power(10, -(i + 1) / 6.f); }}, // graded
        {60, [&](int i) { return power(10, i / 6.f - 10); }, [&](int i) { return power(10, i / 6.f - 10); }},
        {60, [&](int i) { return power(10, 37 - 1.25f * i); }, [&](int i) { return power(10, 36 - 1.25f * i); }},
        {60, [&](int i) { return power(10, 1.25f * i - 38); }, [&](int i) { return power(10, 1.25f * i - 38); }},
        {60, [](int i) { return 1 + 1e-6f * i; }, [](int) { return 1e-3f; }},                       // clustered
        {60, [](int i) { return i < 30 ? 1.f : 0.5f; }, [](int) { return 1e-3f; }},                 // repeated
        {60, [](int i) { return i == 20 ? 1e20f : 1.f + i; }, [](int) { return 1.f; }},             // one huge element
        {60, [](int i) { return std::abs(30.f - i); }, [](int) { return 1.f; }},                    // Wilkinson's
        {60, [&](int i) { return power(0.8f, i); }, [&](int i) { return -0.6f * power(0.8f, i); }}, // Kahan's
        {60, [](int i) { return 1.f + i % 7; }, [](int i) { return i % 10 == 0 ? 0.f : 1.f; }},     // falls apart
        {60, [](int i) { return std::sin(1.f + i); }, [](int i) { return std::cos(2.f * i); }},
        // The last element of e is negligible against its neighbour below alone.
        {60, [](int i) { return i == 58 ? 1e-2f : 2 - i / 60.f; }, [](int i) { return i == 58 ? 3e-7f : 1e-2f; }},
        // Long enough for a shift that is not worth its loss of accuracy.
        {600, [&](int i) { return power(4500, -i / 599.f); }, [&](int i) { return 1e-3f * power(4500, -i / 599.f); }},
    };
    std::vector<Bidiagonal> matrices;
    for (const auto& [n, diagonal, offDiagonal] : elements) {
        Bidiagonal B{uplo, std::vector<float>(n), std::vector<float>(n - 1)};
        for (int i = 0; i < n; ++i)
            B.d[i] = diagonal(i);
        for (int i = 0; i < n - 1; ++i)
            B.e[i] = offDiagonal(i);
        matrices.push_back(B);
    }
    return matrices;
}

/// The host's recurrences are those of the CPU LAPACK's sbdsqr, and both call the same slartg, slas2 and slasv2.
TYPED_TEST(Bdsqr, ValuesOfHardMatricesAreLapacksBitByBit)
{
    using T = TypeParam;
    for (const char uplo : {'U', 'L'})
        for (const Bidiagonal& B : hardMatrices(uplo)) {
            SCOPED_TRACE(testing::Message() << uplo << " " << B.d[0] << " " << B.e[0]);
            const int n = B.n(), none = 0, one = 1;
            std::vector<float> s = B.d, e = B.e, vt(n * n), work(4 * n);
            int info = 0;
            sbdsqr_(&uplo, &n, &n, &none, &none, s.data(), e.data(), vt.data(), &n, nullptr, &one, nullptr, &one,
                    work.data(), &info, 1);
            ASSERT_EQ(info, 0);
            const Iterated<T> result(B, identity<T>(n), identity<T>(n));
            EXPECT_EQ(result.info, 0);
            EXPECT_EQ(result.d, s);
            EXPECT_LT(orthogonality(widened(result.u)), 30);
            EXPECT_LT(orthogonality(adjoint(widened(result.vt))), 30);
            EXPECT_LT(decompositionRatio(B.wide(), widened(result.u), bidiagonal(result.d), widened(result.vt)), 30);

            const Iterated<T> values(B, Matrix<T>(n, 0), Matrix<T>(0, n));
            s = B.d, e = B.e;
            slasq1_(&n, s.data(), e.data(), work.data(), &info);
            EXPECT_EQ(values.d, s) << "without vectors by the dqds algorithm";
        }
}

/// A chase from the small end of a graded matrix to the large one takes many times the sweeps.
TYPED_TEST(Bdsqr, GradedMatricesTakeFewSweeps)
{
    using T = TypeParam;
    if (!hasControls)
        GTEST_SKIP() << "needs a device with controls";
    const int n = 300;
    Bidiagonal falling{'U', std::vector<float>(n), std::vector<float>(n - 1)};
    for (int i = 0; i < n; ++i)
        falling.d[i] = std::pow(10.f, -6.f * i / n);
    std::copy(falling.d.begin() + 1, falling.d.end(), falling.e.begin());
    const Bidiagonal rising{'U', {falling.d.rbegin(), falling.d.rend()}, {falling.e.rbegin(), falling.e.rend()}};
    for (const Bidiagonal& B : {falling, rising}) {
        softdevLogStart();
        const Iterated<T> result(B, identity<T>(n), Matrix<T>(0, n));
        EXPECT_LT(countCalls(softdevLogTake(), "LASR_k"), 0.6 * n);
    }
}

TYPED_TEST(Bdsqr, ArgumentsAreCheckedInOrder)
{
    using T = TypeParam;
    float x = 0;
    T v{};
    const auto info = [&](char uplo, int n, int ncvt, int nru, int ncc, int given, int ldvt, int ldu, int ldc) {
        try {
            tarn::svd::bdsqr<T>(uplo, n, ncvt, nru, ncc, given > 0 ? &x : nullptr, given > 1 ? &x : nullptr,
                                given > 2 ? &v : nullptr, ldvt, given > 3 ? &v : nullptr, ldu, nullptr, ldc);
        } catch (const tarn::InfoException& failure) {
            EXPECT_EQ(failure.status(), tarnArgumentError);
            return failure.info();
        } catch (const tarn::FeatNotImplException&) {
            return 2;
        }
        return 0;
    };
    EXPECT_EQ(info('X', -1, -1, -1, -1, 0, 0, 0, 0), -1);
    EXPECT_EQ(info('u', -1, -1, -1, -1, 0, 0, 0, 0), -2);
    EXPECT_EQ(info('L', 3, -1, -1, -1, 0, 0, 0, 0), -3);
    EXPECT_EQ(info('L', 3, 1, -1, -1, 0, 0, 0, 0), -4);
    EXPECT_EQ(info('L', 3, 1, 2, -1, 0, 0, 0, 0), -5);
    EXPECT_EQ(info('L', 3, 1, 2, 1, 0, 2, 0, 0), -9);
    EXPECT_EQ(info('L', 3, 0, 2, 1, 0, 0, 0, 0), -9);
    EXPECT_EQ(info('L', 3, 1, 2, 1, 0, 3, 1, 0), -11);
    EXPECT_EQ(info('L', 3, 1, 2, 1, 0, 3, 2, 2), -13);
    EXPECT_EQ(info('L', 3, 1, 2, 0, 0, 3, 2, 0), -13);
    EXPECT_EQ(info('L', 3, 1, 2, 1, 0, 3, 2, 3), 2) << "a third set of vectors is not served";
    EXPECT_EQ(info('L', 0, 1, 2, 0, 0, 1, 2, 1), 0);
    for (const int given : {0, 1, 2, 3})
        EXPECT_EQ(info('L', 3, 1, 2, 0, given, 3, 2, 1), given < 3 ? -6 - given : -10);
}

/// Vectors of a block that the iteration did not come to are as they were, in their place.
TYPED_TEST(Bdsqr, VectorsReturnToTheirPlaceWithoutConvergence)
{
    using T = TypeParam;
    const int n = 40, reached = 20;
    Bidiagonal B = Bidiagonal::random('U', n, 3);
    B.e[reached - 1] = 0;
    B.d[30] = NAN;
    for (const int ncvt : {n, n + 5}) {
        const auto vectors = Matrix<T>::random(n, ncvt, n);
        const Iterated<T> result(B, vectors, Matrix<T>(0, n));
        EXPECT_GT(result.info, 0);
        std::vector<T> before, after;
        for (int i = 0; i < n; ++i)
            if (std::isfinite(result.d[i]) &&
                std::find(B.d.begin(), B.d.begin() + reached, result.d[i]) != B.d.begin() + reached) {
                after.push_back(result.vt(i, 1));
                before.push_back(vectors(int(std::find(B.d.begin(), B.d.end(), result.d[i]) - B.d.begin()), 1));
            }
        EXPECT_EQ(after.size(), std::size_t(reached));
        EXPECT_EQ(after, before);
    }
}

TYPED_TEST(Bdsqr, WhatIsNotFiniteEndsAndDoesNotLookLikeAResult)
{
    for (const float bad : {NAN, INFINITY})
        for (const int at : {0, 17, 39})
            for (const bool onDiagonal : {true, false}) {
                SCOPED_TRACE(testing::Message() << bad << " at " << at << (onDiagonal ? " of d" : " of e"));
                Bidiagonal B = Bidiagonal::random('U', 41, 3);
                (onDiagonal ? B.d : B.e)[at] = bad;
                const auto vectors = Matrix<TypeParam>::random(41, 41, 41);
                const Iterated<TypeParam> result(B, vectors, vectors);
                EXPECT_EQ(result.info, std::count_if(result.e.begin(), result.e.end(), [](float x) { return x != 0; }));
                if (std::isnan(bad) || !onDiagonal) {
                    EXPECT_GT(result.info, 0);
                } else {
                    EXPECT_FALSE(
                        std::all_of(result.d.begin(), result.d.end(), [](float x) { return std::isfinite(x); }));
                }
            }
}

} // namespace
