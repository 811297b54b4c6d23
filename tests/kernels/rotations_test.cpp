// Plane rotations, and the shifts of reflectors that come before the generation of orthogonal matrices.
#include "kernels/fixture.h"
#include "lapack/kernels.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace test;
namespace kernel = tarn::kernel;

template <class T>
class Rotations : public KernelTest<T>
{};
TYPED_TEST_SUITE(Rotations, ElementTypes);

/// c x + s y, each product rounded by itself.
template <class R>
R combine(R c, R x, R s, R y)
{
    return c * x + s * y;
}
template <class R>
tarn::Complex<R> combine(R c, tarn::Complex<R> x, R s, tarn::Complex<R> y)
{
    return {combine(c, x.real(), s, y.real()), combine(c, x.imag(), s, y.imag())};
}

/// The textbook's loop: for every plane in order, all lines.
template <class T, class R>
void rotate(char side, char direct, const std::vector<R>& c, const std::vector<R>& s, Matrix<T>& A)
{
    const int count = (side == 'L' ? A.m : A.n) - 1;
    for (int k = 0; k < count; ++k) {
        const int j = direct == 'F' ? k : count - 1 - k;
        for (int line = 0; line < (side == 'L' ? A.n : A.m); ++line) {
            T& lower = side == 'L' ? A(j, line) : A(line, j);
            T& upper = side == 'L' ? A(j + 1, line) : A(line, j + 1);
            const T x = lower, y = upper;
            upper = combine(c[std::size_t(j)], y, -s[std::size_t(j)], x);
            lower = combine(s[std::size_t(j)], y, c[std::size_t(j)], x);
        }
    }
}

/// Largest difference of two elements.
template <class T>
double distance(const Matrix<T>& A, const Matrix<T>& B)
{
    double largest = 0;
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.m; ++i) {
            const double d = std::abs(wide(A(i, j)) - wide(B(i, j)));
            if (!(d <= largest))
                largest = d;
        }
    return largest;
}

TYPED_TEST(Rotations, FollowTheTextbook)
{
    using T = TypeParam;
    using R = tarn::Real<T>;
    // Lines beside the block of 128 or 64 threads, lengths beside chunks of as many rotations.
    const std::pair<int, int> sizes[] = {{1, 5},   {5, 1},  {2, 2},    {17, 33},  {33, 17}, {129, 129},
                                         {130, 3}, {3, 65}, {257, 66}, {66, 257}, {65, 128}};
    for (const auto& [m, n] : sizes)
        for (const char side : {'L', 'R'})
            for (const char direct : {'F', 'B'}) {
                SCOPED_TRACE(testing::Message() << side << direct << ' ' << m << " x " << n);
                const int count = std::max((side == 'L' ? m : n) - 1, 1);
                std::vector<R> c, s;
                for (int j = 0; j < count; ++j) {
                    c.push_back(std::cos(R(j + 1)));
                    s.push_back(std::sin(R(j + 1)));
                }
                auto A = Matrix<T>::random(m, n, m + 3, unsigned(m + n)), expected = A;
                const DeviceArray<T> a(A.elements());
                const DeviceArray<R> cosines(c), sines(s);
                kernel::LASR(side, 'V', direct, m, n, cosines.data(), sines.data(), a.data(), A.ld);
                download(A, a);
                rotate(side, direct, c, s, expected);
                EXPECT_TRUE(A.paddingIntact());
                if constexpr (tarn::isDouble<T>)
                    EXPECT_LE(distance(A, expected), 4 * eps<T> * std::max(m, n));
                else
                    EXPECT_TRUE(identical(A, expected)) << "products are rounded by themselves";
            }
}

template <class T>
class Sweeps : public KernelTest<T>
{};
using SweptTypes = testing::Types<float, tarn::Complex<float>>;
TYPED_TEST_SUITE(Sweeps, SweptTypes);

