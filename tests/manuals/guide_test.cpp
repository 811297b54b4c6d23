// Figures and promises of docs/guide that no other test looks at.
#include "memory/memory_pool.h"
#include "support/device.h"
#include "support/matrix.h"
#include "tarn_lapack.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

using namespace test;
using Vector = std::vector<float>;

Vector random(std::size_t elements)
{
    Vector v(elements);
    std::generate(v.begin(), v.end(), Random<float>());
    return v;
}

class Guide : public WithControls
{
protected:
    void SetUp() override
    {
        WithControls::SetUp();
        tarn::exactPoolBlocks = true;
        ASSERT_EQ(tarnInitialize(), tarnNoError);
    }
    void TearDown() override
    {
        WithControls::TearDown();
        tarnShutdown();
    }

    /// Elements of device memory that a call needs at a time.
    template <class Call>
    static std::size_t peak(Call&& call)
    {
        tarnFreeBuffers();
        const std::size_t before = softdevLive().bytes;
        softdevResetPeak();
        EXPECT_EQ(call(), tarnNoError);
        return (softdevLive().peakBytes - before) / sizeof(float);
    }
};

TEST_F(Guide, MemoryOfACall)
{
    // 672 is the next multiple of 96; 1536 is one already, but also one of 2048 bytes, and moves on by 96.
    for (const auto& sizes : {std::pair{608, 672}, std::pair{1536, 1632}}) {
        const int n = sizes.first, ld = sizes.second;
        Vector a = random(std::size_t(n) * n), b = a, c = a, s(n);
        std::vector<int> ipiv(n);
        EXPECT_EQ(peak([&] { return tarnSgemm('N', 'N', n, n, n, 1, a.data(), n, b.data(), n, 0, c.data(), n); }),
                  std::size_t(3) * ld * n);
        DeviceArray<float> deviceA(a), tau(n), u(1);
        DeviceArray<int> pivots(n);
        EXPECT_EQ(peak([&] { return tarnDeviceSgetrf(n, n, deviceA.data(), n, pivots.data()); }), 192u * n);

        const std::size_t geqrf = peak([&] { return tarnDeviceSgeqrf(n, n, deviceA.data(), n, tau.data()); });
        EXPECT_EQ(geqrf, 96u * (2 * n + 2 * 96));
        const std::size_t gesvd = peak([&] {
            return tarnDeviceSgesvd('N', 'N', n, n / 2, deviceA.data(), n, tau.data(), nullptr, 1, nullptr, 1);
        });
        EXPECT_LE(gesvd, 32u * (2 * ld) + 96u * (n + n / 2 + 2 * 96) + 4u * n);
    }
}

TEST_F(Guide, TheSameCallGivesTheSameBits)
{
    constexpr int n = 600, nrhs = 3, threads = 3;
    const Vector a = random(n * n), b = random(n * nrhs);
    const auto solve = [&] {
        Vector factors = a, x = b;
        std::vector<int> ipiv(n);
        EXPECT_EQ(tarnSgesv(n, nrhs, factors.data(), n, ipiv.data(), x.data(), n), tarnNoError);
        return x;
    };
    const auto fit = [&] {
        Vector factors = a, x = b;
        EXPECT_EQ(tarnSgels('N', n, n / 2, nrhs, factors.data(), n, x.data(), n), tarnNoError);
        return x;
    };
    const Vector x = solve(), y = fit();
    std::vector<Vector> xs(threads), ys(threads);
    std::vector<std::thread> callers;
    for (int i = 0; i < threads; ++i)
        callers.emplace_back([&, i] {
            xs[i] = solve();
            ys[i] = fit();
        });
    for (std::thread& caller : callers)
        caller.join();
    for (int i = 0; i < threads; ++i)
        EXPECT_TRUE(xs[i] == x && ys[i] == y) << "caller " << i;

    DeviceArray<float> deviceA(a), deviceB(b);
    DeviceArray<int> pivots(n);
    EXPECT_EQ(tarnDeviceSgesv(n, nrhs, deviceA.data(), n, pivots.data(), deviceB.data(), n), tarnNoError);
    EXPECT_TRUE(deviceB.download() == x) << "device form";
}

TEST_F(Guide, MoreColumnsThanAGridHasAreRefusedByCudaAlone)
{
    constexpr int most = 1048560;
    Vector a = {2, 1}, b(2 * (most + 1), 2.0f);
    EXPECT_EQ(tarnSgels('T', 2, 1, most + 1, a.data(), 2, b.data(), 2), tarnRuntimeError);
    EXPECT_EQ(tarnGetErrorInfo(), cudaErrorInvalidConfiguration);
    EXPECT_TRUE(a[0] == 2 && b.front() == 2 && b.back() == 2) << "host memory is unchanged";
    EXPECT_EQ(tarnSgels('T', 2, 1, most, a.data(), 2, b.data(), 2), tarnNoError);
    EXPECT_FLOAT_EQ(b[2 * (most - 1)], 0.8f);
}

} // namespace
