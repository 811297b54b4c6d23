// LQ and RQ factorisation, multiplication by Q and its generation, on the CPU's path and the blocked one, against the
// CPU LAPACK in double precision.
#include "blas/cpu.h"
#include "frame/device_table.h"
#include "frame/exceptions.h"
#include "lapack/qr/panel.h"
#include "lapack/qr/qr.h"
#include "qr/factors.h"
#include "support/forms.h"

#include <gtest/gtest.h>

#include <functional>

extern "C" void zungbr_(const char*, const int*, const int*, const int*, void*, const int*, const void*, void*,
                        const int*, int*, std::size_t);

namespace {

using namespace test;
using C = tarn::Complex<float>;

template <class T>
class Reflectors : public BlockedTest<T>
{
protected:
    void SetUp() override { tarn::bindThreadDevice(); }
};

using Types = testing::Types<float, C>;
TYPED_TEST_SUITE(Reflectors, Types);

/// The library's routines and the CPU LAPACK's of one family.
template <class T>
struct Routines
{
    const Family& family;
    void (*factorise)(int m, int n, T* a, int lda, T* tau);
    void (*multiply)(char side, char trans, int m, int n, int k, const T* a, int lda, T* tau, T* c, int ldc);
    void (*generate)(int m, int n, int k, T* a, int lda, T* tau);
    void (*cpuFactorise)(int m, int n, T* a, int lda, T* tau);
};

template <class T>
const Routines<T> families[] = {
    {qr, nullptr, tarn::qr::ormqr<T>, tarn::qr::orgqr<T>,
     [](int m, int n, T* a, int lda, T* tau) {
         tarn::qr::factoriseOnHost<T>({a, m, n, lda}, tau);
     }},
    {lq, tarn::qr::gelqf<T>, tarn::qr::ormlq<T>, tarn::qr::orglq<T>, tarn::cpu::gelqf<T>},
    {rq, tarn::qr::gerqf<T>, tarn::qr::ormrq<T>, nullptr, tarn::cpu::gerqf<T>},
};

TYPED_TEST(Reflectors, Factorise)
{
    using T = TypeParam;
    const int nb = this->block;
    std::vector<std::pair<int, int>> shapes = {{1, 90}, {90, 1}, {3 * nb + 1, 5 * nb}, {5 * nb, 3 * nb + 1}};
    for (const int k : {nb - 1, nb, nb + 1, 2 * nb, 2 * nb + 1})
        shapes.insert(shapes.end(), {{k, k}, {k + 55, k}, {k, k + 55}});
    for (const Routines<T>& routines : {families<T>[1], families<T>[2]})
        for (const auto& [m, n] : shapes) {
            SCOPED_TRACE(testing::Message() << routines.family.name << ' ' << m << " x " << n);
            const auto A = Matrix<T>::random(m, n, m + 1, m + n);
            auto factors = A;
            std::vector<T> tau(std::min(m, n));
            const DeviceArray<T> a(A.elements()), t(tau);
            routines.factorise(m, n, a.data(), A.ld, t.data());
            factors.elements() = a.download();
            EXPECT_LT(factorRatio(routines.family, A, factors, t.download()), 30);
            EXPECT_TRUE(factors.paddingIntact());
        }
}

template <class T>
void expectProducts(const Routines<T>& routines, int nq, int k)
{
    const bool byColumn = routines.family.byColumn;
    auto V = Matrix<T>::random(byColumn ? nq : k, byColumn ? k : nq, nq + 3, nq + k);
    std::vector<T> tau(k);
    routines.cpuFactorise(V.m, V.n, V.data(), V.ld, tau.data());
    WideMatrix wideV = widened(V), wideTau = widened(columnOf(tau));
    const DeviceArray<T> v(V.elements()), t(tau);
    for (const char side : {'L', 'R'})
        for (const char trans : {'N', 'C', 't'}) {
            SCOPED_TRACE(testing::Message() << routines.family.name << ' ' << side << trans << ' ' << nq << ' ' << k);
            const auto before = Matrix<T>::random(side == 'L' ? nq : 23, side == 'L' ? 23 : nq, nq + 24, k);
            auto after = before;
            const DeviceArray<T> c(before.elements());
            routines.multiply(side, trans, before.m, before.n, k, v.data(), V.ld, t.data(), c.data(), before.ld);
            after.elements() = c.download();
            WideMatrix expected = widened(before);
            multiplyByQ(routines.family, side, trans == 'N' ? 'N' : 'C', k, wideV, wideTau, expected);
            EXPECT_LT(difference(after, expected, nq), 30);
            EXPECT_TRUE(after.paddingIntact());
        }
    auto same = V;
    same.elements() = v.download();
    EXPECT_TRUE(identical(same, V));
    EXPECT_EQ(t.download(), tau);
}

// The position of the first wrong argument, and nothing is touched: there is no array on the device. Nor is one wanted
// where there is nothing to do.
TYPED_TEST(Reflectors, ArgumentsAreCheckedInOrder)
{
    using T = TypeParam;
    T element(0);
    T *const x = &element, *const none = nullptr;
    struct
    {
        int info;
        std::function<void()> call;
    } const calls[] = {
        {-2, [&] { tarn::qr::orgqr(2, -1, 0, x, 2, x); }},
        {-2, [&] { tarn::qr::orgqr(2, 3, 0, x, 2, x); }},
        {-3, [&] { tarn::qr::orgqr(2, 2, -1, x, 2, x); }},
        {-3, [&] { tarn::qr::orgqr(2, 2, 3, x, 2, x); }},
        {0, [&] { tarn::qr::orgqr(2, 0, 0, none, 2, none); }},
        {-3, [&] { tarn::qr::orglq(2, 2, -1, x, 2, x); }},
        {-3, [&] { tarn::qr::orglq(2, 2, 3, x, 2, x); }},
        {0, [&] { tarn::qr::orglq(0, 2, 0, none, 1, none); }},
        {-3, [&] { tarn::qr::orgbr('Q', 2, 3, 3, x, 2, x); }},
        {-3, [&] { tarn::qr::orgbr('Q', 4, 1, 2, x, 4, x); }},
        {-3, [&] { tarn::qr::orgbr('P', 3, 2, 3, x, 3, x); }},
        {-3, [&] { tarn::qr::orgbr('P', 1, 4, 2, x, 1, x); }},
        {0, [&] { tarn::qr::orgbr('Q', 0, 0, 2, none, 1, none); }},
        {0, [&] { tarn::qr::orgbr('Q', 2, 0, 0, none, 2, none); }},
        {-5, [&] { tarn::qr::ormqr('L', 'N', 2, 1, 3, x, 3, x, x, 2); }},
        {-5, [&] { tarn::qr::ormqr('R', 'N', 2, 1, -1, x, 3, x, x, 2); }},
        {0, [&] { tarn::qr::ormqr('L', 'N', 2, 0, 2, none, 2, none, none, 2); }},
        {0, [&] { tarn::qr::gelqf(2, 0, none, 2, none); }},
        {0, [&] { tarn::qr::larfb('L', 'N', 'F', 'C', 0, 1, 1, none, 1, none, 1, none, 1); }},
        {0, [&] { tarn::qr::larfb('L', 'N', 'F', 'C', 1, 0, 1, none, 1, none, 1, none, 1); }},
        {0, [&] { tarn::qr::larfb('L', 'N', 'F', 'C', 1, 1, 0, none, 1, none, 1, none, 1); }},
        {0, [&] { tarn::qr::trtrs('U', 'N', 'N', 0, 1, none, 1, none, 1); }},
        {-4, [&] { tarn::qr::ggrqf(1, 1, 2, none, 1, x, x, 1, x); }},
        {-6, [&] { tarn::qr::ggrqf(1, 1, 2, x, 1, none, x, 1, x); }},
        {-7, [&] { tarn::qr::ggrqf(1, 1, 2, x, 1, x, none, 1, x); }},
        {-9, [&] { tarn::qr::ggrqf(1, 1, 2, x, 1, x, x, 1, none); }},
        {0, [&] { tarn::qr::ggrqf(1, 1, 0, none, 1, none, none, 1, none); }},
    };
    for (const auto& entry : calls) {
        SCOPED_TRACE(&entry - calls);
        const int info = entry.info;
        try {
            entry.call();
            EXPECT_EQ(info, 0);
        } catch (const tarn::InfoException& failure) {
            EXPECT_EQ(failure.info(), info);
            EXPECT_EQ(failure.status(), tarnArgumentError);
        }
    }
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
}

TYPED_TEST(Reflectors, MultiplyByQ)
{
    for (const Routines<TypeParam>& routines : families<TypeParam>)
        for (const int k : {1, this->block, this->block + 1, 2 * this->block, 2 * this->block + 3}) {
            expectProducts(routines, k, k);
            expectProducts(routines, k + 37, k);
        }
}

TYPED_TEST(Reflectors, GenerateQ)
{
    using T = TypeParam;
    const int nb = this->block;
    // k reflectors, in a Q of that many more vectors, of that many more elements.
    const std::tuple<int, int, int> shapes[] = {{0, 9, 4},           {1, 0, 0},      {nb, 0, 33},
                                                {nb, 2 * nb, 0},     {nb + 1, 0, 0}, {nb + 1, 20, 33},
                                                {2 * nb + 1, 20, 0}, {3 * nb, 0, 5}, {3 * nb, nb + 1, 0}};
    for (const Routines<T>& routines : {families<T>[0], families<T>[1]})
        for (const auto& [k, more, longer] : shapes) {
            const bool byColumn = routines.family.byColumn;
            const int count = k + more, length = count + longer;
            SCOPED_TRACE(testing::Message() << routines.family.name << ' ' << length << ' ' << count << ' ' << k);
            auto Q = Matrix<T>::random(byColumn ? length : count, byColumn ? count : length, length + 3, k);
            std::vector<T> tau(std::max(1, k));
            routines.cpuFactorise(byColumn ? Q.m : k, byColumn ? k : Q.n, Q.data(), Q.ld, tau.data());
            WideMatrix expected = widened(Q), wideTau = widened(columnOf(tau));
            generateQ(routines.family, k, expected, wideTau);
            const DeviceArray<T> q(Q.elements()), t(tau);
            routines.generate(Q.m, Q.n, k, q.data(), Q.ld, t.data());
            Q.elements() = q.download();
            EXPECT_LT(difference(Q, expected, length), 30);
            EXPECT_TRUE(Q.paddingIntact());
            EXPECT_EQ(t.download(), tau);
        }
}

TYPED_TEST(Reflectors, TriangularSolveTestsTheDiagonalForExactZeros)
{
    using T = TypeParam;
    const int n = 20;
    auto S = Matrix<T>(n, n, n + 1);
    Random<T> next;
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < j; ++i)
            S(i, j) = next();
    for (int i = 0; i < n; ++i)
        if constexpr (tarn::isComplex<T>)
            S(i, i) = T(0, 2); // not zero
        else
            S(i, i) = T(2);
    const auto B = Matrix<T>::random(n, 3, n + 2);
    const DeviceArray<T> b(B.elements());
    auto X = B;
    {
        const DeviceArray<T> a(S.elements());
        tarn::qr::trtrs<T>('u', 'n', 'n', n, 3, a.data(), S.ld, b.data(), B.ld);
        X.elements() = b.download();
        EXPECT_LT(solveRatio(S, B, X), 30);
    }
    S(7, 7) = S(11, 11) = T(0);
    const DeviceArray<T> a(S.elements()), untouched(B.elements());
    try {
        tarn::qr::trtrs<T>('U', 'C', 'N', n, 3, a.data(), S.ld, untouched.data(), B.ld);
        FAIL() << "a zero on the diagonal must be reported";
    } catch (const tarn::InfoException& failure) {
        EXPECT_EQ(failure.status(), tarnDataError);
        EXPECT_EQ(failure.info(), 8);
    }
    auto same = B;
    same.elements() = untouched.download();
    EXPECT_TRUE(identical(same, B));
    EXPECT_NO_THROW(tarn::qr::trtrs<T>('U', 'N', 'U', n, 3, a.data(), S.ld, untouched.data(), B.ld));
}

