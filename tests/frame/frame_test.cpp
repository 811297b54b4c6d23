// The frame of the routines: what it refuses before anything runs, what becomes of every kind of failure, and which
// device a routine runs on.
#include "frame/machine.h"
#include "frame/routine.h"
#include "lapack/lu/lu.h"
#include "memory/mirrors.h"
#include "support/api.h"
#include "support/failures.h"
#include "support/residuals.h"

#include <gtest/gtest.h>

#include <functional>
#include <thread>

namespace {

using namespace test;
using tarn::hasFailed;

/// A routine that can be called with arguments that are all wrong.
struct Routine
{
    const char* name;
    bool isDouble, isDeviceForm;
    tarnStatus (*call)();
};

template <class T>
T wrong()
{
    if constexpr (std::is_same_v<T, char>)
        return 'X';
    else if constexpr (std::is_same_v<T, int>)
        return -1;
    else
        return T{};
}

template <class... Args>
tarnStatus callWith(tarnStatus (*routine)(Args...))
{
    return routine(wrong<Args>()...);
}

#define FORMS(X, isDouble, name)                                                                                       \
    Routine{#X #name, isDouble, false, [] { return callWith(tarn##X##name); }}, Routine                                \
    {                                                                                                                  \
        "device " #X #name, isDouble, true, [] { return callWith(tarnDevice##X##name); }                               \
    }
#define S_C(name) FORMS(S, false, name), FORMS(C, false, name)
#define S_D(name) FORMS(S, false, name), FORMS(D, true, name)
#define C_Z(name) FORMS(C, false, name), FORMS(Z, true, name)

const Routine routines[] = {
    S_D(gemm),  C_Z(gemm),  S_D(symm), C_Z(symm),  C_Z(hemm), S_D(syrk),  C_Z(syrk),  C_Z(herk), S_D(syr2k),
    C_Z(syr2k), C_Z(her2k), S_D(trmm), C_Z(trmm),  S_D(trsm), C_Z(trsm),  S_D(gemv),  C_Z(gemv), S_D(symv),
    C_Z(hemv),  S_C(getrf), S_C(gesv), S_C(geqrf), S_C(gels), S_C(gglse), S_C(gesvd),
};

class FrameDown : public OnMachine
{
protected:
    void SetUp() override { WithControls::SetUp(); } // without a look at the device
};

// Must stay the first test: it sees the device table being built.
TEST_F(FrameDown, ReadsTheDevicesOnceAndAgainAfterAFailure)
{
    softdevFailCall("cudaGetDeviceProperties", 3, 719);
    EXPECT_EQ(tarnInitialize(), tarnRuntimeError);
    EXPECT_EQ(tarnGetErrorInfo(), 719);
    EXPECT_FALSE(tarn::isInitialized());

    const auto propertiesRead = [] {
        softdevLogStart();
        EXPECT_EQ(tarnInitialize(), tarnNoError);
        tarnShutdown();
        return countCalls(softdevLogTake(), "cudaGetDeviceProperties");
    };
    EXPECT_EQ(propertiesRead(), narrow + 1);
    EXPECT_EQ(propertiesRead(), 0);

    EXPECT_EQ(tarn::deviceCapability(firstGeneration).major, 1);
    EXPECT_EQ(tarn::deviceCapability(firstGeneration).minor, 3);
    EXPECT_EQ(tarn::deviceCapability(firstGeneration).value, 13);
    EXPECT_EQ(tarn::deviceName(modern), softdevDefaultDevice().name);
    EXPECT_EQ(tarn::deviceGlobalMemory(tiny), std::size_t(1) << 20);
    EXPECT_TRUE(tarn::deviceCanOverlap(modern));
    EXPECT_FALSE(tarn::deviceCanOverlap(firstGeneration));
    EXPECT_EQ(cudaSetDevice(narrow), cudaSuccess);
    EXPECT_EQ(tarn::maxGridSize(), (std::array<int, 3>{16, 65535, 65535}));
}

TEST_F(FrameDown, RefusesWithoutTouchingAnything)
{
    tarnSetErrorInfo(77);
    softdevLogStart();
    for (const Routine& routine : routines) {
        SCOPED_TRACE(routine.name);
        tarnSetLastStatus(tarnNoError);
        EXPECT_EQ(routine.call(), tarnNotInitialized);
        EXPECT_EQ(tarnGetLastStatus(), tarnNotInitialized);
    }
    EXPECT_EQ(tarnGetExecutingDevice(nullptr), tarnNotInitialized);
    EXPECT_TRUE(softdevLogTake().empty());
    EXPECT_EQ(tarnGetErrorInfo(), 77);
}

/// C := A B + C for 5 by 4 by 3, in every call the same.
class Product
{
public:
    tarnStatus call()
    {
        c = C;
        return tarnSgemm('N', 'N', 5, 4, 3, 1, A.data(), A.ld, B.data(), B.ld, 1, c.data(), c.ld);
    }

    bool isUntouched() const { return identical(c, C); }

    bool isRight() const
    {
        bool right = c.paddingIntact();
        for (int j = 0; j < 4; ++j)
            for (int i = 0; i < 5; ++i) {
                double sum = C(i, j);
                for (int k = 0; k < 3; ++k)
                    sum += double(A(i, k)) * B(k, j);
                right = right && std::abs(sum - c(i, j)) < 1e-5;
            }
        return right;
    }

private:
    Matrix<float> A = Matrix<float>::random(5, 3, 6, 1), B = Matrix<float>::random(3, 4, 3, 2);
    Matrix<float> C = Matrix<float>::random(5, 4, 7, 3), c = C;
};

class Frame : public OnMachine
{
protected:
    void TearDown() override
    {
        OnMachine::TearDown();
        EXPECT_FALSE(hasFailed());
        EXPECT_EQ(cudaGetLastError(), cudaSuccess);
        EXPECT_EQ(softdevLive().allocations, 0u);
        EXPECT_EQ(softdevLive().hostAllocations, 0u);
        EXPECT_EQ(softdevLive().streams, 0u);
    }

    const Initialized library;
};

TEST_F(Frame, DoublePrecisionIsRefusedBeforeTheArgumentsAreLookedAt)
{
    for (const DeviceKind device : {withoutDouble, firstGeneration}) {
        ASSERT_EQ(tarnSelectDevice(device), tarnNoError);
        for (const Routine& routine : routines) {
            SCOPED_TRACE(testing::Message() << routine.name << " on device " << device);
            tarnSetErrorInfo(77);
            softdevLogStart();
            const tarnStatus status = routine.call();
            for (const SoftdevCall& call : softdevLogTake())
                EXPECT_NE(call.name.rfind("cudaM", 0), 0u) << call.name << ": memory, in spite of the arguments";
            EXPECT_EQ(tarnGetLastStatus(), status);
            if (device == withoutDouble && routine.isDouble) {
                EXPECT_EQ(status, tarnInsufficientComputeCapability);
                EXPECT_EQ(tarnGetErrorInfo(), 77);
            } else if (!routine.isDeviceForm) {
                EXPECT_EQ(status, tarnArgumentError);
                EXPECT_EQ(tarnGetErrorInfo(), -1);
            } else {
                EXPECT_TRUE(status == tarnArgumentError || status == tarnBlasError) << status;
            }
        }
    }
    ASSERT_EQ(tarnSelectDevice(withoutDouble), tarnNoError);
    Product product;
    EXPECT_EQ(product.call(), tarnNoError);
    EXPECT_TRUE(product.isRight());
}

TEST_F(Frame, AnArgumentErrorAllocatesAndCopiesNothing)
{
    float a[4] = {1, 2, 3, 4};
    int ipiv[2] = {7, 7};
    softdevLogStart();
    EXPECT_EQ(tarnSgetrf(2, 2, a, 1, ipiv), tarnArgumentError);
    EXPECT_EQ(tarnGetErrorInfo(), -4);
    EXPECT_EQ(tarnGetLastStatus(), tarnArgumentError);
    EXPECT_EQ(tarnSgemm('N', 'N', 2, 2, 2, 1, a, 2, a, 1, 0, a, 2), tarnArgumentError);
    EXPECT_EQ(tarnGetErrorInfo(), -10);
    for (const SoftdevCall& call : softdevLogTake())
        EXPECT_TRUE(call.name.rfind("cudaMalloc", 0) != 0 && call.name.rfind("cudaMemcpy", 0) != 0) << call.name;
    EXPECT_EQ(a[0] + 10 * a[1] + 100 * a[2] + 1000 * a[3], 4321);
    EXPECT_EQ(ipiv[0] + ipiv[1], 14);
    EXPECT_EQ(tarnSgetrf(0, 5, nullptr, 1, nullptr), tarnNoError);
    EXPECT_EQ(tarnGetErrorInfo(), 0) << "cleared by the next call";
}

/// The solve with factors, of which gesv uses one case of three.
void solveFactored(char trans)
{
    float element = 1;
    int pivot = 1;
    tarn::lu::getrs(trans, 1, 1, &element, 1, &pivot, &element, 1);
}

/// What a frame makes of an exception: in the outermost body, and in the body of the device form under a host form.
TEST_F(Frame, TranslatesEveryExceptionByItsClass)
{
    const struct
    {
        const char* what;
        std::function<void()> raise;
        tarnStatus status;
        tarnInfo info;
        bool failed;
    } rows[] = {
        {"CUDA 2", [] { velk::throwOnCudaError(cudaErrorMemoryAllocation); }, tarnInsufficientMemory, 0, true},
        {"CUDA 32", [] { velk::throwOnCudaError(cudaError_t(32)); }, tarnInsufficientMemory, 0, true},
        {"CUDA 719", [] { velk::throwOnCudaError(cudaErrorLaunchFailure); }, tarnRuntimeError, 719, true},
        {"CUDA 3", [] { velk::CudaErrorGuard guard(cudaErrorInitializationError); }, tarnRuntimeError, 3, true},
        {"cuBLAS 3", [] { velk::throwOnCublasError(CUBLAS_STATUS_ALLOC_FAILED); }, tarnInsufficientMemory, 0, true},
        {"cuBLAS 14", [] { velk::throwOnCublasError(CUBLAS_STATUS_INTERNAL_ERROR); }, tarnBlasError, 14, true},
        {"sparse", [] { throw velk::CusparseException(6); }, tarnRuntimeError, 6, true},
        {"bad_alloc", [] { throw std::bad_alloc(); }, tarnInsufficientMemory, 0, true},
        {"length_error", [] { throw std::length_error("vector"); }, tarnRuntimeError, -1, true},
        {"int", [] { throw 5; }, tarnUnspecifiedError, -1, true},
        {"getrs, transposed", [] { solveFactored('t'); }, tarnFeatureNotImplemented, 0, true},
        {"getrs, no letter", [] { solveFactored('X'); }, tarnArgumentError, -1, false},
        {"argument", [] { tarn::require(false, -4); }, tarnArgumentError, -4, false},
        {"data", [] { tarn::dataError(9); }, tarnDataError, 9, false},
        {"info 9", [] { tarn::checkInfo(9); }, tarnDataError, 9, false},
        {"info -3", [] { tarn::checkInfo(-3); }, tarnRuntimeError, -3, false},
        {"nothing", [] { tarn::checkInfo(0), velk::throwOnCudaError(cudaSuccess); }, tarnNoError, 0, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        bool failed = false;
        float x = 1;
        tarnSetErrorInfo(77);
        const tarnStatus nested = tarn::hostForm<float>([&] {
            DeviceMirror<float> mirror({1, 1, 1}, &x, 1, MirrorOut);
            const tarnStatus status = tarn::deviceForm<float>([&] {
                EXPECT_EQ(cudaMemset(mirror.data(), 0, sizeof x), cudaSuccess);
                row.raise();
            });
            failed = hasFailed();
            EXPECT_EQ(tarnGetLastStatus(), status);
            return tarn::finished(status);
        });
        EXPECT_EQ(nested, row.status);
        EXPECT_EQ(tarnGetLastStatus(), row.status);
        EXPECT_EQ(tarnGetErrorInfo(), row.info);
        EXPECT_EQ(failed, row.failed);
        EXPECT_EQ(x, row.failed ? 1 : 0) << "results are delivered unless the routine has failed";

        tarnSetErrorInfo(77);
        const tarnStatus service = tarn::serviceFrame(row.raise);
        EXPECT_EQ(service, row.status);
        EXPECT_EQ(tarnGetLastStatus(), row.status);
        EXPECT_EQ(tarnGetErrorInfo(), row.info);
        EXPECT_FALSE(hasFailed());
    }
}

TEST_F(Frame, ThreadStateLivesAsLongAsTheOutermostRoutine)
{
    tarn::leaveRoutine();
    tarn::markFailed();
    EXPECT_FALSE(hasFailed()) << "outside routines there is nothing to mark";
    tarn::enterRoutine();
    tarn::enterRoutine();
    tarn::markFailed();
    std::thread([] { EXPECT_FALSE(hasFailed()); }).join();
    tarn::leaveRoutine();
    EXPECT_TRUE(hasFailed());
    tarn::leaveRoutine();
    EXPECT_FALSE(hasFailed());

    ASSERT_EQ(cudaSetDevice(small), cudaSuccess);
    tarn::enterRoutine();
    EXPECT_EQ(tarn::executingDevice(), small);
    EXPECT_FALSE(hasFailed());
    tarn::leaveRoutine();
}

TEST_F(Frame, FailingCallsEndByTheTable)
{
    const struct
    {
        const char* call;
        int nth, code;
        tarnStatus status;
        tarnInfo info;
    } rows[] = {
        {"cudaGetDevice", 1, 46, tarnRuntimeError, 46},
        {"cudaGetDevice", 2, 46, tarnRuntimeError, 46},
        {"cudaMalloc", 3, 32, tarnInsufficientMemory, 0},
        {"cudaMemcpy2D", 2, 2, tarnInsufficientMemory, 0},
        {"cublasCreate_v2", 1, 1, tarnBlasError, 1},
        {"cublasCreate_v2", 1, 3, tarnBlasError, 3},
        {"cublasSetPointerMode_v2", 1, 14, tarnBlasError, 14},
        {"cublasSgemm_v2", 1, 3, tarnInsufficientMemory, 0},
        {"cublasSgemm_v2", 1, 7, tarnBlasError, 7},
        {"cublasGetError", 1, 11, tarnBlasError, 11},
        {"cudaDeviceSynchronize", 2, 700, tarnRuntimeError, 700},
    };
    Product product;
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.call) + " " + std::to_string(row.code));
        tarn::dropCublasHandles();
        tarnSetErrorInfo(77);
        softdevFailCall(row.call, row.nth, row.code);
        EXPECT_EQ(product.call(), row.status);
        softdevClearFailures();
        EXPECT_EQ(tarnGetLastStatus(), row.status);
        EXPECT_EQ(tarnGetErrorInfo(), row.info);
        EXPECT_TRUE(product.isUntouched());
        EXPECT_FALSE(hasFailed());
        EXPECT_EQ(softdevLive().allocations, 0u);
        EXPECT_LE(softdevLive().handles, 1u);
        EXPECT_EQ(product.call(), tarnNoError);
        EXPECT_TRUE(product.isRight());
        EXPECT_EQ(softdevLive().handles, 1u);
    }
}

