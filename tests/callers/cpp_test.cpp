// tarn.hpp: every routine hands its operands on in the order of the C call, shapes that do not fit are refused before
// it, and statuses arrive as exceptions.
#include "support/device.h"

#include <tarn.hpp>

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <vector>

namespace {

using tarn::Diag;
using tarn::Job;
using tarn::MatrixView;
using tarn::Op;
using tarn::Side;
using tarn::Uplo;
using tarn::VectorView;
using tarn::detail::native;

template <class T>
T element(int k)
{
    const auto real = tarn::detail::Real<T>(1 + k % 7 - k % 3);
    if constexpr (std::is_same_v<T, tarn::detail::Real<T>>)
        return real;
    else
        return T(real, k % 5 - 2);
}

/// A matrix with a leading dimension of its own, so that swapped operands show.
template <class T>
struct Sample : MatrixView<T>
{
    Sample(int rows, int columns, int padding) : elements(std::size_t(rows + padding) * columns)
    {
        static_cast<MatrixView<T>&>(*this) = {elements.data(), rows, columns, rows + padding};
        for (std::size_t k = 0; k < elements.size(); ++k)
            elements[k] = element<T>(int(k)) + T(int(k) % (rows + padding + 1) == 0 ? 9 : 0); // solvable
    }
    Sample(const Sample&) = delete;

