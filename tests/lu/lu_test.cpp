// getrf and gesv: backward errors around every edge of the algorithm, in both forms, and what they leave alone.
#include "support/api.h"
#include "support/device.h"
#include "support/residuals.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace test;
using C = tarn::Complex<float>;

template <class T>
class Lu : public testing::Test
{
protected:
    const Initialized library;
    const int nb = capability() <= 13 ? 64 : (tarn::isComplex<T> ? 128 : 192);

    /// The sizes that find faults: 1, around the block, around the change of storage, off every multiple.
    std::set<int> orders() const { return {1, 2, nb - 1, nb, nb + 1, 2 * nb, 2 * nb + 1, 512, 513, 1000}; }
};

using Types = testing::Types<float, C>;
TYPED_TEST_SUITE(Lu, Types);

template <class T>
tarnStatus hostGetrf(Matrix<T>& A, std::vector<int>& ipiv)
{
    return Api<T>::getrf(A.m, A.n, native(A.data()), A.ld, ipiv.data());
}

template <class T>
tarnStatus deviceGetrf(Matrix<T>& A, std::vector<int>& ipiv)
{
    DeviceArray<T> a(A.elements());
    DeviceArray<int> p(ipiv);
    const tarnStatus status = Api<T>::deviceGetrf(A.m, A.n, native(a.data()), A.ld, p.data());
    A.elements() = a.download();
    ipiv = p.download();
    return status;
}

template <class T>
void expectFactors(int m, int n, int pad)
{
    SCOPED_TRACE(testing::Message() << m << " x " << n);
    const auto A = Matrix<T>::random(m, n, m + pad, m + n);
    auto onHost = A, onDevice = A;
    std::vector<int> hostPivots(std::min(m, n)), devicePivots(std::min(m, n));
    ASSERT_EQ(hostGetrf(onHost, hostPivots), tarnNoError);
    ASSERT_EQ(deviceGetrf(onDevice, devicePivots), tarnNoError);
    EXPECT_LT(luRatio(A, onHost, hostPivots), 30);
    EXPECT_LT(luRatio(A, onDevice, devicePivots), 30);
    EXPECT_TRUE(onHost.paddingIntact());
    EXPECT_TRUE(onDevice.paddingIntact());
}

TYPED_TEST(Lu, SquareFactorsAroundEveryEdge)
{
    for (const int n : this->orders())
        expectFactors<TypeParam>(n, n, n % 3);
}

TYPED_TEST(Lu, RectangularFactors)
{
    const int block = this->nb;
    const std::pair<int, int> shapes[] = {{1000, 999},
                                          {999, 1000},
                                          {1100, 300},
                                          {300, 1100},
                                          {2100, 70}, // tall panels
                                          {100, 2000},
                                          {1, 300},
                                          {300, 1},
                                          {2 * block + 3, block},
                                          {block + 1, 3 * block},
                                          {2 * block + 3, block + 1}};
    for (const auto& [m, n] : shapes)
        expectFactors<TypeParam>(m, n, 5);
}

TYPED_TEST(Lu, SolvesWithManyAndFewRightHandSides)
{
    using T = TypeParam;
    const std::pair<int, int> shapes[] = {{1, 1}, {this->nb + 1, 3}, {512, 2}, {513, 1}, {600, 600}, {1000, 7}};
    for (const auto& [n, nrhs] : shapes) {
        SCOPED_TRACE(testing::Message() << n << ", " << nrhs);
        const auto A = Matrix<T>::random(n, n, n + 2, n), B = Matrix<T>::random(n, nrhs, n + 3, nrhs);
        auto factors = A, X = B;
        std::vector<int> ipiv(n);
        ASSERT_EQ(Api<T>::gesv(n, nrhs, native(factors.data()), factors.ld, ipiv.data(), native(X.data()), X.ld),
                  tarnNoError);
        EXPECT_LT(solveRatio(A, B, X), 30);
        EXPECT_LT(luRatio(A, factors, ipiv), 30);
        EXPECT_TRUE(factors.paddingIntact() && X.paddingIntact());

        DeviceArray<T> a(A.elements()), b(B.elements());
        DeviceArray<int> p(n);
        ASSERT_EQ(Api<T>::deviceGesv(n, nrhs, native(a.data()), A.ld, p.data(), native(b.data()), B.ld), tarnNoError);
        X.elements() = b.download();
        EXPECT_LT(solveRatio(A, B, X), 30);
        EXPECT_TRUE(X.paddingIntact());
    }
}

/// Columns that are exact copies of others or zero give pivots that are exactly zero at these one-based positions.
template <class T>
Matrix<T> withZeroPivots(int n, std::initializer_list<int> columns)
{
    auto A = Matrix<T>::random(n, n, n + 1, 7);
    for (const int column : columns)
        for (int i = 0; i < n; ++i)
            A(i, column - 1) = T(0);
    return A;
}

TYPED_TEST(Lu, SingularMatrixGivesFirstZeroPivotAndCompleteFactors)
{
    using T = TypeParam;
    for (const int n : {this->nb - 1, 500, 900}) {
        SCOPED_TRACE(n);
        const auto A = withZeroPivots<T>(n, {n / 2, n - 10}), B = Matrix<T>::random(n, 2, n);
        auto factors = A, X = B;
        std::vector<int> ipiv(n);
        EXPECT_EQ(Api<T>::gesv(n, 2, native(factors.data()), factors.ld, ipiv.data(), native(X.data()), X.ld),
                  tarnDataError);
        EXPECT_EQ(tarnGetErrorInfo(), n / 2);
        EXPECT_EQ(tarnGetLastStatus(), tarnDataError);
        EXPECT_LT(luRatio(A, factors, ipiv), 30);
        EXPECT_TRUE(identical(X, B));

        auto onDevice = A;
        EXPECT_EQ(deviceGetrf(onDevice, ipiv), tarnDataError);
        EXPECT_EQ(tarnGetErrorInfo(), n / 2);
        EXPECT_LT(luRatio(A, onDevice, ipiv), 30);
    }
    const Matrix<T> zero(40, 40);
    auto factors = zero;
    std::vector<int> ipiv(40);
    EXPECT_EQ(hostGetrf(factors, ipiv), tarnDataError);
    EXPECT_EQ(tarnGetErrorInfo(), 1);
    EXPECT_EQ(norm1(factors), 0);
}

