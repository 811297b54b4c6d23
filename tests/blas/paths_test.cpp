// Which way each routine goes: one cuBLAS call, the recursion and its steps, or the library's kernels; and what its
// failures leave behind.
#include "blas/routines.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace test;
using C = tarn::Complex<float>;
using Calls = std::vector<std::string>;

/// The call as far as paths are concerned: a kernel or memset by its name, a matrix routine of cuBLAS with its
/// dimensions, such as "gemm 3 4 5"; empty for others.
std::string described(const SoftdevCall& call)
{
    // Place of the first dimension among the integers, after handle and letters, and number of dimensions.
    static const std::map<std::string, std::pair<int, int>> dimensions{
        {"gemm", {3, 3}}, {"trsm", {5, 2}},  {"trmm", {5, 2}},  {"symm", {3, 2}}, {"hemm", {3, 2}}, {"syrk", {3, 2}},
        {"herk", {3, 2}}, {"syr2k", {3, 2}}, {"her2k", {3, 2}}, {"gemv", {2, 2}}, {"symv", {2, 1}}, {"hemv", {2, 1}}};
    if (call.name.rfind("cublas", 0) != 0)
        return call.name == "cudaMemset" || call.name.rfind("_k") + 2 == call.name.size() ? call.name : "";
    const auto place = dimensions.find(call.name.substr(7, call.name.size() - 10));
    if (place == dimensions.end())
        return {};
    std::string text = place->first;
    for (int i = 0; i < place->second.second; ++i)
        text += ' ' + std::to_string(call.ints[place->second.first + i]);
    return text;
}

template <class Run>
Calls callsOf(const Run& run)
{
    softdevLogStart();
    EXPECT_EQ(run(), tarnNoError);
    Calls calls;
    for (const SoftdevCall& call : softdevLogTake())
        if (const std::string text = described(call); !text.empty())
            calls.push_back(text);
    return calls;
}

long countOf(const Calls& calls, const std::string& routine)
{
    return std::count_if(calls.begin(), calls.end(),
                         [&](const std::string& call) { return call.rfind(routine, 0) == 0; });
}

std::string text(const char* routine, int a, int b)
{
    return std::string(routine) + ' ' + std::to_string(a) + ' ' + std::to_string(b);
}

std::string gemmText(int m, int n, int k) { return text("gemm", m, n) + ' ' + std::to_string(k); }

/// A machine with three devices; the library reads their capabilities once per process.
class Paths : public WithControls
{
protected:
    static constexpr int capabilities[] = {90, 13, 20};

    static void SetUpTestSuite()
    {
        std::vector<SoftdevDevice> devices;
        for (const int value : capabilities)
            devices.push_back(deviceOf(value / 10, value % 10));
        softdevSetDevices(devices);
    }

    void TearDown() override
    {
        cudaSetDevice(0);
        WithControls::TearDown();
    }

    /// body(a) on the device of that capability, with the library up; a: an array of zeros for all operands, since
    /// paths depend on sizes alone.
    template <class T, class Body>
    static void on(int value, const Body& body)
    {
        const auto place = std::find(std::begin(capabilities), std::end(capabilities), value);
        ASSERT_EQ(cudaSetDevice(int(place - std::begin(capabilities))), cudaSuccess);
        ASSERT_EQ(capability(), value);
        const Initialized library;
        const DeviceArray<T> zeros(std::vector<T>(1300 * 1300, T(0)));
        body(native(zeros.data()));
    }
};

constexpr int ldOfAll = 1300;

/// A row of the tables of trsm and trmm: the half on which trmm begins; trsm begins on the other one.
struct TriangularCase
{
    char side, uplo, trans;
    int first;
};

constexpr TriangularCase triangularCases[] = {{'L', 'U', 'N', 0}, {'L', 'U', 'T', 1}, {'L', 'U', 'C', 1},
                                              {'L', 'L', 'N', 1}, {'L', 'L', 'T', 0}, {'R', 'U', 'N', 1},
                                              {'R', 'U', 'C', 0}, {'R', 'L', 'N', 0}, {'R', 'L', 'T', 1}};