/// A X = B of order 20 with 3 right-hand sides.
Call solution()
{
    return {{Matrix<float>::random(20, 20, 21, 1), Matrix<float>::random(20, 3, 22, 2)},
            [](Call& x) { return tarnSgesv(20, 3, x.arrays[0].data(), 21, x.pivots.data(), x.arrays[1].data(), 22); },
            std::vector<int>(20, -7)};
}

TEST_F(Frame, WhateverCallFailsTheResultIsWholeOrUntouched)
{
    const auto product = [](Call& x) {
        return tarnSgemm('N', 'N', 5, 4, 3, 1, x.arrays[0].data(), 6, x.arrays[1].data(), 4, 1, x.arrays[2].data(), 7);
    };
    expectFailuresLeaveNothingBehind(
        {{Matrix<float>::random(5, 3, 6, 1), Matrix<float>::random(3, 4, 4, 2), Matrix<float>::random(5, 4, 7, 3)},
         product});
    expectFailuresLeaveNothingBehind(solution());
}

TEST_F(Frame, PivotsThatDidNotArriveLeadNoKernel)
{
    Call call = solution();
    softdevLogStart();
    ASSERT_EQ(call.run(), tarnNoError);
    int copies = 0; // before the first interchange: the last ones bring the pivots to the device and back
    for (const SoftdevCall& made : softdevLogTake()) {
        if (made.name == "KernelLASWP")
            break;
        copies += made.name == "cudaMemcpy";
    }
    ASSERT_GE(copies, 2);
    for (const int copy : {copies - 1, copies}) {
        call = solution();
        softdevLogStart();
        softdevFailCall("cudaMemcpy", copy, 719);
        EXPECT_EQ(call.run(), tarnRuntimeError);
        EXPECT_EQ(countCalls(softdevLogTake(), "KernelLASWP"), 0) << "it would read anywhere";
        EXPECT_EQ(differences(call, solution()), 0);
    }
}