/// Q or P^H, m by n, of a bidiagonal reduction to k columns or rows that stands in F.
template <class T>
void expectOrgbr(char vect, int m, int n, int k, const Matrix<T>& F, std::vector<T> tau)
{
    SCOPED_TRACE(testing::Message() << vect << ' ' << m << ' ' << n << ' ' << k);
    auto Q = Matrix<T>::random(m, n, m + 2);
    for (int j = 0; j < std::min(n, F.n); ++j)
        std::copy_n(&F(0, j), std::min(m, F.m), &Q(0, j));
    WideMatrix expected = widened(Q), wideTau = widened(columnOf(tau));
    const int lwork = 64 * std::max(m, n);
    std::vector<tarn::Complex<double>> work(lwork);
    int info = 0;
    zungbr_(&vect, &m, &n, &k, expected.data(), &m, wideTau.data(), work.data(), &lwork, &info, 1);
    ASSERT_EQ(info, 0);

    const DeviceArray<T> q(Q.elements()), t(tau);
    tarn::qr::orgbr<T>(vect, m, n, k, q.data(), Q.ld, t.data());
    Q.elements() = q.download();
    EXPECT_LT(difference(Q, expected, std::max(m, n)), 30);
    EXPECT_TRUE(Q.paddingIntact());
}

TYPED_TEST(Reflectors, GenerateTheFactorsOfABidiagonalReduction)
{
    using T = TypeParam;
    const int nb = this->block;
    const std::pair<int, int> shapes[] = {
        {1, 1},           {6, 1},           {1, 6},          {2, 2}, {nb + 40, nb + 5}, {nb + 5, nb + 40},
        {nb + 2, nb + 2}, {2 * nb + 7, 30}, {30, 2 * nb + 7}};
    for (const auto& [m, n] : shapes) {
        const int k = std::min(m, n);
        auto F = Matrix<T>::random(m, n, m, m + n);
        std::vector<tarn::Real<T>> d(k), e(k);
        std::vector<T> tauq(k), taup(k);
        tarn::cpu::gebd2(m, n, F.data(), F.ld, d.data(), e.data(), tauq.data(), taup.data());
        expectOrgbr('Q', m, k, n, F, tauq);
        expectOrgbr('P', k, n, m, F, taup);
        expectOrgbr('q', m, m, n, F, tauq);
        expectOrgbr('p', n, n, m, F, taup);
    }
}

} // namespace
