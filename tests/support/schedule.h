// What a log of calls tells about the overlap of copies, products and panels.
#pragma once

#include "support/device.h"

#include <map>

namespace test {

/// The calls of a log that order things, a letter each: products (p), copies beside the default stream (c), copies that
/// the host waits for (s), waits for a stream (w) and for the device (D), and allocations of page-locked memory (a).
inline std::string steps(const std::vector<SoftdevCall>& log)
{
    static const std::map<std::string, char> letters = {{"cublasSgemm_v2", 'p'},        {"cudaMemcpyAsync", 'c'},
                                                        {"cudaMemcpy2DAsync", 'c'},     {"cudaMemcpy", 's'},
                                                        {"cudaMemcpy2D", 's'},          {"cudaStreamSynchronize", 'w'},
                                                        {"cudaDeviceSynchronize", 'D'}, {"cudaMallocHost", 'a'}};
    std::string steps;
    for (const SoftdevCall& call : log)
        if (const auto letter = letters.find(call.name); letter != letters.end())
            steps += letter->second;
    return steps;
}

/// Expects one page-locked buffer, and all copies beside the default stream to pass through it: from pageable memory
/// they would not run beside anything.
inline void expectCopiesThroughOneBuffer(const std::vector<SoftdevCall>& log)
{
    ASSERT_EQ(countCalls(log, "cudaMallocHost"), 1);
    ASSERT_EQ(countCalls(log, "cudaFreeHost"), 1);
    long long begin = 0, bytes = 0;
    int copies = 0;
    for (const SoftdevCall& call : log) {
        if (call.name == "cudaMallocHost")
            bytes = call.ints[1];
        if (call.name == "cudaFreeHost")
            begin = call.ints[0];
    }
    for (const SoftdevCall& call : log) {
        const bool linear = call.name == "cudaMemcpyAsync";
        if (!linear && call.name != "cudaMemcpy2DAsync")
            continue;
        const bool toHost = call.ints[linear ? 3 : 6] == cudaMemcpyDeviceToHost;
        const long long host = call.ints[toHost ? 0 : linear ? 1 : 2];
        EXPECT_TRUE(begin <= host && host < begin + bytes) << call.name;
        ++copies;
    }
    EXPECT_GT(copies, 0);
}

} // namespace test