TEST_F(Frame, AFailingStreamOrKernelFailsTheRoutine)
{
    const int n = 600; // transposed storage: two kernels, the second of which is the last work of the routine
    const auto A = Matrix<float>::random(n, n, n + 1);
    auto a = A;
    std::vector<int> ipiv(n, -7);
    const auto getrf = [&] { return tarnSgetrf(n, n, a.data(), a.ld, ipiv.data()); };
    const std::pair<tarnInfo, std::function<void()>> failures[] = {
        {46, [] { softdevFailCall("cudaStreamCreate", 1, 46); }},
        {9, [] { softdevFailCall("TransposeInplace_k", 1, 9); }},
        {719, [] { softdevFailExecution("TransposeInplace_k", 1, 719); }},
        {700, [] { softdevFailExecution("TransposeInplace_k", 2, 700); }},
    };
    for (const auto& [code, arrange] : failures) {
        SCOPED_TRACE(code);
        arrange();
        EXPECT_EQ(getrf(), tarnRuntimeError);
        EXPECT_EQ(tarnGetErrorInfo(), code);
        EXPECT_TRUE(identical(a, A));
        EXPECT_EQ(std::count(ipiv.begin(), ipiv.end(), -7), n);
    }
    EXPECT_EQ(getrf(), tarnNoError);
    EXPECT_LT(luRatio(A, a, ipiv), 30);
}

