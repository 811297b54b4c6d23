// How getrf and gesv go about it: the order of copies, kernels and products, what they allocate, and what a failure on
// the way leaves behind.
#include "support/api.h"
#include "support/device.h"
#include "support/failures.h"
#include "support/residuals.h"
#include "support/schedule.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>

#ifndef TARN_CUDA
#    include <softdev_launch.h>
#endif

namespace {

using namespace test;

class LuSchedule : public WithControls
{
protected:
    /// Factorises a random matrix and returns the calls that it took.
    std::vector<SoftdevCall> logOfGetrf(int m, int n)
    {
        auto A = Matrix<float>::random(m, n, m);
        std::vector<int> ipiv(std::min(m, n));
        softdevLogStart();
        EXPECT_EQ(tarnSgetrf(m, n, A.data(), A.ld, ipiv.data()), tarnNoError);
        return softdevLogTake();
    }

    const Initialized library;
};

TEST_F(LuSchedule, ThreePathsByShape)
{
    const auto small = logOfGetrf(100, 5000); // min(m, n) within one block of 192
    EXPECT_EQ(countCalls(small, "cublasSgemm_v2") + countCalls(small, "KernelLASWP"), 0);

    for (const auto& [m, n] : {std::pair{512, 512}, {1000, 999}}) {
        const auto natural = logOfGetrf(m, n);
        EXPECT_EQ(countCalls(natural, "TransposeInplace_k"), 0);
        EXPECT_GT(countCalls(natural, "KernelLASWP"), 0);
        EXPECT_EQ(countCalls(natural, "KernelLASWPCOL"), 0);
    }

    const auto transposed = logOfGetrf(513, 513);
    EXPECT_EQ(countCalls(transposed, "TransposeInplace_k"), 2);
    EXPECT_EQ(countCalls(transposed, "KernelLASWP"), 0);
    EXPECT_GT(countCalls(transposed, "KernelLASWPCOL"), 0);
}

TEST_F(LuSchedule, TheNextPanelLeavesBeforeTheRemainderIsUpdated)
{
    // n = 1000: passes from columns 1, 193, 385, 577, 769 and 961; four of them have a remainder, five a look-ahead.
    const auto log = logOfGetrf(1000, 1000);
    EXPECT_EQ(countCalls(log, "cublasStrsm_v2"), 5 + 4);
    EXPECT_EQ(countCalls(log, "cublasSgemm_v2"), 5 + 4);

    // A pass waits for its panel, sends it back and waits for that; then the look-ahead, the next panel, the remainder.
    const std::string pass = "wcwpcp", lastWithLookAhead = "wcwpc", last = "wcw";
    EXPECT_EQ(steps(log), "sac" + pass + pass + pass + pass + lastWithLookAhead + last + "sDDss");
    expectCopiesThroughOneBuffer(log);
    expectCopiesThroughOneBuffer(logOfGetrf(1000, 999));
}

TEST_F(LuSchedule, InterchangesTravelSixteenAtATimeWithoutDeviceMemory)
{
    const auto log = logOfGetrf(400, 400); // panels of 192, 192 and 16 columns, natural storage
    // Left parts: none, 192 columns, 384 columns; look-ahead: 192, 16; remainder: 16. Each in ceil(jb / 16) launches.
    EXPECT_EQ(countCalls(log, "KernelLASWP"), 12 + 1 + 12 + 12 + 12);
}

#ifndef TARN_CUDA
TEST_F(LuSchedule, LargePanelsWaitForTheirTurnOnTheCpu)
{
    for (const auto& [n, waits] : {std::pair{50, false}, {150, true}}) {
        auto A = Matrix<float>::random(n, n, n);
        const auto solve = [&a = A] {
            std::vector<int> ipiv(std::size_t(a.n));
            return tarnSgetrf(a.n, a.n, a.data(), a.ld, ipiv.data());
        };
        softdevTakeCpuTurn();
        auto done = std::async(std::launch::async, solve);
        const auto state = done.wait_for(std::chrono::milliseconds(waits ? 50 : 10'000));
        EXPECT_EQ(state == std::future_status::ready, !waits) << n;
        softdevLeaveCpuTurn();
        EXPECT_EQ(done.get(), tarnNoError);
    }
}

TEST_F(LuSchedule, CallersTakeASeatAndGiveItBack)
{
    auto A = Matrix<float>::random(50, 50, 50);
    std::vector<int> pivots(50);
    const auto takeAll = [] {
        for (int i = 0; i < softdevSeats(); ++i)
            EXPECT_TRUE(softdevTakeSeat());
    };
    EXPECT_EQ(tarnSgetrf(50, 50, A.data(), 50, pivots.data()), tarnNoError);
    EXPECT_EQ(tarnSgetrf(50, 50, A.data(), 49, pivots.data()), tarnArgumentError);
    takeAll();
    auto done = std::async(std::launch::async, [&] { return tarnSgetrf(50, 50, A.data(), 50, pivots.data()); });
    EXPECT_EQ(done.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    for (int i = 0; i < softdevSeats(); ++i)
        softdevLeaveSeat();
    EXPECT_EQ(done.get(), tarnNoError);

    takeAll();
    EXPECT_EQ(tarnSgetrf(50, 50, A.data(), 50, pivots.data()), tarnNoError) << "after some time without a seat";
    EXPECT_FALSE(softdevTakeSeat()) << "it gave back none of the others'";
    for (int i = 0; i < softdevSeats(); ++i)
        softdevLeaveSeat();
}
#endif

TEST_F(LuSchedule, HeldBackCopiesDoNotChangeTheResult)
{
    // With every copy made as late as the rules allow, a missing wait or a buffer used too early shows.
    for (const int n : {500, 800}) {
        const auto A = Matrix<float>::random(n, n, n);
        auto early = A, late = A;
        std::vector<int> earlyPivots(n), latePivots(n);
        ASSERT_EQ(tarnSgetrf(n, n, early.data(), n, earlyPivots.data()), tarnNoError);
        softdevSetHold(true);
        softdevSetPoison(true);
        EXPECT_EQ(tarnSgetrf(n, n, late.data(), n, latePivots.data()), tarnNoError);
        softdevSetHold(false);
        softdevSetPoison(false);
        EXPECT_LT(luRatio(A, late, latePivots), 30);
        EXPECT_EQ(earlyPivots, latePivots);
    }
}

TEST_F(LuSchedule, MemoryIsTwoMirrorsPivotsAndPanels)
{
    const int n = 1500, nrhs = 3, nb = 192;
    auto A = Matrix<float>::random(n, n, n), B = Matrix<float>::random(n, nrhs, n);
    std::vector<int> ipiv(n);
    const auto gesv = [&] { return tarnSgesv(n, nrhs, A.data(), n, ipiv.data(), B.data(), n); };
    ASSERT_EQ(gesv(), tarnNoError);
    const SoftdevLive before = softdevLive();
    softdevResetPeak();
    A = Matrix<float>::random(n, n, n);
    ASSERT_EQ(gesv(), tarnNoError);

    // 1500 rows take 1632: the next multiple of 96, 1536, falls on the stride of 2048 bytes.
    const std::size_t mirrors = sizeof(float) * 1632u * (n + nrhs), pivots = sizeof(int) * 1504u;
    const std::size_t panel = sizeof(float) * n * nb;
    EXPECT_EQ(softdevLive().peakBytes, before.bytes + mirrors + pivots + panel);
    EXPECT_EQ(softdevLive().allocations, before.allocations);
    EXPECT_EQ(softdevLive().bytes, before.bytes);
    EXPECT_EQ(softdevLive().hostAllocations, 0u);
    EXPECT_EQ(softdevLive().streams, 0u);
}

TEST_F(LuSchedule, EveryFailureLeavesTheCallersArraysAndNothingBehind)
{
    const int n = 600, nrhs = 2;
    const auto gesv = [](Call& x) {
        auto &A = x.arrays[0], &B = x.arrays[1];
        return tarnSgesv(n, nrhs, A.data(), A.ld, x.pivots.data(), B.data(), B.ld);
    };
    expectFailuresLeaveNothingBehind(
        {{Matrix<float>::random(n, n, n + 1), Matrix<float>::random(n, nrhs, n)}, gesv, std::vector<int>(n, -7)}, 4);
}

} // namespace
