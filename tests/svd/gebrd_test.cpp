// The bidiagonal reduction A = Q B P^H around every edge of the blocks, in both shapes.
#include "frame/device_table.h"
#include "frame/error_state.h"
#include "lapack/svd/svd.h"
#include "support/api.h"
#include "support/device.h"
#include "svd/checks.h"

#include <gtest/gtest.h>

extern "C" void zungbr_(const char*, const int*, const int*, const int*, void*, const int*, const void*, void*,
                        const int*, int*, std::size_t);

namespace {

using namespace test;

/// Q (vect 'Q') or P^H ('P') of a reduction with the reflectors in A: the first rows and columns of it.
template <class T>
WideMatrix factor(char vect, const Matrix<T>& A, const std::vector<T>& tau)
{
    const int k = std::min(A.m, A.n), rows = vect == 'Q' ? A.m : k, cols = vect == 'Q' ? k : A.n;
    const int order = vect == 'Q' ? A.n : A.m, lwork = 64 * std::max(A.m, A.n);
    WideMatrix Q = corner(widened(A), rows, cols);
    extendStorage(Q);
    std::vector<WideComplex> scalars, work(lwork);
    for (const T& t : tau)
        scalars.emplace_back(wide(t).real(), wide(t).imag());
    int info = 0;
    zungbr_(&vect, &rows, &cols, &order, Q.data(), &Q.ld, scalars.data(), work.data(), &lwork, &info, 1);
    Q.elements().resize(std::size_t(rows) * cols);
    return Q;
}

template <class T>
void expectReduction(const Matrix<T>& A)
{
    SCOPED_TRACE(testing::Message() << A.m << " x " << A.n);
    const int k = std::min(A.m, A.n);
    const char uplo = A.m >= A.n ? 'U' : 'L';
    DeviceArray<T> a(A.elements()), tauq(k), taup(k);
    DeviceArray<float> deviceD(k), deviceE(k - 1);
    tarn::svd::gebrd(A.m, A.n, a.data(), A.ld, deviceD.data(), deviceE.data(), tauq.data(), taup.data());
    tarn::finishRoutine();
    Matrix<T> R = A;
    R.elements() = a.download();
    const auto d = deviceD.download(), e = deviceE.download();

    const WideMatrix Q = factor('Q', R, tauq.download()), Ph = factor('P', R, taup.download());
    EXPECT_LT(decompositionRatio(widened(A), Q, bidiagonal(d, e, uplo), Ph), 30);
    EXPECT_LT(orthogonality(Q), 30);
    EXPECT_LT(orthogonality(adjoint(Ph)), 30);
    EXPECT_TRUE(R.paddingIntact());
    for (int i = 0; i < k; ++i)
        EXPECT_EQ(wide(R(i, i)), wide(d[i])) << i;
    for (int i = 0; i < k - 1; ++i)
        EXPECT_EQ(wide(uplo == 'U' ? R(i, i + 1) : R(i + 1, i)), wide(e[i])) << i;
}

template <class T>
class Gebrd : public testing::Test
{
protected:
    void SetUp() override { tarn::bindThreadDevice(); }
    const Initialized library;
};

using Types = testing::Types<float, tarn::Complex<float>>;
TYPED_TEST_SUITE(Gebrd, Types);

TYPED_TEST(Gebrd, ReducesAroundTheEdgesOfTheBlocks)
{
    const std::pair<int, int> shapes[] = {{1, 1},   {7, 1},    {1, 7},    {31, 31},  {32, 32},  {33, 33},  {65, 65},
                                          {64, 65}, {100, 70}, {70, 100}, {300, 33}, {33, 300}, {600, 150}};
    for (const auto& [m, n] : shapes)
        expectReduction(Matrix<TypeParam>::random(m, n, m + m % 4, m + n));
}

TYPED_TEST(Gebrd, ZeroColumnsAndRowsGiveTrivialReflectors)
{
    for (const auto& [m, n] : {std::pair{90, 70}, {70, 90}}) {
        auto A = Matrix<TypeParam>::random(m, n, m);
        for (int l = 0; l < m; ++l)
            A(l, 0) = A(l, 40) = TypeParam(0);
        for (int l = 0; l < n; ++l)
            A(0, l) = A(66, l) = TypeParam(0);
        expectReduction(A);
        expectReduction(Matrix<TypeParam>(m, n));
    }
}

} // namespace