TYPED_TEST(Lu, MoreRowsThanSixteenBitsHold)
{
    using T = TypeParam;
    // Wide of the block size, so that pivots beyond row 65536 travel to the interchange kernel. The large elements far
    // down make sure that they occur, the repeated shift that they spread over more than one run of 16 bits.
    const int m = 70000, n = 200;
    auto A = Matrix<T>::random(m, n, m + 1, 3);
    for (int j = 0; j < n; ++j)
        A(j % 3 == 0 ? j / 2 : m - 1 - 5 * j, j) = T(40 + j);
    auto factors = A;
    std::vector<int> ipiv(n);
    ASSERT_EQ(hostGetrf(factors, ipiv), tarnNoError);
    EXPECT_GT(*std::max_element(ipiv.begin(), ipiv.end()), 65536);
    EXPECT_LT(luRatio(A, factors, ipiv), 30);
    EXPECT_TRUE(factors.paddingIntact());
}

TYPED_TEST(Lu, EmptyProblems)
{
    using T = TypeParam;
    EXPECT_EQ(Api<T>::getrf(0, 5, nullptr, 1, nullptr), tarnNoError);
    EXPECT_EQ(Api<T>::getrf(5, 0, nullptr, 5, nullptr), tarnNoError);
    EXPECT_EQ(Api<T>::deviceGetrf(5, 0, nullptr, 5, nullptr), tarnNoError);
    EXPECT_EQ(Api<T>::gesv(0, 3, nullptr, 1, nullptr, nullptr, 1), tarnNoError);

    // Without right-hand sides A is factorised all the same.
    const auto A = Matrix<T>::random(30, 30, 31);
    auto factors = A;
    std::vector<int> ipiv(30);
    T b{};
    EXPECT_EQ(Api<T>::gesv(30, 0, native(factors.data()), 31, ipiv.data(), native(&b), 30), tarnNoError);
    EXPECT_LT(luRatio(A, factors, ipiv), 30);
}

TYPED_TEST(Lu, ArgumentsAreCheckedInOrder)
{
    using T = TypeParam;
    T x{};
    int p = 0;
    const auto a = native(&x);
    const auto infoOf = [](tarnStatus status) { return status == tarnArgumentError ? tarnGetErrorInfo() : 1; };

    EXPECT_EQ(infoOf(Api<T>::getrf(-1, -1, nullptr, 0, nullptr)), -1);
    EXPECT_EQ(infoOf(Api<T>::getrf(3, -1, nullptr, 0, nullptr)), -2);
    EXPECT_EQ(infoOf(Api<T>::getrf(3, 3, nullptr, 2, nullptr)), -4);
    EXPECT_EQ(infoOf(Api<T>::getrf(0, 3, nullptr, 0, nullptr)), -4);
    EXPECT_EQ(infoOf(Api<T>::getrf(3, 3, nullptr, 3, nullptr)), -3);
    EXPECT_EQ(infoOf(Api<T>::getrf(3, 3, a, 3, nullptr)), -5);
    EXPECT_EQ(infoOf(Api<T>::deviceGetrf(3, 3, nullptr, 3, nullptr)), -3);

    EXPECT_EQ(infoOf(Api<T>::gesv(-1, -1, nullptr, 0, nullptr, nullptr, 0)), -1);
    EXPECT_EQ(infoOf(Api<T>::gesv(3, -1, nullptr, 0, nullptr, nullptr, 0)), -2);
    EXPECT_EQ(infoOf(Api<T>::gesv(3, 1, nullptr, 2, nullptr, nullptr, 0)), -4);
    EXPECT_EQ(infoOf(Api<T>::gesv(3, 1, nullptr, 3, nullptr, nullptr, 2)), -7);
    EXPECT_EQ(infoOf(Api<T>::gesv(3, 0, nullptr, 3, nullptr, nullptr, 3)), -3);
    EXPECT_EQ(infoOf(Api<T>::gesv(3, 0, a, 3, nullptr, nullptr, 3)), -5);
    EXPECT_EQ(infoOf(Api<T>::gesv(3, 0, a, 3, &p, nullptr, 3)), -6);
    EXPECT_EQ(infoOf(Api<T>::deviceGesv(3, 1, a, 3, &p, nullptr, 3)), -6);
}

TYPED_TEST(Lu, NansSpreadAndNothingHangs)
{
    using T = TypeParam;
    auto A = Matrix<T>::random(600, 600, 600);
    std::memset(static_cast<void*>(&A(300, 200)), 0xff, sizeof(T));
    std::vector<int> ipiv(600);
    const tarnStatus status = hostGetrf(A, ipiv);
    EXPECT_TRUE(status == tarnNoError || status == tarnDataError) << status;
    EXPECT_TRUE(std::isnan(norm1(A)));
    for (int i = 0; i < 600; ++i)
        EXPECT_TRUE(i < ipiv[i] && ipiv[i] <= 600) << ipiv[i];
    EXPECT_TRUE(std::isnan(std::abs(wide(A(599, 599))))) << "it has spread to the end";
}

} // namespace