/// A dimension of 300 with blocks of 192 is cut once, into 192 and 108.
TEST_F(Paths, TrmmMultipliesTheDependentHalfFirst)
{
    constexpr int part[] = {192, 108};
    on<float>(90, [&](float* a) {
        for (const auto [side, uplo, trans, first] : triangularCases) {
            const bool left = side == 'L';
            const int m = left ? 300 : 1024, n = left ? 1024 : 300, second = 1 - first;
            const auto leaf = [&](int size) { return left ? text("trmm", size, n) : text("trmm", m, size); };
            const Calls expected{leaf(part[first]),
                                 left ? gemmText(part[first], n, part[second]) : gemmText(m, part[first], part[second]),
                                 leaf(part[second])};
            EXPECT_EQ(callsOf([&, s = side, u = uplo, t = trans] {
                          return tarnDeviceStrmm(s, u, t, 'N', m, n, 1, a, ldOfAll, a, ldOfAll);
                      }),
                      expected)
                << side << uplo << trans;
        }
    });
}

/// 600 with blocks of 96: 288 and 312 at the top, and down to six leaves of 96 and a last one of 24.
TEST_F(Paths, TrsmSolvesForTheIndependentHalfFirst)
{
    on<float>(90, [&](float* a) {
        for (const auto [side, uplo, trans, dependent] : triangularCases) {
            const bool left = side == 'L', trailingFirst = dependent == 0;
            const Calls calls = callsOf([&, s = side, u = uplo, t = trans] {
                return tarnDeviceStrsm(s, u, t, 'N', 600, 600, 0, a, ldOfAll, a, ldOfAll);
            });
            Calls leaves{6, left ? text("trsm", 96, 600) : text("trsm", 600, 96)};
            leaves.insert(trailingFirst ? leaves.begin() : leaves.end(),
                          left ? text("trsm", 24, 600) : text("trsm", 600, 24));
            Calls made;
            std::copy_if(calls.begin(), calls.end(), std::back_inserter(made),
                         [](const std::string& call) { return call.rfind("trsm", 0) == 0; });
            EXPECT_EQ(made, leaves) << side << uplo << trans;
            const int target = trailingFirst ? 288 : 312, source = 600 - target;
            EXPECT_EQ(countOf(calls, left ? gemmText(target, 600, source) : gemmText(600, target, source)), 1);
            EXPECT_EQ(countOf(calls, "gemm"), 6);
        }
    });
}

TEST_F(Paths, SymmAppliesTheStoredBlockThenItsMirror)
{
    on<float>(90, [&](float* a) {
        const auto symm = [&](char side, char uplo, int m, int n) {
            return callsOf([=] { return tarnDeviceSsymm(side, uplo, m, n, 1, a, ldOfAll, a, ldOfAll, 0, a, ldOfAll); });
        };
        const std::string tall = gemmText(192, 1024, 108), flat = gemmText(108, 1024, 192);
        EXPECT_EQ(symm('L', 'L', 300, 1024), (Calls{"symm 192 1024", flat, tall, "symm 108 1024"}));
        EXPECT_EQ(symm('L', 'U', 300, 1024), (Calls{"symm 192 1024", tall, flat, "symm 108 1024"}));
        const std::string wide = gemmText(1024, 192, 108), narrow = gemmText(1024, 108, 192);
        EXPECT_EQ(symm('R', 'L', 1024, 300), (Calls{"symm 1024 192", wide, narrow, "symm 1024 108"}));
        EXPECT_EQ(symm('R', 'U', 1024, 300), (Calls{"symm 1024 192", narrow, wide, "symm 1024 108"}));
        EXPECT_EQ(symm('R', 'U', 1023, 300), Calls{"symm 1023 300"});
    });
}

