// The matrix-vector kernels, at sizes around their tiles.
#include "kernels/fixture.h"
#include "lapack/kernels.h"

#include <complex>

namespace {

using namespace test;
namespace kernel = tarn::kernel;
using Wide = std::complex<double>;

template <class T>
class Products : public KernelTest<T>
{};
TYPED_TEST_SUITE(Products, ElementTypes);

/// y of n elements inc apart must be alpha op(x) + beta y0 in the sense of level 2, where row(i) gives the sum of row
/// i.
template <class T, class Row>
void expectProduct(const Matrix<T>& y, const Matrix<T>& y0, T alpha, T beta, int terms, const Row& row)
{
    for (int i = 0; i < y.n; ++i) {
        const Wide expected = wide(alpha) * row(i) + wide(beta) * wide(y0(0, i));
        EXPECT_LE(std::abs(wide(y(0, i)) - expected), 3 * eps<T> * (terms + 2)) << i;
    }
    EXPECT_TRUE(y.paddingIntact());
}

TYPED_TEST(Products, OfTransposedMatrices)
{
    using T = TypeParam;
    const std::pair<int, int> sizes[] = {{1, 1}, {17, 33}, {33, 17}, {257, 40}, {40, 257}, {530, 33}};
    for (const auto& [m, n] : sizes)
        for (const char trans : {'T', 'C'}) {
            SCOPED_TRACE(testing::Message() << trans << ' ' << m << " x " << n);
            const auto A = Matrix<T>::random(m, n, m + 1, 5), x = Matrix<T>::random(1, m, 2, 6),
                       y0 = Matrix<T>::random(1, n, 3, 7);
            auto y = y0;
            const DeviceArray<T> a(A.elements()), dx(x.elements()), dy(y.elements());
            const T alpha = T(2), beta = T(-1);
            kernel::gemv(trans, m, n, alpha, a.data(), A.ld, dx.data(), x.ld, beta, dy.data(), y.ld);
            download(y, dy);
            expectProduct(y, y0, alpha, beta, A.m, [&, rows = m, op = trans](int j) {
                Wide sum = 0;
                for (int i = 0; i < rows; ++i)
                    sum += wide(op == 'C' ? conjugate(A(i, j)) : A(i, j)) * wide(x(0, i));
                return sum;
            });
        }
}

TYPED_TEST(Products, OfSymmetricAndHermitianMatrices)
{
    using T = TypeParam;
    for (const int n : {1, 17, 32, 33, 96, 130})
        for (const char uplo : {'U', 'L'})
            for (const bool reproducible : {false, true}) {
                SCOPED_TRACE(testing::Message() << uplo << n << reproducible);
                const auto A = Matrix<T>::random(n, n, n + 1, 5), x = Matrix<T>::random(1, n, 2, 6),
                           y0 = Matrix<T>::random(1, n, 3, 7);
                auto y = y0;
                const DeviceArray<T> a(A.elements()), dx(x.elements()), dy(y.elements()),
                    work(std::size_t(kernel::symvWorkspace(n)));
                const T alpha = T(2), beta = T(-1);
                kernel::symv(uplo, n, alpha, a.data(), A.ld, dx.data(), x.ld, beta, dy.data(), y.ld,
                             reproducible ? work.data() : nullptr);
                download(y, dy);
                expectProduct(y, y0, alpha, beta, n, [&](int i) {
                    Wide sum = 0;
                    for (int j = 0; j < n; ++j) {
                        const bool stored = uplo == 'U' ? i <= j : j <= i;
                        Wide element = stored ? wide(A(i, j)) : std::conj(wide(A(j, i)));
                        if (i == j)
                            element = element.real();
                        sum += element * wide(x(0, j));
                    }
                    return sum;
                });
            }
}

} // namespace
