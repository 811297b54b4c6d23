// The wrappers of cuBLAS: letters become enumerators, arguments keep their order, and a failure is kept for the end of
// the routine. The matrix routines' results are tested with the exported routines.
#include "blas/cublas.h"
#include "blas/reference.h"
#include "frame/error_state.h"
#include "support/api.h"
#include "support/device.h"

#include <gtest/gtest.h>

namespace {

using namespace test;
using C = tarn::Complex<float>;
namespace cublas = tarn::cublas;

class Cublas : public WithControls
{
protected:
    const Initialized library;

    /// The integers of the one cuBLAS call that `run` makes, without the handle.
    template <class Run>
    static std::vector<long long> integersOf(const Run& run)
    {
        softdevLogStart();
        run();
        for (const SoftdevCall& call : softdevLogTake())
            if (call.name.rfind("cublas", 0) == 0 && call.name.find("_v2") != std::string::npos && call.ints.size() > 2)
                return {call.ints.begin() + 1, call.ints.end()};
        return {};
    }
};

TEST_F(Cublas, LettersBecomeEnumerators)
{
    const DeviceArray<float> a(std::vector<float>(16, 0));
    const auto letters = [&](char side, char uplo, char trans, char diag) {
        auto all = integersOf([&] { cublas::trmm(side, uplo, trans, diag, 2, 2, 1.f, a.data(), 2, a.data() + 4, 2); });
        all.resize(4);
        return all;
    };
    using Letters = std::vector<long long>;
    EXPECT_EQ(letters('L', 'L', 'N', 'N'), (Letters{0, 0, 0, 0}));
    EXPECT_EQ(letters('R', 'U', 'T', 'U'), (Letters{1, 1, 1, 1}));
    EXPECT_EQ(letters('r', 'u', 'c', 'u'), (Letters{1, 1, 2, 1}));
    EXPECT_EQ(letters('l', 'l', 't', 'n'), (Letters{0, 0, 1, 0}));
    EXPECT_EQ(letters('?', 'X', '0', '\0'), (Letters{0, 0, 0, 0}));
}

TEST_F(Cublas, TrmmWorksInPlace)
{
    const DeviceArray<float> a(std::vector<float>{2, 0, 0, 3}), b(std::vector<float>{1, 2, 3, 4});
    EXPECT_EQ(cublas::trmm('L', 'U', 'N', 'N', 2, 2, 1.f, a.data(), 2, b.data(), 2), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(b.download(), (std::vector<float>{2, 6, 6, 12}));
}

TEST_F(Cublas, FirstFailureIsKeptUntilItIsRead)
{
    const DeviceArray<float> a(std::vector<float>(16, 0));
    EXPECT_EQ(cublas::gemv('N', 2, 2, 1.f, a.data(), 2, a.data(), 0, 0.f, a.data() + 8, 1),
              CUBLAS_STATUS_INVALID_VALUE);
    softdevFailCall("cublasSaxpy_v2", 1, CUBLAS_STATUS_EXECUTION_FAILED);
    EXPECT_EQ(cublas::axpy(2, 1.f, a.data(), 1, a.data() + 8, 1), CUBLAS_STATUS_EXECUTION_FAILED);
    EXPECT_EQ(cublas::axpy(2, 1.f, a.data(), 1, a.data() + 8, 1), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(tarn::takeCublasError(), CUBLAS_STATUS_INVALID_VALUE);
    EXPECT_EQ(tarn::takeCublasError(), CUBLAS_STATUS_SUCCESS);
}

TEST_F(Cublas, VectorRoutines)
{
    const DeviceArray<C> x(std::vector<C>{{1, 2}, {0, 0}, {3, -1}}), y(std::vector<C>{{1, 0}, {0, 1}});
    const auto expect = [](const DeviceArray<C>& array, const std::vector<C>& expected) {
        const auto values = array.download();
        for (std::size_t i = 0; i < expected.size(); ++i)
            EXPECT_LT(std::abs(wide(values[i]) - wide(expected[i])), 1e-6) << i;
    };
    cublas::axpy(2, C(0, 1), x.data(), 2, y.data(), 1);
    expect(y, {{-1, 1}, {1, 4}});
    cublas::swap(2, x.data(), 2, y.data(), 1);
    expect(x, {{-1, 1}, {0, 0}, {1, 4}});
    expect(y, {{1, 2}, {3, -1}});
    cublas::copy(2, y.data(), 1, x.data(), 2);
    expect(x, {{1, 2}, {0, 0}, {3, -1}});
    cublas::csscal(3, 0.5f, x.data(), 1);
    expect(x, {{0.5f, 1}, {0, 0}, {1.5f, -0.5f}});
    cublas::rot(1, x.data(), 1, y.data(), 1, 0.6f, C(0, 0.8f));
    expect(x, {{0.3f - 1.6f, 0.6f + 0.8f}});
    expect(y, {{0.6f - 0.8f, 1.2f + 0.4f}});
    const DeviceArray<C> triangle(std::vector<C>{{9, 9}, {9, 9}, {0, 1}, {9, 9}}), v(std::vector<C>{{1, 0}, {2, 0}});
    cublas::trmv('U', 'C', 'U', 2, triangle.data(), 2, v.data(), 1);
    expect(v, {{1, 0}, {2, -1}});
    const DeviceArray<float> s(std::vector<float>{1, 2, 3});
    cublas::scal(2, 3.f, s.data(), 2);
    EXPECT_EQ(s.download(), (std::vector<float>{3, 2, 9}));
}

} // namespace
