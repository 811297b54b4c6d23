// The norms, and the partial results that their first kernels leave behind.
#include "kernels/fixture.h"
#include "lapack/kernels.h"

#include <algorithm>
#include <cmath>

namespace {

using namespace test;
namespace kernel = tarn::kernel;

template <class T>
class Norms : public KernelTest<T>
{};
TYPED_TEST_SUITE(Norms, ElementTypes);

/// The norm with sums of more than the type's precision; for 'F' its square.
template <class T>
double reference(char norm, const Matrix<T>& A)
{
    std::vector<long double> columns(std::size_t(A.n)), rows(std::size_t(A.m));
    long double largest = 0, squares = 0;
    for (int j = 0; j < A.n; ++j)
        for (int i = 0; i < A.m; ++i) {
            const long double x = std::abs(wide(A(i, j)));
            largest = std::max(largest, x);
            columns[std::size_t(j)] += x;
            rows[std::size_t(i)] += x;
            squares += x * x;
        }
    switch (norm) {
    case 'M':
        return double(largest);
    case 'O':
        return double(*std::max_element(columns.begin(), columns.end()));
    case 'I':
        return double(*std::max_element(rows.begin(), rows.end()));
    default:
        return double(squares);
    }
}

template <class T>
struct NormResult
{
    tarn::Real<T> value;
    std::vector<tarn::Real<T>> work;
};

template <class T>
NormResult<T> normOnDevice(char norm, const Matrix<T>& A)
{
    using R = tarn::Real<T>;
    const DeviceArray<T> a(A.elements());
    const DeviceArray<R> work(std::size_t(kernel::langeWorkspace(norm, A.m, A.n))), result(1);
    kernel::LANGE(norm, A.m, A.n, a.data(), A.ld, work.data(), result.data());
    return {result.download()[0], work.download()};
}

TYPED_TEST(Norms, OfGeneralMatrices)
{
    using T = TypeParam;
    const std::pair<int, int> sizes[] = {{1, 1},   {5, 3},   {17, 33},  {33, 17},  {256, 2},
                                         {257, 3}, {3, 257}, {257, 33}, {600, 70}, {33, 600}};
    for (const auto& [m, n] : sizes)
        for (const char norm : {'M', 'O', 'I', 'F'}) {
            if (raceChecked && m * n > 257 * 33)
                continue;
            SCOPED_TRACE(testing::Message() << norm << ' ' << m << " x " << n);
            const auto A = Matrix<T>::random(m, n, m + 2, unsigned(m * n));
            const double expected = reference(norm, A);
            EXPECT_NEAR(normOnDevice(norm, A).value, expected, (norm == 'M' ? 2 : 20) * eps<T> * expected);
        }
}

TYPED_TEST(Norms, PartialResultsLieByBlock)
{
    using T = TypeParam;
    // Two blocks per column of 257 rows: the second has the last row alone.
    auto A = Matrix<T>(257, 3, 260);
    visit(A, [](int i, int j, T& x) { x = i == 256 ? T(10 + j) : T(i == 0 ? j + 1 : 0); });
    auto work = normOnDevice('O', A).work;
    work.resize(6);
    EXPECT_EQ(work, (std::vector<tarn::Real<T>>{1, 10, 2, 11, 3, 12}));

    // Seventeen by 33: two by three tiles, x first.
    auto B = Matrix<T>(17, 33);
    visit(B, [](int i, int j, T& x) { x = T(1 + i / 16 + 2 * (j / 16)); });
    EXPECT_EQ(normOnDevice('M', B).work, (std::vector<tarn::Real<T>>{1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(normOnDevice('F', B).work, (std::vector<tarn::Real<T>>{256, 16 * 4, 256 * 9, 16 * 16, 16 * 25, 36}));
}

template <class T>
T notANumber()
{
    using R = tarn::Real<T>;
    if constexpr (tarn::isComplex<T>)
        return T(R(NAN), R(0));
    else
        return R(NAN);
}

TYPED_TEST(Norms, MaximaPassOverNansThatStandOnTheRight)
{
    using T = TypeParam;
    using R = tarn::Real<T>;
    auto A = Matrix<T>(16, 16);
    A.each([](T& x) { x = T(-3); });
    A(8, 12) = notANumber<T>();
    EXPECT_EQ(normOnDevice('M', A).value, R(3)) << "its neighbour in the tree stands on the left";
    A(8, 12) = T(-3);
    A(0, 0) = notANumber<T>();
    const auto first = normOnDevice('M', A);
    EXPECT_TRUE(std::isnan(first.work[0])) << "a NaN on the left stays";
    EXPECT_EQ(first.value, R(0)) << "the running maximum of the next kernel starts from 0";

    A(1, 2) = T(7);
    const auto sums = normOnDevice('O', A);
    EXPECT_TRUE(std::isnan(sums.work[0])) << "a sum has the NaN of its column";
    EXPECT_EQ(sums.value, R(15 * 3 + 7));
    EXPECT_TRUE(std::isnan(normOnDevice('F', A).value));
}

/// The full matrix of which A holds a triangle.
template <class T>
Matrix<T> completed(const Matrix<T>& A, bool upper)
{
    Matrix<T> full(A.m, A.n);
    visit(full, [&](int i, int j, T& x) {
        x = (upper ? i <= j : j <= i) ? A(i, j) : conjugate(A(j, i));
        if constexpr (tarn::isComplex<T>)
            if (i == j)
                x.imag(0);
    });
    return full;
}

TYPED_TEST(Norms, OfSymmetricAndHermitianMatrices)
{
    using T = TypeParam;
    using R = tarn::Real<T>;
    for (const int n : {1, 2, 17, 33, 255, 256, 257, 520})
        for (const bool upper : {false, true}) {
            if (raceChecked && n > 33 && n != 257)
                continue;
            SCOPED_TRACE(testing::Message() << n << (upper ? 'U' : 'L'));
            const auto A = Matrix<T>::random(n, n, n + 1, unsigned(n));
            const double expected = reference('O', completed(A, upper));
            const DeviceArray<T> a(A.elements());
            const DeviceArray<R> work(std::size_t(kernel::lanheWorkspace(n))), result(1);
            kernel::LANHE(upper ? 'U' : 'L', n, a.data(), A.ld, work.data(), result.data());
            EXPECT_NEAR(result.download()[0], expected, 20 * eps<T> * expected);
        }
}

} // namespace
