// How the singular value decomposition goes about it: copies and launches per sweep, copies that come late, and what a
// failure on the way leaves behind.
#include "lapack/svd/svd.h"
#include "support/api.h"
#include "support/device.h"
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

/// The arrays of a decomposition with all vectors of the smaller kind.
struct Arrays
{
    explicit Arrays(const Matrix<float>& input)
        : a(input), u(input.m, std::min(input.m, input.n)), vt(std::min(input.m, input.n), input.n), s(u.n, -7)
    {}
    tarnStatus gesvd()
    {
        return tarnSgesvd('S', 'S', a.m, a.n, a.data(), a.ld, s.data(), u.data(), u.ld, vt.data(), vt.ld);
    }
    friend bool operator==(const Arrays& x, const Arrays& y)
    {
        return identical(x.a, y.a) && identical(x.u, y.u) && identical(x.vt, y.vt) && x.s == y.s;
    }

    Matrix<float> a, u, vt;
    std::vector<float> s;
};

TEST_F(SvdSchedule, EightSweepsAreOneCopyAndOneLaunchPerMatrix)
{
    const int n = 150;
    Arrays arrays(Matrix<float>::random(n, n, n));
    softdevLogStart();
    ASSERT_EQ(arrays.gesvd(), tarnNoError);
    // A letter each: the copy of k sweeps, 16 n k bytes, in which few go by themselves, and launches for eight or for
    // one.
    std::string steps;
    int sweeps = 0;
    for (const SoftdevCall& call : softdevLogTake())
        if (call.name == "cudaMemcpy" && call.ints[2] % (16 * n) == 0 && call.ints[2] <= 8 * 16 * n) {
            const int count = int(call.ints[2]) / (16 * n);
            sweeps += count;
            steps += char('0' + count);
        } else if (call.name == "SWEEPS_k" || call.name == "LASR_k") {
            steps += call.name[0];
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
        const Arrays input(Matrix<float>::random(m, n, m));
        Arrays early = input, late = input;
        ASSERT_EQ(early.gesvd(), tarnNoError);
        softdevSetHold(true);
        softdevSetPoison(true);
        EXPECT_EQ(late.gesvd(), tarnNoError);
        softdevSetHold(false);
        softdevSetPoison(false);
        EXPECT_TRUE(early == late);
    }
}

TEST_F(SvdSchedule, EveryFailureLeavesTheCallersArraysAndNothingBehind)
{
    const Arrays input(Matrix<float>::random(110, 60, 111));
    Arrays arrays = input;
    ASSERT_EQ(arrays.gesvd(), tarnNoError);
    arrays = input;
    softdevLogStart(); // of a call that finds the memory pool filled
    ASSERT_EQ(arrays.gesvd(), tarnNoError);
    const std::vector<SoftdevCall> calls = softdevLogTake();

    const SoftdevLive before = softdevLive();
    int failed = 0;
    for (const char* name : {"cudaMalloc", "cudaMallocHost", "cudaStreamCreate", "cublasSgemm_v2", "cublasSgemv_v2",
                             "cublasSrot_v2", "cublasSswap_v2", "cudaStreamSynchronize", "cudaMemcpyAsync",
                             "cudaMemcpy2DAsync", "gemvt_k", "LASR_k", "SWEEPS_k", "TransposeInplace_k"})
        for (int nth = 1, count = int(countCalls(calls, name)); nth <= count; nth += 1 + count / 4) {
            SCOPED_TRACE(testing::Message() << name << " " << nth);
            arrays = input;
            const bool ofBlas = std::string(name).rfind("cublas", 0) == 0;
            const bool ofMemory = std::string(name).rfind("cudaMalloc", 0) == 0;
            // A single failure of an allocation can make the pool give blocks back and go on.
            softdevFailCall(name, nth, ofBlas ? 13 : ofMemory ? 2 : 719, ofMemory);
            const tarnStatus status = arrays.gesvd();
            softdevClearFailures();
            EXPECT_EQ(status, ofBlas ? tarnBlasError : ofMemory ? tarnInsufficientMemory : tarnRuntimeError);
            EXPECT_TRUE(arrays == input);
            EXPECT_LE(softdevLive().allocations, before.allocations);
            EXPECT_EQ(softdevLive().hostAllocations, 0u);
            EXPECT_EQ(softdevLive().streams, 0u);
            ASSERT_EQ(arrays.gesvd(), tarnNoError) << "the next call must work";
            ++failed;
        }
    EXPECT_GT(failed, 35);
}

} // namespace