/// Number of leaves and of gemm calls at the sizes where a recursion begins and just below, by capability: blocks of
/// 192 cut 1024 into six leaves, blocks of 128 into eight.
TEST_F(Paths, RecursionsBeginAtTheirSizes)
{
    for (const int value : {13, 20, 90}) {
        SCOPED_TRACE(value);
        const int leaves = value == 13 ? 8 : 6, cuts = leaves - 1;
        const auto expectCalls = [](const char* routine, int direct, int gemms, const Calls& calls) {
            EXPECT_EQ(countOf(calls, routine), direct) << routine;
            EXPECT_EQ(countOf(calls, "gemm"), gemms) << routine;
        };
        on<C>(value, [&](tarnFloatComplex* a) {
            const tarnFloatComplex one{1, 0};
            const int ld = ldOfAll;
            for (const int size : {1023, 1024}) {
                const bool recursive = size == 1024;
                const int n = recursive ? leaves : 1, g = recursive ? cuts : 0;
                expectCalls("hemm", n, 2 * g, callsOf([&] {
                                return tarnDeviceChemm('L', 'U', 1024, size, one, a, ld, a, ld, one, a, ld);
                            }));
                expectCalls("herk", n, g,
                            callsOf([&] { return tarnDeviceCherk('U', 'T', 1024, size, 1, a, ld, 1, a, ld); }));
                expectCalls("her2k", n, 2 * g, callsOf([&] {
                                return tarnDeviceCher2k('L', 'C', 1024, size, one, a, ld, a, ld, 1, a, ld);
                            }));
                expectCalls("syr2k", n, 2 * g, callsOf([&] {
                                return tarnDeviceCsyr2k('U', 'N', 1024, size, one, a, ld, a, ld, one, a, ld);
                            }));
                const bool syrkRecursive = recursive && value == 13;
                expectCalls("syrk", syrkRecursive ? leaves : 1, syrkRecursive ? cuts : 0,
                            callsOf([&] { return tarnDeviceCsyrk('L', 'T', 1024, size, one, a, ld, one, a, ld); }));
                expectCalls("trmm", n, g,
                            callsOf([&] { return tarnDeviceCtrmm('L', 'L', 'N', 'U', size, 1, one, a, ld, a, ld); }));
            }
            const auto trsm = [&](int m, int n) {
                return callsOf([=] { return tarnDeviceCtrsm('L', 'L', 'N', 'U', m, n, one, a, ld, a, ld); });
            };
            EXPECT_EQ(trsm(512, 511), Calls{"trsm 512 511"});
            EXPECT_EQ(trsm(511, 512), Calls{"trsm 511 512"});
            expectCalls("trsm", 8, 7, trsm(512, 512));
        });
    }
}

TEST_F(Paths, GemvRunsTheKernelForTransposedProducts)
{
    on<float>(90, [](float* a) {
        const auto gemv = [&](char trans, float alpha, float beta, int incx, int incy) {
            return callsOf([=] {
                return tarnDeviceSgemv(trans, 40, 33, alpha, a, ldOfAll, a + 64 * ldOfAll, incx, beta, a + 65 * ldOfAll,
                                       incy);
            });
        };
        EXPECT_EQ(gemv('t', 0, 2, 1, 1), Calls{"gemvt_k"});
        EXPECT_EQ(gemv('C', 1, 0, 2, 3), Calls{"gemvt_k"});
        EXPECT_EQ(gemv('N', 1, 0, 1, 1), Calls{"gemv 40 33"});
        EXPECT_EQ(gemv('T', 1, 0, -1, 1), Calls{"gemv 40 33"});
        EXPECT_EQ(gemv('T', 1, 0, 1, -1), Calls{"gemv 40 33"});
        EXPECT_EQ(gemv('T', 0, 1, 1, 1), Calls{});
    });
    on<float>(90, [](float* a) {
        softdevLogStart();
        EXPECT_EQ(tarnDeviceSgemv('T', 40, 33, 1, a, ldOfAll, a + 64 * ldOfAll, 1, 0, a + 65 * ldOfAll, 1),
                  tarnNoError);
        const auto log = softdevLogTake();
        const auto launch =
            std::find_if(log.begin(), log.end(), [](const SoftdevCall& call) { return call.name == "gemvt_k"; });
        ASSERT_NE(launch, log.end());
        EXPECT_EQ(launch->ints, (std::vector<long long>{2, 1, 1, 32, 16, 1}));
    });
}

TEST_F(Paths, WhatBetaOf0HidesIsNotSent)
{
    on<float>(90, [](float*) {
        std::vector<float> a(25, 1), x(25, 1), y(25, 1);
        const auto sent = [](const std::function<tarnStatus()>& call) {
            softdevLogStart();
            EXPECT_EQ(call(), tarnNoError);
            const auto log = softdevLogTake();
            return std::count_if(log.begin(), log.end(), [](const SoftdevCall& copy) {
                return copy.name.rfind("cudaMemcpy", 0) == 0 && copy.ints.back() == cudaMemcpyHostToDevice;
            });
        };
        float* const p[] = {a.data(), x.data(), y.data()};
        for (const float beta : {0.f, 2.f}) {
            const long expected = beta == 0 ? 2 : 3;
            EXPECT_EQ(sent([&] { return tarnSgemm('N', 'N', 5, 5, 5, 1, p[0], 5, p[1], 5, beta, p[2], 5); }), expected);
            EXPECT_EQ(sent([&] { return tarnSsymm('L', 'U', 5, 5, 1, p[0], 5, p[1], 5, beta, p[2], 5); }), expected);
            EXPECT_EQ(sent([&] { return tarnSgemv('T', 5, 5, 1, p[0], 5, p[1], 1, beta, p[2], 1); }), expected);
            EXPECT_EQ(sent([&] { return tarnSsymv('L', 5, 1, p[0], 5, p[1], 1, beta, p[2], 1); }), expected);
        }
    });
}

