// The bidiagonal QR iteration: values against the CPU LAPACK in double precision, and B = Q S P^T through the vectors.
#include "frame/device_table.h"
#include "frame/error_state.h"
#include "frame/exceptions.h"
#include "lapack/svd/svd.h"
#include "support/api.h"
#include "support/device.h"
#include "svd/checks.h"

#include <gtest/gtest.h>

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
    Matrix<T> I(n, n);
    for (int i = 0; i < n; ++i)
        I(i, i) = T(1);
    const Iterated<T> square(B, I, I);
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

TYPED_TEST(Bdsqr, GradedRepeatedAndVanishingElements)
{
    const int n = 60;
    Bidiagonal falling = Bidiagonal::random('U', n, 4), equal = falling, split = falling, zeros = falling;
    for (int i = 0; i < n; ++i) {
        falling.d[i] = std::pow(10.0f, -i / 6.0f);
        equal.d[i] = i < 30 ? 1.0f : 0.5f;
    }
    std::copy(falling.d.begin() + 1, falling.d.end(), falling.e.begin());
    const Bidiagonal rising{'L', {falling.d.rbegin(), falling.d.rend()}, {falling.e.rbegin(), falling.e.rend()}};
    std::fill(equal.e.begin(), equal.e.end(), 1e-3f);
    split.e[0] = split.e[10] = split.e[n - 2] = 0;
    zeros.d[0] = zeros.d[20] = zeros.d[n - 1] = 0;
    for (const Bidiagonal& B : {falling, rising, equal, split})
        expectDecomposition<TypeParam>(B, n, n);

    // Zeros come out as what is small against the norm.
    const Iterated<TypeParam> singular(zeros, Matrix<TypeParam>(n, n), Matrix<TypeParam>(n, n));
    const auto expected = singularValues(zeros);
    for (int i = 0; i < n; ++i)
        EXPECT_NEAR(singular.d[i], expected[i], 30 * eps<float> * expected[0]);
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
