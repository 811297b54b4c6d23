// Failures of every call that a routine makes, one at a time: what they leave behind.
#pragma once

#include "support/device.h"
#include "support/matrix.h"
#include "tarn_core.h"
#include "tarn_lapack.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace test {

/// A call of a routine on arrays that go with it.
struct Call
{
    std::vector<Matrix<float>> arrays;
    std::function<tarnStatus(Call&)> routine;
    std::vector<int> pivots = {};

    tarnStatus run() { return routine(*this); }
};

/// Number of arrays in which two calls of one routine differ.
inline int differences(const Call& x, const Call& y)
{
    int count = x.pivots != y.pivots;
    for (std::size_t k = 0; k < x.arrays.size(); ++k)
        count += !identical(x.arrays[k], y.arrays[k]);
    return count;
}

/// Makes up for a release that was made to fail.
inline void releaseAfterAll(const SoftdevCall& release)
{
    void* const what = reinterpret_cast<void*>(release.ints.at(0));
    EXPECT_EQ(release.name == "cudaFree"       ? cudaFree(what)
              : release.name == "cudaFreeHost" ? cudaFreeHost(what)
                                               : cudaStreamDestroy(static_cast<cudaStream_t>(what)),
              cudaSuccess);
}

/// Makes the calls of a routine fail in turn; of those with one name, `most` to twice as many. A routine that fails
/// tells why and leaves the caller's arrays alone, and one that does not fail delivers. A release and a copy back after
/// the last wait for the device are not reported; the copy may keep its own array from the caller.
inline void expectFailuresLeaveNothingBehind(const Call& input, int most = 8)
{
    Call expected = input, call = input;
    ASSERT_EQ(expected.run(), tarnNoError);
    tarnFreeBuffers(); // every call begins with an empty pool, and so takes the same steps
    softdevLogStart();
    ASSERT_EQ(call.run(), tarnNoError);
    const std::vector<SoftdevCall> log = softdevLogTake();
    tarnFreeBuffers();
    const SoftdevLive before = softdevLive();
    const auto lastWait =
        std::find_if(log.rbegin(), log.rend(), [](const auto& entry) { return entry.name == "cudaDeviceSynchronize"; });
    std::map<std::string, int> seen;
    int made = 0, failed = 0;
    for (int nth = 1; nth <= int(log.size()); ++nth) {
        const std::string& name = log[nth - 1].name;
        if (seen[name]++ % (1 + countCalls(log, name) / most) != 0)
            continue;
        SCOPED_TRACE(testing::Message() << name << ", call " << nth);
        const auto isOf = [&](const char* family) { return name.rfind(family, 0) == 0; };
        const bool releases = isOf("cudaFree") || isOf("cudaStreamDestroy");
        const bool isLate = !releases && nth > log.rend() - lastWait;
        const int code = isOf("cublas") ? 13 : isOf("cudaMalloc") ? 2 : 719;
        call = input;
        softdevLogStart();
        softdevFailCall(nullptr, nth, code);
        const tarnStatus status = call.run();
        softdevClearFailures();
        const std::vector<SoftdevCall> calls = softdevLogTake();
        ++made;
        EXPECT_EQ(status, tarnGetLastStatus());
        if (status != tarnNoError) {
            ++failed;
            EXPECT_FALSE(releases || (isLate && isOf("cudaMemcpy")));
            EXPECT_EQ(status, code == 13 ? tarnBlasError : code == 2 ? tarnInsufficientMemory : tarnRuntimeError);
            EXPECT_EQ(tarnGetErrorInfo(), code == 2 ? 0 : code);
            EXPECT_EQ(differences(call, input), 0);
        } else {
            EXPECT_LE(differences(call, expected), isLate ? 1 : 0);
        }
        if (releases)
            releaseAfterAll(calls.at(nth - 1));
        call = input;
        EXPECT_EQ(call.run(), tarnNoError) << "the next call must not pay for it";
        EXPECT_EQ(differences(call, expected), 0);
        tarnFreeBuffers();
        EXPECT_EQ(softdevLive().allocations, before.allocations);
        EXPECT_EQ(softdevLive().hostAllocations, before.hostAllocations);
        EXPECT_EQ(softdevLive().streams, before.streams);
    }
    EXPECT_GT(failed, made / 2);
}

} // namespace test
