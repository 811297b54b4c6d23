// How the orthogonal factorisations go about it: the order of copies and products, what they allocate, and what a
// failure on the way leaves behind.
#include "qr/factors.h"
#include "support/failures.h"
#include "support/forms.h"
#include "support/schedule.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

constexpr int nb = 96;

class QrSchedule : public WithControls
{
protected:
    /// Factorises a random matrix and returns the calls that it took.
    std::vector<SoftdevCall> logOfGeqrf(int m, int n)
    {
        auto A = Matrix<float>::random(m, n, std::max(1, m));
        std::vector<float> tau(std::min(m, n));
        softdevLogStart();
        EXPECT_EQ(tarnSgeqrf(m, n, A.data(), A.ld, tau.data()), tarnNoError);
        return softdevLogTake();
    }

    const Initialized library;
};

TEST_F(QrSchedule, TheNextPanelLeavesBeforeTheRestIsUpdated)
{
    // Rounds from columns 1, 97, 193 and 289. Each: wait for the panel, send it and T, T^H V^H, two products for the
    // next panel, its copy, and two for the rest, which the last round has not got. The last look-ahead is not used.
    const std::string begin = "ssac", round = "wsspppcpp", last = "wsspppc", end = "wsssDDss";
    EXPECT_EQ(steps(logOfGeqrf(500, 400)), begin + round + round + round + last + end);
    EXPECT_EQ(steps(logOfGeqrf(nb + 1, 3 * nb)), begin + round + end);
    EXPECT_EQ(steps(logOfGeqrf(5 * nb, nb)), "sssssDDss") << "one panel is the CPU's alone";
    expectCopiesThroughOneBuffer(logOfGeqrf(500, 400));
    EXPECT_EQ(countCalls(logOfGeqrf(0, 5), "cudaMalloc"), 0);
}

TEST_F(QrSchedule, ReflectorsOfOnePanelAreTheCpusAlone)
{
    const auto logOfGels = [](int m, int n) {
        auto A = Matrix<float>::random(m, n, m), B = Matrix<float>::random(std::max(m, n), 2, std::max(m, n));
        softdevLogStart();
        EXPECT_EQ(tarnSgels('N', m, n, 2, A.data(), A.ld, B.data(), B.ld), tarnNoError);
        return softdevLogTake();
    };
    for (const auto& [m, n] : {std::pair{5 * nb, nb}, {nb, 5 * nb}}) {
        const auto log = logOfGels(m, n);
        EXPECT_EQ(countCalls(log, "cublasSgemm_v2") + countCalls(log, "cublasStrmm_v2"), 0);
        EXPECT_EQ(countCalls(log, "cublasStrsm_v2"), 1);
    }
    // A block reflector takes three triangular products: one in the LQ factorisation, two in the product with its Q.
    EXPECT_EQ(countCalls(logOfGels(nb + 1, 300), "cublasStrmm_v2"), 3 + 6);
}

TEST_F(QrSchedule, HeldBackCopiesDoNotChangeTheResult)
{
    // With every copy made as late as the rules allow, a missing wait or a buffer used too early shows.
    for (const auto& [m, n] : {std::pair{500, 400}, {200, 900}}) {
        const auto A = Matrix<float>::random(m, n, m);
        auto early = A, late = A;
        std::vector<float> earlyTau(std::min(m, n)), lateTau = earlyTau;
        ASSERT_EQ(tarnSgeqrf(m, n, early.data(), m, earlyTau.data()), tarnNoError);
        softdevSetHold(true);
        softdevSetPoison(true);
        EXPECT_EQ(tarnSgeqrf(m, n, late.data(), m, lateTau.data()), tarnNoError);
        softdevSetHold(softdevChecked());
        softdevSetPoison(false);
        EXPECT_LT(factorRatio(qr, A, late, lateTau), 30);
        EXPECT_TRUE(identical(early, late));
        EXPECT_EQ(earlyTau, lateTau);
    }
}

TEST_F(QrSchedule, WorkspaceComesFromThePool)
{
    const int m = 1000, n = 300;
    logOfGeqrf(m, n);
    const SoftdevLive before = softdevLive();
    softdevResetPeak();
    logOfGeqrf(m, n);
    // 1000 rows take 1056, tau 384.
    EXPECT_EQ(softdevLive().peakBytes, before.bytes + sizeof(float) * (1056u * n + 384u));
    EXPECT_EQ(softdevLive().bytes, before.bytes);
    EXPECT_EQ(softdevLive().hostAllocations, before.hostAllocations);
    EXPECT_EQ(softdevLive().streams, before.streams);
}

Call leastSquares(int m, int n)
{
    const int rows = std::max(m, n);
    return {{Matrix<float>::random(m, n, m + 2), Matrix<float>::random(rows, 3, rows + 1)}, [=](Call& x) {
                auto &A = x.arrays[0], &B = x.arrays[1];
                return tarnSgels('N', m, n, 3, A.data(), A.ld, B.data(), B.ld);
            }};
}

Call constrained()
{
    return {{Matrix<float>::random(220, 210, 221), Matrix<float>::random(99, 210, 99),
             Matrix<float>::random(220, 1, 220), Matrix<float>::random(99, 1, 99), Matrix<float>(210, 1)},
            [](Call& call) {
                auto& x = call.arrays;
                return tarnSgglse(220, 210, 99, x[0].data(), x[0].ld, x[1].data(), x[1].ld, x[2].data(), x[3].data(),
                                  x[4].data());
            }};
}

TEST_F(QrSchedule, EveryFailureLeavesTheCallersArraysAndNothingBehind)
{
    for (const Call& call : {leastSquares(230, 200), leastSquares(100, 150), constrained()})
        expectFailuresLeaveNothingBehind(call);
}

TEST_F(QrSchedule, APoolThatCannotGrowIsReported)
{
    const int m = 30000, n = nb + 1; // a product of nb by m elements is more than any block that the pool begins with
    const auto A = Matrix<float>::random(m, n, m);
    logOfGeqrf(200, 200);
    const SoftdevLive before = softdevLive();
    auto a = A;
    std::vector<float> tau(n, -7);
    softdevFailCall("cudaMalloc", 3, 2, true); // after the mirrors of a and tau
    EXPECT_EQ(tarnSgeqrf(m, n, a.data(), m, tau.data()), tarnInsufficientMemory);
    softdevClearFailures();
    EXPECT_TRUE(identical(a, A));
    EXPECT_EQ(std::count(tau.begin(), tau.end(), -7), n);
    EXPECT_LE(softdevLive().bytes, before.bytes);
    EXPECT_EQ(softdevLive().hostAllocations, before.hostAllocations);
    ASSERT_EQ(tarnSgeqrf(m, n, a.data(), m, tau.data()), tarnNoError);
    EXPECT_LT(factorRatio(qr, A, a, tau), 30);
}

} // namespace
