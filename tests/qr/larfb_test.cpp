// larfb: every form of the block reflector against the CPU LAPACK's in double precision.
#include "frame/device_table.h"
#include "lapack/qr/qr.h"
#include "qr/factors.h"
#include "support/forms.h"

#include <gtest/gtest.h>

extern "C" void zlarfb_(const char*, const char*, const char*, const char*, const int*, const int*, const int*,
                        const void*, const int*, const void*, const int*, void*, const int*, void*, const int*,
                        std::size_t, std::size_t, std::size_t, std::size_t);

namespace {

using namespace test;

template <class T>
class Larfb : public BlockedTest<T>
{
protected:
    void SetUp() override { tarn::bindThreadDevice(); }
};

using Types = testing::Types<float, tarn::Complex<float>>;
TYPED_TEST_SUITE(Larfb, Types);

/// Random elements where isRead(i, j), large ones elsewhere.
template <class T, class IsRead>
Matrix<T> partOf(int m, int n, const IsRead& isRead)
{
    auto A = Matrix<T>::random(m, n, m + 2, m + n);
    for (int j = 0; j < n; ++j)
        for (int i = 0; i < m; ++i)
            if (!isRead(i, j))
                A(i, j) = T(10000);
    return A;
}

/// k reflectors of length p, applied to a matrix of q columns or rows.
template <class T>
void expectProduct(char side, char trans, char direct, char storev, int p, int k, int q)
{
    SCOPED_TRACE(testing::Message() << side << trans << direct << storev << ' ' << p << ' ' << k);
    const bool left = side == 'L', forward = direct == 'F', columns = storev == 'C';
    // Of reflector i the elements on the one side of its 1 are stored.
    const auto isStored = [=](int t, int i) { return forward ? t > i : t < p - k + i; };
    const auto V = partOf<T>(columns ? p : k, columns ? k : p,
                             [=](int i, int j) { return columns ? isStored(i, j) : isStored(j, i); });
    const auto S = partOf<T>(k, k, [=](int i, int j) { return forward ? i <= j : i >= j; });
    const auto before = Matrix<T>::random(left ? p : q, left ? q : p, p + q);
    auto after = before;
    const DeviceArray<T> v(V.elements()), t(S.elements()), c(after.elements());
    tarn::qr::larfb<T>(side, trans, direct, storev, before.m, before.n, k, v.data(), V.ld, t.data(), S.ld, c.data(),
                       before.ld);
    after.elements() = c.download();

    WideMatrix wideV = widened(V), wideS = widened(S), expected = widened(before), work(q, k);
    zlarfb_(&side, trans == 'N' ? "N" : "C", &direct, &storev, &expected.m, &expected.n, &k, wideV.data(), &wideV.ld,
            wideS.data(), &wideS.ld, expected.data(), &expected.ld, work.data(), &work.ld, 1, 1, 1, 1);
    EXPECT_LT(difference(after, expected, p), 3);
    EXPECT_TRUE(after.paddingIntact());
}

TYPED_TEST(Larfb, AgreesWithLapackInEveryForm)
{
    for (const char side : {'L', 'R'})
        for (const char trans : {'N', 'C', 'T'})
            for (const char direct : {'F', 'B'})
                for (const char storev : {'C', 'R'}) {
                    expectProduct<TypeParam>(side, trans, direct, storev, 70, 17, 33);
                    expectProduct<TypeParam>(side, trans, direct, storev, 20, 20, 7);
                }
}

} // namespace