    std::vector<T> elements;
};

/// Both calls must leave the same in the result, and something else than they found there.
template <class T>
void expectSame(const Sample<T>& result, const std::function<void()>& wrapped, const std::function<tarnStatus()>& call)
{
    auto& elements = const_cast<std::vector<T>&>(result.elements);
    const std::vector<T> before = elements;
    ASSERT_NO_THROW(wrapped());
    const std::vector<T> after = elements;
    elements = before;
    ASSERT_EQ(call(), tarnNoError);
    EXPECT_EQ(after, elements);
    EXPECT_NE(after, before);
}

template <class T>
class CppBlas : public testing::Test
{
protected:
    const tarn::Session session;
};
using Elements = testing::Types<float, double, std::complex<float>, std::complex<double>>;
TYPED_TEST_SUITE(CppBlas, Elements);

TYPED_TEST(CppBlas, HandsOperandsOn)
{
    using T = TypeParam;
    using C = tarn::detail::Blas<T>;
    constexpr bool isReal = std::is_same_v<T, tarn::detail::Real<T>>;
    const T alpha = element<T>(3), beta = element<T>(11);
    const auto x = native(alpha), y = native(beta);
    const Sample<T> a(5, 3, 1), b(4, 5, 2), c(3, 4, 3), square(3, 3, 4), other(4, 4, 5), like(3, 4, 6), wide(3, 5, 7);
    const auto p = [](const Sample<T>& s) { return native(s.data()); };
    const auto ld = [](const Sample<T>& s) { return s.ld(); };

    expectSame(
        c, [&] { tarn::gemm(Op::transpose, Op::conjTranspose, alpha, a, b, beta, c); },
        [&] { return C::gemm[0]('T', 'C', 3, 4, 5, x, p(a), ld(a), p(b), ld(b), y, p(c), ld(c)); });
    expectSame(
        c, [&] { tarn::trsm(Side::left, Uplo::upper, Op::transpose, Diag::nonUnit, alpha, square, c); },
        [&] { return C::trsm[0]('L', 'U', 'T', 'N', 3, 4, x, p(square), ld(square), p(c), ld(c)); });
    expectSame(
        c, [&] { tarn::trmm(Side::right, Uplo::lower, Op::conjTranspose, Diag::unit, alpha, other, c); },
        [&] { return C::trmm[0]('R', 'L', 'C', 'U', 3, 4, x, p(other), ld(other), p(c), ld(c)); });
    expectSame(
        c, [&] { tarn::symm(Side::right, Uplo::lower, alpha, other, like, beta, c); },
        [&] { return C::symm[0]('R', 'L', 3, 4, x, p(other), ld(other), p(like), ld(like), y, p(c), ld(c)); });
    expectSame(
        square, [&] { tarn::syrk(Uplo::lower, Op::transpose, alpha, a, beta, square); },
        [&] { return C::syrk[0]('L', 'T', 3, 5, x, p(a), ld(a), y, p(square), ld(square)); });
    expectSame(
        square, [&] { tarn::syr2k(Uplo::upper, Op::none, alpha, c, like, beta, square); },
        [&] { return C::syr2k[0]('U', 'N', 3, 4, x, p(c), ld(c), p(like), ld(like), y, p(square), ld(square)); });
    expectSame(
        a, [&] { tarn::gemv(Op::transpose, alpha, b, c.block(0, 0, 1, 4).row(0), beta, a.column(1)); },
        [&] { return C::gemv[0]('T', 4, 5, x, p(b), ld(b), p(c), ld(c), y, native(a.column(1).data()), 1); });
    const auto in = c.column(0), out = wide.block(0, 0, 3, 3).row(1);
    const auto vectors = [&](auto routine) {
        return routine('U', 3, x, p(square), ld(square), native(in.data()), 1, y, native(out.data()), ld(wide));
    };
    if constexpr (isReal) {
        expectSame(
            wide, [&] { tarn::symv(Uplo::upper, alpha, square, in, beta, out); }, [&] { return vectors(C::symv[0]); });
    } else {
        expectSame(
            wide, [&] { tarn::hemv(Uplo::upper, alpha, square, in, beta, out); }, [&] { return vectors(C::hemv[0]); });
        expectSame(
            c, [&] { tarn::hemm(Side::left, Uplo::upper, alpha, square, like, beta, c); },
            [&] { return C::hemm[0]('L', 'U', 3, 4, x, p(square), ld(square), p(like), ld(like), y, p(c), ld(c)); });
        expectSame(
            square, [&] { tarn::herk(Uplo::lower, Op::conjTranspose, 2, a, 3, square); },
            [&] { return C::herk[0]('L', 'C', 3, 5, 2, p(a), ld(a), 3, p(square), ld(square)); });
        expectSame(
            square, [&] { tarn::her2k(Uplo::upper, Op::none, alpha, c, like, 3, square); },
            [&] { return C::her2k[0]('U', 'N', 3, 4, x, p(c), ld(c), p(like), ld(like), 3, p(square), ld(square)); });
    }
}

TYPED_TEST(CppBlas, DeviceViewsSelectTheDeviceForm)
{
    using T = TypeParam;
    Sample<T> a(2, 3, 0), b(3, 4, 0), c(2, 4, 0);
    const test::DeviceArray<T> deviceA(a.elements), deviceB(b.elements), deviceC(c.elements);
    tarn::gemm(Op::none, Op::none, T(2), tarn::DeviceMatrixView<T>(deviceA.data(), 2, 3),
               tarn::DeviceMatrixView<T>(deviceB.data(), 3, 4), T(3), tarn::DeviceMatrixView<T>(deviceC.data(), 2, 4));
    tarn::gemm(Op::none, Op::none, T(2), a, b, T(3), c);
    EXPECT_EQ(deviceC.download(), c.elements);
}

template <class T>
class CppLapack : public testing::Test
{
protected:
    const tarn::Session session;
};
using SingleElements = testing::Types<float, std::complex<float>>;
TYPED_TEST_SUITE(CppLapack, SingleElements);

TYPED_TEST(CppLapack, HandsOperandsOn)
{
    using T = TypeParam;
    using C = tarn::detail::Lapack<T>;
    const auto p = [](const Sample<T>& s) { return native(s.data()); };
    const auto ld = [](const Sample<T>& s) { return s.ld(); };
    const auto fresh = [](const Sample<T>& like) { // the routines destroy their operands
        return std::make_unique<Sample<T>>(like.rows(), like.columns(), like.ld() - like.rows());
    };
    std::vector<int> pivots(5);
    std::vector<T> tau(5);
    std::vector<float> s(5);
    const Sample<T> a(5, 3, 1), square(3, 3, 2), b(3, 4, 3), tall(6, 2, 1), rows(2, 3, 2);

    expectSame(
        a,
        [&] {
            tarn::getrf(a, {pivots.data(), 3});
        },
        [&] { return C::getrf[0](5, 3, p(a), ld(a), pivots.data()); });
    expectSame(
        b,
        [&] {
            tarn::gesv(*fresh(square), {pivots.data(), 3}, b);
        },
        [&] { return C::gesv[0](3, 4, p(*fresh(square)), ld(square), pivots.data(), p(b), ld(b)); });
    expectSame(
        a,
        [&] {
            tarn::geqrf(a, {tau.data(), 3});
        },
        [&] { return C::geqrf[0](5, 3, p(a), ld(a), native(tau.data())); });
    expectSame(
        tall, [&] { tarn::gels(Op::conjTranspose, *fresh(a), tall); },
        [&] { return C::gels[0]('C', 5, 3, 2, p(*fresh(a)), ld(a), p(tall), ld(tall)); });

    const Sample<T> c(5, 1, 0), d(2, 1, 0), x(3, 1, 0);
    expectSame(
        x, [&] { tarn::gglse(*fresh(a), *fresh(rows), fresh(c)->column(0), fresh(d)->column(0), x.column(0)); },
        [&] {
            return C::gglse[0](5, 3, 2, p(*fresh(a)), ld(a), p(*fresh(rows)), ld(rows), p(*fresh(c)), p(*fresh(d)),
                               p(x));
        });
    for (const bool left : {true, false}) {
        const Sample<T> u(5, 3, 2), vt(3, 3, 5);
        expectSame(
            left ? u : vt,
            [&] {
                tarn::gesvd(Job::some, Job::all, *fresh(a), {s.data(), 3}, u, vt);
            },
            [&] { return C::gesvd[0]('S', 'A', 5, 3, p(*fresh(a)), ld(a), s.data(), p(u), ld(u), p(vt), ld(vt)); });
    }
    EXPECT_NO_THROW(tarn::gesvd(Job::none, Job::none, *fresh(a), {s.data(), 3}, {}, {}));
}

TEST(Cpp, ShapesThatDoNotFitAreRefused)
{
    const tarn::Session session;
    const Sample<float> a(3, 3, 0), b(4, 2, 0);
    std::vector<int> pivots(3);
    const auto before = a.elements;
    std::vector<float> s(2);
    EXPECT_THROW(tarn::gesv(a, {pivots.data(), 3}, b), std::invalid_argument);
    EXPECT_THROW(tarn::getrf(a, {pivots.data(), 2}), std::invalid_argument);
    EXPECT_THROW(tarn::gemm(Op::none, Op::none, 1, a, b, 0, b), std::invalid_argument);
    EXPECT_THROW(tarn::syrk(Uplo::upper, Op::none, 1, b, 0, a), std::invalid_argument);
    EXPECT_THROW(tarn::gesvd(Job::all, Job::none, b, {s.data(), 2}, {}, {}), std::invalid_argument);
    EXPECT_THROW(a.block(1, 1, 3, 2), std::invalid_argument);
    EXPECT_EQ(a.elements, before);
}

TEST(Cpp, StatusesAreExceptions)
{
    std::vector<float> ones(4, 1), b(2, 1);
    std::vector<int> pivots(2);
    const auto statusOf = [&]() -> std::pair<tarnStatus, tarnInfo> {
        try {
            tarn::gesv(MatrixView(ones.data(), 2, 2), {pivots.data(), 2}, {b.data(), 2, 1});
        } catch (const tarn::Error& error) {
            EXPECT_EQ(std::string(error.what()).rfind(tarnGetStatusString(error.status()), 0), 0u);
            return {error.status(), error.info()};
        }
        return {tarnNoError, 0};
    };
    {
        const tarn::Session session;
        EXPECT_EQ(statusOf(), std::make_pair(tarnDataError, tarnInfo(2)));
    }
    EXPECT_EQ(statusOf().first, tarnNotInitialized);
}

} // namespace