TYPED_TEST(Sweeps, InOnePassAreSweepsOneByOne)
{
    using T = TypeParam;
    using Columns = kernel::SweepColumns;
    constexpr int n = 70;
    // The whole matrix; blocks that shrink as they do while values converge; blocks far from each other; a single
    // plane.
    const Columns sets[][kernel::sweepsInPass] = {
        {{0, n}, {0, n}, {0, n}, {0, n}, {0, n}, {0, n}, {0, n}, {0, n}},
        {{3, 60}, {3, 60}, {4, 59}, {4, 55}, {4, 55}, {10, 30}, {10, 29}, {12, 3}},
        {{40, 20}, {5, 10}, {40, 19}, {5, 10}, {0, 3}, {67, 3}, {30, 40}, {0, 2}},
        {{68, 2}, {68, 2}, {68, 2}, {68, 2}, {68, 2}, {68, 2}, {68, 2}, {68, 2}},
    };
    std::vector<float> rotations;
    for (int j = 0; j < 2 * n * kernel::sweepsInPass; ++j)
        rotations.push_back(std::cos(float(j * j % 1013)));
    const DeviceArray<float> c(rotations);
    const float* const s = c.data() + n;
    for (const int m : {1, 31, 64, 130})
        for (const auto& sweeps : sets)
            for (const char direct : {'F', 'B'}) {
                SCOPED_TRACE(testing::Message() << direct << ' ' << m << ", first of " << sweeps[0].order);
                auto together = Matrix<T>::random(m, n, m + 3, unsigned(m)), apart = together;
                const DeviceArray<T> a(together.elements()), b(apart.elements());
                kernel::SWEEPS(direct, m, sweeps, c.data(), s, 2 * n, a.data(), together.ld);
                for (int k = 0; k < kernel::sweepsInPass; ++k)
                    kernel::LASR('R', 'V', direct, m, sweeps[k].order, c.data() + 2 * n * k, s + 2 * n * k,
                                 b.data() + std::int64_t(sweeps[k].first) * apart.ld, apart.ld);
                download(together, a);
                download(apart, b);
                EXPECT_TRUE(identical(together, apart));
            }
}

TYPED_TEST(Rotations, OtherPivotsDoNothing)
{
    using T = TypeParam;
    using R = tarn::Real<T>;
    const DeviceArray<R> c(std::vector<R>(9, R(0))), s(std::vector<R>(9, R(1)));
    for (const char pivot : {'T', 'B', 't'})
        expectSame<T>(
            9, 9, [&](T* a, int lda) { kernel::LASR('L', pivot, 'F', 9, 9, c.data(), s.data(), a, lda); },
            [](auto&) {});
}

TYPED_TEST(Rotations, ArgumentsAreCheckedInOrder)
{
    using T = TypeParam;
    using R = tarn::Real<T>;
    const DeviceArray<T> array(4);
    const DeviceArray<R> reals(4);
    T* const a = array.data();
    R* const c = reals.data();
    const auto info = [](char side, char pivot, char direct, int m, int n, R* cosines, R* sines, T* A, int lda) {
        return infoOf([=] { kernel::LASR(side, pivot, direct, m, n, cosines, sines, A, lda); });
    };
    EXPECT_EQ(info('X', 'X', 'X', -1, -1, nullptr, nullptr, nullptr, 0), -1);
    EXPECT_EQ(info('l', 'X', 'X', -1, -1, nullptr, nullptr, nullptr, 0), -2);
    EXPECT_EQ(info('r', 'b', 'X', -1, -1, nullptr, nullptr, nullptr, 0), -3);
    EXPECT_EQ(info('r', 'v', 'b', -1, -1, nullptr, nullptr, nullptr, 0), -4);
    EXPECT_EQ(info('r', 'v', 'b', 0, -1, nullptr, nullptr, nullptr, 0), 1) << "an empty matrix ends the checks";
    EXPECT_EQ(info('R', 'V', 'F', 2, -1, nullptr, nullptr, nullptr, 0), -5);
    EXPECT_EQ(info('R', 'V', 'F', 2, 2, nullptr, nullptr, nullptr, 0), -6);
    EXPECT_EQ(info('R', 'V', 'F', 2, 2, c, nullptr, nullptr, 0), -7);
    EXPECT_EQ(info('R', 'V', 'F', 2, 2, c, c, nullptr, 0), -8);
    EXPECT_EQ(info('R', 'V', 'F', 2, 2, c, c, a, 1), -9);
}

TYPED_TEST(Rotations, ReflectorsAreShifted)
{
    using T = TypeParam;
    for (const int n : {1, 2, 3, 17, 33, 257, 300}) {
        expectSame<T>(
            n, n, [&](T* a, int lda) { kernel::ORGBR_COPY('L', n, a, lda); },
            [&](auto& A) {
                const auto old = A;
                visit(A, [&](int i, int j, T& x) { x = i > 0 && j > 0 ? old(i, j - 1) : x; });
            });
        expectSame<T>(
            n, n, [&](T* a, int lda) { kernel::ORGBR_COPY('U', n, a, lda); },
            [&](auto& A) {
                const auto old = A;
                visit(A, [&](int i, int j, T& x) { x = i > 0 && i < j ? old(i - 1, j) : x; });
            });
        expectSame<T>(
            n, n, [&](T* a, int lda) { kernel::ORGBR_COPY('u', n, a, lda); }, [](auto&) {});
    }
}

} // namespace