TEST_F(Frame, OutOfDeviceMemoryLeavesTheCallersArrays)
{
    ASSERT_EQ(tarnSelectDevice(tiny), tarnNoError);
    const int n = 450; // two matrices of 864 kB do not fit, one does
    const auto A = Matrix<float>::random(n, n, n + 1, 1), B = Matrix<float>::random(n, n, n + 2, 2);
    auto a = A, b = B, c = B;
    std::vector<int> ipiv(n, -7);
    const std::pair<const char*, std::function<tarnStatus()>> calls[] = {
        {"gemm", [&] { return tarnSgemm('N', 'N', n, n, n, 1, a.data(), a.ld, a.data(), a.ld, 1, c.data(), c.ld); }},
        {"gemm, beta 0",
         [&] { return tarnSgemm('N', 'T', n, n, 1, 1, a.data(), a.ld, a.data(), a.ld, 0, c.data(), c.ld); }},
        {"trsm", [&] { return tarnStrsm('L', 'U', 'N', 'N', n, n, 1, a.data(), a.ld, b.data(), b.ld); }},
        {"gesv", [&] { return tarnSgesv(n, n, a.data(), a.ld, ipiv.data(), b.data(), b.ld); }},
    };
    ASSERT_EQ(tarnSgetrf(n, n, a.data(), a.ld, ipiv.data()), tarnNoError) << "one matrix fits";
    a = A;
    std::fill(ipiv.begin(), ipiv.end(), -7);
    for (const auto& [name, call] : calls) {
        SCOPED_TRACE(name);
        EXPECT_EQ(call(), std::string(name) == "gemm, beta 0" ? tarnNoError : tarnInsufficientMemory);
        EXPECT_EQ(tarnGetErrorInfo(), 0);
        EXPECT_TRUE(identical(a, A) && identical(b, B));
        if (std::string(name) == "gemm, beta 0") {
            EXPECT_FALSE(identical(c, B)) << "vectors and one matrix fit";
            c = B;
        }
        EXPECT_TRUE(identical(c, B));
        EXPECT_EQ(std::count(ipiv.begin(), ipiv.end(), -7), n);
        EXPECT_EQ(softdevLive().allocations, 0u);
        EXPECT_FALSE(hasFailed());
    }

    const int wide = 600; // its mirror alone does not fit
    auto W = Matrix<float>::random(wide, wide, wide);
    const auto before = W;
    EXPECT_EQ(tarnSgetrf(wide, wide, W.data(), W.ld, ipiv.data()), tarnInsufficientMemory);
    EXPECT_EQ(tarnSgemm('N', 'T', wide, wide, 1, 1, a.data(), 600, a.data(), 600, 0, W.data(), W.ld),
              tarnInsufficientMemory);
    EXPECT_TRUE(identical(W, before));
}

