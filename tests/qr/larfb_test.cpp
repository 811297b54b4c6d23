// larfb: every form of the block reflector against the product with its matrix.
#include "frame/device_table.h"
#include "lapack/qr/qr.h"
#include "support/forms.h"
#include "support/residuals.h"

#include <gtest/gtest.h>

namespace {

using namespace test;
using C = tarn::Complex<float>;

template <class T>
class Larfb : public BlockedTest<T>
{
protected:
    void SetUp() override { tarn::bindThreadDevice(); }
};

using Types = testing::Types<float, C>;
TYPED_TEST_SUITE(Larfb, Types);

struct Form
{
    char direct, storev;
    int p, k; ///< k reflectors of length p

    /// Place of the 1 of reflector i, and whether element t of it is stored: those on the one side of the 1.
    int one(int i) const { return direct == 'F' ? i : p - k + i; }
    bool stored(int t, int i) const { return direct == 'F' ? t > one(i) : t < one(i); }
};

/// The reflectors as the columns of a p by k matrix, from their storage.
template <class T>
WideMatrix vectorsOf(const Form& form, const Matrix<T>& V)
{
    const WideMatrix stored = form.storev == 'C' ? widened(V) : adjoint(widened(V));
    WideMatrix vectors(form.p, form.k);
    for (int i = 0; i < form.k; ++i) {
        vectors(form.one(i), i) = tarn::Complex<double>(1);
        for (int t = 0; t < form.p; ++t)
            if (form.stored(t, i))
                vectors(t, i) = stored(t, i);
    }
    return vectors;
}

/// Random reflectors; what is not to be read is large.
template <class T>
Matrix<T> storedVectors(const Form& form)
{
    const bool columns = form.storev == 'C';
    auto V = Matrix<T>::random(columns ? form.p : form.k, columns ? form.k : form.p, form.p + 2, 5);
    for (int i = 0; i < form.k; ++i)
        for (int t = 0; t < form.p; ++t)
            if (!form.stored(t, i))
                (columns ? V(t, i) : V(i, t)) = T(10000);
    return V;
}

/// A random triangle, upper for forward and lower for backward order; large numbers in the other one.
template <class T>
Matrix<T> storedTriangle(const Form& form)
{
    auto S = Matrix<T>::random(form.k, form.k, form.k + 1, 6);
    for (int j = 0; j < form.k; ++j)
        for (int i = 0; i < form.k; ++i)
            if (form.direct == 'F' ? i > j : i < j)
                S(i, j) = T(10000);
    return S;
}

/// H = I - V T V^H
template <class T>
WideMatrix reflectorOf(const Form& form, const Matrix<T>& V, const Matrix<T>& S)
{
    WideMatrix v = vectorsOf(form, V), t = widened(S), vt(form.p, form.k), H(form.p, form.p);
    for (int j = 0; j < form.k; ++j)
        for (int i = 0; i < form.k; ++i)
            if (form.direct == 'F' ? i > j : i < j)
                t(i, j) = tarn::Complex<double>(0);
    for (int i = 0; i < form.p; ++i)
        H(i, i) = tarn::Complex<double>(1);
    multiplyAdd(1, v, t, 0, vt);
    multiplyAdd(-1, 'N', vt, 'C', v, 1, H);
    return H;
}

template <class T>
void expectProduct(char side, char trans, const Form& form, int q)
{
    SCOPED_TRACE(testing::Message() << side << trans << form.direct << form.storev << ' ' << form.p << ' ' << form.k);
    const bool left = side == 'L';
    const auto V = storedVectors<T>(form), S = storedTriangle<T>(form);
    const auto before = Matrix<T>::random(left ? form.p : q, left ? q : form.p, form.p + q);
    auto after = before;
    const DeviceArray<T> v(V.elements()), t(S.elements()), c(after.elements());
    tarn::qr::larfb<T>(side, trans, form.direct, form.storev, before.m, before.n, form.k, v.data(), V.ld, t.data(),
                       S.ld, c.data(), before.ld);
    after.elements() = c.download();

    WideMatrix H = reflectorOf(form, V, S), x = widened(before), difference = widened(after);
    const char op = trans == 'N' ? 'N' : 'C';
    multiplyAdd(-1, left ? op : 'N', left ? H : x, left ? 'N' : op, left ? x : H, 1, difference);
    EXPECT_LT(norm1(difference) / (form.p * norm1(H) * norm1(before) * eps<T>), 3);
    EXPECT_TRUE(after.paddingIntact());
}

TYPED_TEST(Larfb, AgreesWithTheMatrixInEveryForm)
{
    for (const char side : {'L', 'R'})
        for (const char trans : {'N', 'C', 'T'})
            for (const char direct : {'F', 'B'})
                for (const char storev : {'C', 'R'}) {
                    expectProduct<TypeParam>(side, trans, {direct, storev, 70, 17}, 33);
                    expectProduct<TypeParam>(side, trans, {direct, storev, 20, 20}, 7);
                }
}

} // namespace