TEST_F(Paths, SymvRunsTheKernelsFromOrder1200On)
{
    for (const int value : {13, 20, 90})
        on<float>(value, [&](float* a) {
            const auto symv = [&](int n) {
                float *const x = a + 1201 * ldOfAll, *const y = a + 1202 * ldOfAll;
                return callsOf([=] { return tarnDeviceSsymv('U', n, 1, a, ldOfAll, x, 1, 0, y, 1); });
            };
            EXPECT_EQ(symv(1199), Calls{"symv 1199"});
            EXPECT_EQ(symv(1200), value == 13 ? (Calls{"cudaMemset", "symv_init_k", "symv_k", "symv_reduction_k"})
                                              : (Calls{"symv_init_k", "symv_k"}));
        });
}

/// The first argument of a numerical routine that matters here is its result: a failure leaves it as it was in host
/// memory.
template <class Run>
void expectUntouched(tarnStatus status, tarnInfo info, const Run& run)
{
    std::vector<float> a(1200 * 1200, 1), x(1200, 2), y(1200, 3);
    EXPECT_EQ(run(a.data(), x.data(), y.data()), status);
    EXPECT_EQ(tarnGetErrorInfo(), info);
    EXPECT_EQ(y, std::vector<float>(1200, 3));
    softdevClearFailures();
}

TEST_F(Paths, FailuresLeaveTheResultOnTheHostAlone)
{
    on<float>(13, [](float*) {
        const auto gemv = [](float* a, float* x, float* y) { return tarnSgemv('T', 50, 50, 1, a, 50, x, 1, 0, y, 1); };
        const auto symv = [](float* a, float* x, float* y) { return tarnSsymv('L', 1200, 1, a, 1200, x, 1, 0, y, 1); };
        softdevFailCall("gemvt_k", 1, cudaErrorLaunchOutOfResources);
        expectUntouched(tarnRuntimeError, cudaErrorLaunchOutOfResources, gemv);
        softdevFailExecution("symv_k", 1, cudaErrorLaunchFailure);
        expectUntouched(tarnRuntimeError, cudaErrorLaunchFailure, symv);
        tarnFreeBuffers();
        softdevFailCall("cudaMalloc", 3, cudaErrorMemoryAllocation, true); // after x and y: the workspace
        expectUntouched(tarnInsufficientMemory, 0, symv);
        softdevFailCall("cublasSgemm_v2", 1, 13);
        expectUntouched(tarnBlasError, 13, [](float* a, float* x, float* y) {
            return tarnSgemm('N', 'N', 5, 5, 5, 1, a, 5, x, 5, 0, y, 5);
        });
        constexpr int invalidValue = 7;
        for (const char trans : {'N', 'T'})
            expectUntouched(tarnBlasError, invalidValue, [&](float* a, float* x, float* y) {
                return tarnSgemv(trans, 50, 50, 1, a, 50, x, trans == 'N' ? 0 : 1, 0, y, trans == 'N' ? 1 : 0);
            });
    });
}

/// gemm alone leaves its checks to cuBLAS.
TEST_F(Paths, DeviceFormsCheckTooExceptGemm)
{
    on<float>(90, [](float* a) {
        EXPECT_EQ(tarnDeviceStrmm('L', 'U', 'N', 'N', 4, 4, 1, a, 4, a, 3), tarnArgumentError);
        EXPECT_EQ(tarnGetErrorInfo(), -11);
        EXPECT_EQ(tarnDeviceSsymv('U', 4, 1, a, 4, a, -1, 0, a, 1), tarnFeatureNotImplemented);
        EXPECT_EQ(tarnDeviceSgemm('?', 'N', 4, 4, 4, 1, a, 4, a, 4, 0, a, 4), tarnNoError);
    });
}

} // namespace