TEST_F(Frame, SelectsTheDeviceOfTheThread)
{
    int device = -1, count = -1;
    EXPECT_EQ(tarnGetDeviceCount(&count), tarnNoError);
    EXPECT_EQ(count, narrow + 1);
    EXPECT_EQ(tarnSelectDevice(small), tarnNoError);
    EXPECT_EQ(tarnGetExecutingDevice(&device), tarnNoError);
    EXPECT_EQ(device, small);
    std::thread([] {
        int other = -1;
        EXPECT_EQ(tarnGetExecutingDevice(&other), tarnNoError);
        EXPECT_EQ(other, 0);
    }).join();

    const auto infoOf = [](tarnStatus status) { return status == tarnArgumentError ? tarnGetErrorInfo() : 1; };
    EXPECT_EQ(infoOf(tarnSelectDevice(count)), -1);
    EXPECT_EQ(infoOf(tarnSelectDevice(-1)), -1);
    EXPECT_EQ(infoOf(tarnGetDeviceCount(nullptr)), -1);
    EXPECT_EQ(infoOf(tarnGetExecutingDevice(nullptr)), -1);
    for (const int code : {46, 2}) {
        softdevFailCall("cudaSetDevice", 1, code);
        EXPECT_EQ(tarnSelectDevice(modern), tarnRuntimeError);
        EXPECT_EQ(tarnGetErrorInfo(), code);
    }
    EXPECT_EQ(tarnGetExecutingDevice(&device), tarnNoError);
    EXPECT_EQ(device, small) << "a refused choice changes nothing";
}

