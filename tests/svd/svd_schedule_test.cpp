// How the singular value decomposition goes about it: copies and launches per sweep, copies that come late, and what a
// failure on the way leaves behind.
#include "lapack/svd/svd.h"
#include "support/api.h"
#include "support/device.h"
#include "support/failures.h"
#include "support/matrix.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

namespace {

using namespace test;

class SvdSchedule : public WithControls
{
protected:
    const Initialized library;
};

/// A decomposition with all vectors of the smaller kind.
Call decomposition(int m, int n)
{
    const int k = std::min(m, n);
    return {{Matrix<float>::random(m, n, m + 1), Matrix<float>(m, k), Matrix<float>(k, n), Matrix<float>(k, 1)},
            [](Call& x) {
                auto &a = x.arrays[0], &u = x.arrays[1], &vt = x.arrays[2];
                return tarnSgesvd('S', 'S', a.m, a.n, a.data(), a.ld, x.arrays[3].data(), u.data(), u.ld, vt.data(),
                                  vt.ld);
            }};
}

TEST_F(SvdSchedule, EightSweepsAreOneCopyAndOneLaunchPerMatrix)
{
    const int n = 150;
    Call call = decomposition(n, n);
    softdevLogStart();
    ASSERT_EQ(call.run(), tarnNoError);
    // A letter each: the copy of k sweeps, 16 n k bytes, in which few go by themselves, and launches for eight or for
    // one.
    std::string steps;
    int sweeps = 0;
    for (const SoftdevCall& made : softdevLogTake())
        if (made.name == "cudaMemcpy" && made.ints[2] % (16 * n) == 0 && made.ints[2] <= 8 * 16 * n) {
            const int count = int(made.ints[2]) / (16 * n);
            sweeps += count;
            steps += char('0' + count);
        } else if (made.name == "SWEEPS_k" || made.name == "LASR_k") {
            steps += made.name[0];
        }
    EXPECT_GT(sweeps, n);
    EXPECT_LT(sweeps, 4 * n);
    int whole = 0;
    for (std::size_t i = 0; i < steps.size();) {
        const int count = steps[i] - '0';
        const std::string launches = count == 8 ? "SS" : std::string(2 * std::size_t(count), 'L');
        ASSERT_EQ(steps.substr(i + 1, launches.size()), launches) << steps;
        whole += count == 8;
        i += 1 + launches.size();
    }
    EXPECT_GT(8 * whole, sweeps / 2);
}

TEST_F(SvdSchedule, EachColumnAndRowOfAPanelIsOneProductOnTheDevice)
{
    // One panel of 32, and a last block of any size up to 32 on the host; values alone need no sweep.
    for (const auto& [n, panels] : {std::pair{32, 0}, {33, 1}, {64, 1}, {65, 2}}) {
        Matrix<float> A = Matrix<float>::random(n, n, n);
        std::vector<float> s(n);
        softdevLogStart();
        ASSERT_EQ(tarnSgesvd('N', 'N', n, n, A.data(), n, s.data(), nullptr, 1, nullptr, 1), tarnNoError);
        const auto log = softdevLogTake();
        EXPECT_EQ(countCalls(log, "gemvt_k"), 32 * panels);
        EXPECT_EQ(countCalls(log, "cublasSgemv_v2"), 32 * panels);
        EXPECT_EQ(countCalls(log, "cublasSgemm_v2"), 2 * panels);
        EXPECT_EQ(countCalls(log, "LASR_k"), 0);
        // The host waits for the two parts of a panel, and for one vector of each column and of each row.
        EXPECT_EQ(countCalls(log, "cudaStreamSynchronize"), (2 + 2 * 32) * panels);
    }
}

TEST_F(SvdSchedule, HeldBackCopiesDoNotChangeTheResult)
{
    // With every copy made as late as the rules allow, a missing wait or a buffer used too early shows.
    for (const auto& [m, n] : {std::pair{150, 140}, {140, 150}, {200, 90}}) {
        Call early = decomposition(m, n), late = early;
        ASSERT_EQ(early.run(), tarnNoError);
        softdevSetHold(true);
        softdevSetPoison(true);
        EXPECT_EQ(late.run(), tarnNoError);
        softdevSetHold(false);
        softdevSetPoison(false);
        EXPECT_EQ(differences(early, late), 0);
    }
}

TEST_F(SvdSchedule, EveryFailureLeavesTheCallersArraysAndNothingBehind)
{
    expectFailuresLeaveNothingBehind(decomposition(110, 60), 4);
}

} // namespace
