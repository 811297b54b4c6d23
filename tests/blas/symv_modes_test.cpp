// The two ways in which the partial sums of symv meet, on one device: atomic additions, and a workspace.
#include "blas/reference.h"
#include "blas/routines.h"
#include "lapack/kernels.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

template <class T>
class SymvModes : public testing::Test
{};

using Types = testing::Types<float, double, tarn::Complex<float>, tarn::Complex<double>>;
TYPED_TEST_SUITE(SymvModes, Types);

/// An order of 1 takes no panel, 33 one with a single valid row or column, 64 and 1216 no bound tests.
TYPED_TEST(SymvModes, AgreeAndTheWorkspaceIsReproducible)
{
    using T = TypeParam;
    const T alpha = scalar<T>(-0.7, 0.4);
    for (const int n : {1, 33, 64, 1216, 1500})
        for (const char uplo : {'U', 'l'})
            for (const T beta : {T(0), scalar<T>(0.6, -1.3)}) {
                SCOPED_TRACE(testing::Message() << uplo << " " << n);
                auto A = Matrix<T>::random(n, n, n);
                poisonOtherTriangle(uplo, A);
                const auto x = Matrix<T>::random(n, 1, n, 2);
                auto y = Matrix<T>::random(n, 1, n, 3);
                if (beta == T(0))
                    y.each([](T& value) { value = notANumber<T>(); });
                const auto full = symmetric(uplo, tarn::isComplex<T>, A);
                const DeviceArray<T> a(A.elements()), xs(x.elements());
                DeviceArray<T> work(std::vector<T>(tarn::kernel::symvWorkspace(n), notANumber<T>()));
                const auto product = [&](T* workspace) {
                    DeviceArray<T> ys(y.elements());
                    tarn::kernel::symv(uplo, n, alpha, a.data(), n, xs.data(), 1, beta, ys.data(), 1, workspace);
                    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
                    auto result = y;
                    result.elements() = ys.download();
                    return result;
                };
                const auto byAtomics = product(nullptr), byWorkspace = product(work.data());
                EXPECT_LE(ratio(byAtomics, {{alpha, full, x}}, beta, y), 3);
                EXPECT_LE(ratio(byWorkspace, {{alpha, full, x}}, beta, y), 3);
                for (int repeat = 0; repeat < 3; ++repeat)
                    EXPECT_TRUE(identical(product(work.data()), byWorkspace));
            }
}

} // namespace