TEST_F(Frame, AThreadKeepsAHandlePerDevice)
{
    Product product;
    std::vector<std::pair<int, long long>> handles; // device and handle of each product
    softdevLogStart();
    for (const DeviceKind device : {modern, small, modern, small}) {
        ASSERT_EQ(tarnSelectDevice(device), tarnNoError);
        EXPECT_EQ(product.call(), tarnNoError);
        EXPECT_TRUE(product.isRight());
    }
    for (const SoftdevCall& call : softdevLogTake())
        if (call.name == "cublasSgemm_v2")
            handles.emplace_back(call.device, call.ints[0]);
    ASSERT_EQ(handles.size(), 4u);
    EXPECT_EQ(handles[0].first, modern);
    EXPECT_EQ(handles[1].first, small);
    EXPECT_NE(handles[0].second, handles[1].second);
    EXPECT_EQ(handles[0], handles[2]);
    EXPECT_EQ(handles[1], handles[3]);
    EXPECT_EQ(softdevLive().handles, 2u);
    tarn::dropCublasHandles();
    EXPECT_EQ(softdevLive().handles, 0u);
}

TEST_F(Frame, ThreadsRunOnTheirOwnDevicesAtOnce)
{
    const int n = 300;
    const auto A = Matrix<float>::random(n, n, n);
    const auto work = [&](DeviceKind device) {
        EXPECT_EQ(tarnSelectDevice(device), tarnNoError);
        for (int k = 0; k < 5; ++k) {
            auto a = A;
            std::vector<int> ipiv(n);
            EXPECT_EQ(tarnSgetrf(n, n, a.data(), n, ipiv.data()), tarnNoError);
            EXPECT_LT(luRatio(A, a, ipiv), 30);
        }
    };
    softdevLogStart();
    std::thread first(work, modern), second(work, firstGeneration);
    first.join();
    second.join();
    std::set<long long> handles[2];
    for (const SoftdevCall& call : softdevLogTake())
        if (call.name == "cublasStrsm_v2") {
            ASSERT_TRUE(call.device == modern || call.device == firstGeneration);
            handles[call.device == modern].insert(call.ints[0]);
        }
    EXPECT_EQ(handles[0].size(), 1u);
    EXPECT_EQ(handles[1].size(), 1u);
    EXPECT_NE(handles[0], handles[1]);
}

} // namespace
