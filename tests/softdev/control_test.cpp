/// Devices, errors, the log and the injection of failures.

#include <cstring>
#include <limits>
#include <thread>

#include "cublas_v2.h"
#include "fixture.h"

using ControlTest = SoftdevTest;

TEST_F(ControlTest, DevicesAreWhatWasSet)
{
    const SoftdevDevice old{"old one", 1, 2, std::size_t{3} << 30, {65535, 65535, 1}, 0};
    ASSERT_TRUE(softdevSetDevices({softdevDefaultDevice(), old}));
    int value = 0;
    ASSERT_EQ(cudaGetDeviceCount(&value), cudaSuccess);
    EXPECT_EQ(value, 2);
    ASSERT_EQ(cudaSetDevice(1), cudaSuccess);
    ASSERT_EQ(cudaGetDevice(&value), cudaSuccess);
    EXPECT_EQ(value, 1);
    EXPECT_EQ(cudaSetDevice(2), cudaErrorInvalidDevice);
    EXPECT_EQ(cudaSetDevice(-1), cudaErrorInvalidDevice);
    cudaDeviceProp prop;
    ASSERT_EQ(cudaGetDeviceProperties(&prop, 1), cudaSuccess);
    EXPECT_STREQ(prop.name, "old one");
    EXPECT_EQ(prop.totalGlobalMem, std::size_t{3} << 30);
    EXPECT_EQ(prop.major * 10 + prop.minor, 12);
    EXPECT_EQ(prop.maxGridSize[2], 1);
    EXPECT_EQ(prop.asyncEngineCount, 0);
    EXPECT_EQ(cudaGetDeviceProperties(&prop, 2), cudaErrorInvalidDevice);
    EXPECT_EQ(cudaGetDeviceProperties(&prop, -1), cudaErrorInvalidDevice);
}

// Without a device, and without a driver: all say so, again and again.
TEST_F(ControlTest, AMachineWithoutDevicesSaysSo)
{
    ASSERT_TRUE(softdevSetDevices({}));
    for (const cudaError_t absence : {cudaErrorNoDevice, cudaErrorInsufficientDriver}) {
        softdevSetVersions(13000, absence == cudaErrorNoDevice ? 13000 : 0, 130000);
        int value = 7;
        cudaDeviceProp prop;
        void* memory = &value;
        cublasHandle_t handle;
        EXPECT_EQ(cudaGetDeviceCount(&value), absence);
        EXPECT_EQ(value, 0);
        EXPECT_EQ(cudaGetDevice(&value), absence);
        EXPECT_EQ(cudaSetDevice(0), absence);
        EXPECT_EQ(cudaGetDeviceProperties(&prop, 0), absence);
        EXPECT_EQ(cudaMalloc(&memory, 8), absence);
        EXPECT_EQ(launch(1, [] {}), absence);
        EXPECT_EQ(softdevDeviceView(&value, &memory), cudaErrorInvalidValue);
        EXPECT_EQ(cublasCreate_v2(&handle), CUBLAS_STATUS_NOT_INITIALIZED);
        for (int reading = 0; reading < 2; ++reading)
            EXPECT_EQ(cudaGetLastError(), absence) << "which reading does not clear";
        EXPECT_EQ(cudaRuntimeGetVersion(&value), cudaSuccess);
    }
    softdevSetVersions(13000, 13000, 130000);
}

TEST_F(ControlTest, VersionsAreWhatWasSet)
{
    softdevSetVersions(4020, 4010, 4000);
    int runtime, driver, blas;
    ASSERT_EQ(cudaRuntimeGetVersion(&runtime), cudaSuccess);
    ASSERT_EQ(cudaDriverGetVersion(&driver), cudaSuccess);
    ASSERT_EQ(cublasGetVersion_v2(nullptr, &blas), CUBLAS_STATUS_SUCCESS);
    EXPECT_EQ(runtime, 4020);
    EXPECT_EQ(driver, 4010);
    EXPECT_EQ(blas, 4000);
    softdevSetVersions(13000, 13000, 130000);
}

TEST_F(ControlTest, NothingIsWrittenToNowhere)
{
    cudaDeviceProp prop;
    void* memory = &prop;
    std::size_t pitch = 7;
    const std::function<cudaError_t()> calls[] = {
        [] { return cudaRuntimeGetVersion(nullptr); },
        [] { return cudaDriverGetVersion(nullptr); },
        [] { return cudaGetDeviceCount(nullptr); },
        [] { return cudaGetDevice(nullptr); },
        [] { return cudaGetDeviceProperties(nullptr, 0); },
        [] { return cudaStreamCreate(nullptr); },
        [] { return cudaMalloc(nullptr, 8); },
        [] { return cudaMallocHost(nullptr, 8); },
        [&] { return cudaMallocPitch(nullptr, &pitch, 8, 8); },
        [&] { return cudaMallocPitch(&memory, nullptr, 8, 8); },
    };
    for (const auto& call : calls) {
        EXPECT_EQ(call(), cudaErrorInvalidValue) << &call - calls;
        EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidValue) << &call - calls;
    }
    EXPECT_EQ(memory, &prop);
    EXPECT_EQ(pitch, 7u);
}

TEST_F(ControlTest, FailuresAreLatchedPerThread)
{
    int onHost;
    EXPECT_EQ(cudaSetDevice(9), cudaErrorInvalidDevice);
    EXPECT_EQ(cudaFree(&onHost), cudaErrorInvalidValue);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess) << "success clears nothing";
    std::thread([] { EXPECT_EQ(cudaGetLastError(), cudaSuccess); }).join();
    EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidValue);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    EXPECT_STREQ(cudaGetErrorString(cudaErrorMemoryAllocation), "out of memory");
    EXPECT_STREQ(cudaGetErrorString(cudaError_t(32)), "unrecognized error code");
}

TEST_F(ControlTest, ImpossibleLaunchesRunNothing)
{
    SoftdevDevice device = softdevDefaultDevice();
    device.maxGrid[0] = 100;
    ASSERT_TRUE(softdevSetDevices({device}));
    const dim3 shape(16, 16);
    struct
    {
        dim3 grid, block, kernelBlock;
    } const impossible[] = {
        {dim3(101), shape, shape},         {dim3(0), shape, shape},
        {dim3(1, 0), shape, shape},        {dim3(1, 65536), shape, shape},
        {dim3(1, 1, 65536), shape, shape}, {dim3(1, 1, 0), shape, shape},
        {dim3(1), dim3(16, 17), shape},    {dim3(1), dim3(256), shape},
        {dim3(1), dim3(1025), dim3(1025)}, {dim3(1), dim3(64, 32), dim3(64, 32)},
        {dim3(1), dim3(16, 16, 2), shape}, {dim3(1), dim3(1, 1025), dim3(1, 1025)},
        {dim3(1), dim3(0), dim3(0)},       {dim3(1), dim3(1, 1, 1025), dim3(1, 1, 1025)},
    };
    int ran = 0;
    for (const auto& launch : impossible) {
        EXPECT_EQ(softdevLaunch("Shape_k", launch.grid, launch.block, launch.kernelBlock, [&] { ++ran; }),
                  cudaErrorInvalidConfiguration);
        EXPECT_EQ(cudaGetLastError(), cudaErrorInvalidConfiguration);
    }
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(ran, 0);
    EXPECT_EQ(softdevLaunch("Shape_k", dim3(100), shape, shape, [&] { atomicMax(&ran, 1); }), cudaSuccess);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(ran, 1);
}

TEST_F(ControlTest, NthCallFails)
{
    int device = -1, ran = 0;
    softdevFailCall("cudaGetDevice", 2, cudaErrorUnknown);
    EXPECT_EQ(cudaGetDevice(&device), cudaSuccess);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    device = -1;
    EXPECT_EQ(cudaGetDevice(&device), cudaErrorUnknown);
    EXPECT_EQ(device, -1) << "a call that fails does nothing";
    EXPECT_EQ(cudaGetDevice(&device), cudaSuccess);
    EXPECT_EQ(cudaGetLastError(), cudaErrorUnknown);

    softdevFailCall(nullptr, 3, cudaErrorNotSupported, true);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(launch(1, [&] { ++ran; }), cudaSuccess);
    EXPECT_EQ(launch(1, [&] { ++ran; }), cudaErrorNotSupported);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorNotSupported);
    softdevClearFailures();
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(ran, 1);
    EXPECT_EQ(cudaGetLastError(), cudaErrorNotSupported);

    softdevFailCall("Swap", 2, cudaErrorLaunchFailure);
    EXPECT_EQ(launch("SwapRows_k", [] {}), cudaSuccess);
    EXPECT_EQ(launch("Other_k", [] {}), cudaSuccess);
    EXPECT_EQ(launch("SwapColumns_k", [] {}), cudaErrorLaunchFailure);
    EXPECT_EQ(cudaGetLastError(), cudaErrorLaunchFailure);

    cublasHandle_t handle;
    softdevFailCall("cublasCreate_v2", 1, CUBLAS_STATUS_ALLOC_FAILED);
    EXPECT_EQ(cublasCreate_v2(&handle), CUBLAS_STATUS_ALLOC_FAILED);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess) << "cuBLAS statuses are no CUDA errors";
}

TEST_F(ControlTest, FailedExecutionShowsAtTheNextWait)
{
    int ran = 0;
    softdevSetHold(true);
    softdevFailExecution("Bad", 2, cudaErrorIllegalAddress);
    EXPECT_EQ(launch("Bad_k", [&] { ran += 1; }), cudaSuccess);
    EXPECT_EQ(launch("Bad_k", [&] { ran += 10; }), cudaSuccess);
    EXPECT_EQ(launch("Good_k", [&] { ran += 100; }), cudaSuccess);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
    std::thread([] { EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorIllegalAddress); }).join();
    EXPECT_EQ(ran, 101);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess) << "it was latched for the thread that waited";

    DeviceArray<int> device(1);
    softdevFailExecution(nullptr, 1, cudaErrorLaunchFailure);
    EXPECT_EQ(launch(1, [] {}), cudaSuccess);
    int host;
    EXPECT_EQ(cudaMemcpy(&host, device, sizeof host, cudaMemcpyDeviceToHost), cudaErrorLaunchFailure);
    EXPECT_EQ(cudaGetLastError(), cudaErrorLaunchFailure);
}

TEST_F(ControlTest, AWaitGetsTheFirstFailureOfWhatItWaitsFor)
{
    softdevSetHold(true);
    cudaStream_t stream;
    ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
    const DeviceArray<int> device(1);
    {
        const PinnedArray<int> pinned(1);
        ASSERT_EQ(cudaMemcpyAsync(device, pinned, sizeof(int), cudaMemcpyHostToDevice, stream), cudaSuccess);
        softdevFailExecution("Bad", 1, cudaErrorIllegalAddress);
        softdevFailExecution("Worse", 1, cudaErrorLaunchFailure);
        EXPECT_EQ(launch("Bad_k", [] {}), cudaSuccess);
        EXPECT_EQ(launch("Worse_k", [] {}), cudaSuccess);
        // Its release runs all that was queued, and reports nothing.
    }
    EXPECT_EQ(cudaStreamSynchronize(stream), cudaSuccess) << "what failed was issued later";
    EXPECT_EQ(cudaDeviceSynchronize(), cudaErrorIllegalAddress);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    EXPECT_EQ(cudaStreamDestroy(stream), cudaSuccess);
}

TEST_F(ControlTest, AStickyFailureStaysWithItsDevice)
{
    ASSERT_TRUE(softdevSetDevices({softdevDefaultDevice(), softdevDefaultDevice()}));
    softdevSetSticky(true);
    DeviceArray<int> device(1);
    cublasHandle_t handle;
    ASSERT_EQ(cublasCreate_v2(&handle), CUBLAS_STATUS_SUCCESS);
    int host = 0, ran = 0;
    const auto copy = [&] { return cudaMemcpy(&host, device, sizeof host, cudaMemcpyDeviceToHost); };
    softdevFailExecution("Bad", 1, cudaErrorIllegalAddress);
    ASSERT_EQ(launch("Bad_k", [] {}), cudaSuccess);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(copy(), cudaErrorIllegalAddress);
        EXPECT_EQ(cudaGetLastError(), cudaErrorIllegalAddress) << "again and again";
        EXPECT_EQ(launch(1, [&] { ++ran; }), cudaErrorIllegalAddress);
        EXPECT_EQ(cudaFree(device), cudaErrorIllegalAddress);
        EXPECT_EQ(cudaStreamSynchronize(nullptr), cudaErrorIllegalAddress);
        EXPECT_EQ(cublasSscal_v2(handle, 0, nullptr, nullptr, 1), CUBLAS_STATUS_EXECUTION_FAILED);
    }
    EXPECT_EQ(ran, 0);
    ASSERT_EQ(cudaSetDevice(1), cudaSuccess);
    EXPECT_EQ(cudaDeviceSynchronize(), cudaSuccess) << "the other device works";
    softdevClearFailures();
    EXPECT_EQ(cublasSscal_v2(handle, 0, nullptr, nullptr, 1), CUBLAS_STATUS_EXECUTION_FAILED) << "not with this handle";
    EXPECT_EQ(cudaSetDevice(0), cudaSuccess);
    EXPECT_EQ(copy(), cudaSuccess);
    EXPECT_EQ(cublasDestroy_v2(handle), CUBLAS_STATUS_SUCCESS);
}

TEST_F(ControlTest, LogTellsWhatWasCalled)
{
    DeviceArray<cuComplex> device(64);
    cublasHandle_t handle;
    ASSERT_EQ(cublasCreate_v2(&handle), CUBLAS_STATUS_SUCCESS);
    std::vector<cuComplex> host(64);
    const cuComplex alpha{1.5f, -2}, beta{0, 3};
    const auto number = [](const void* p) { return static_cast<long long>(reinterpret_cast<std::uintptr_t>(p)); };

    softdevLogStart();
    cudaMemcpy(device, host.data(), 512, cudaMemcpyHostToDevice);
    cublasCgemm_v2(handle, CUBLAS_OP_C, CUBLAS_OP_N, 2, 3, 4, &alpha, device, 4, device + 8, 5, &beta, device + 32, 6);
    softdevLaunch("KernelLASWP", dim3(4, 2), dim3(64), dim3(64), [] {});
    cudaSetDevice(7);
    const std::vector<SoftdevCall> calls = softdevLogTake();
    cudaDeviceSynchronize();
    EXPECT_TRUE(softdevLogTake().empty());

    ASSERT_EQ(calls.size(), 4u);
    using Ints = std::vector<long long>;
    EXPECT_EQ(calls[0].name, "cudaMemcpy");
    EXPECT_EQ(calls[0].ints, (Ints{number(device), number(host.data()), 512, cudaMemcpyHostToDevice}));
    EXPECT_EQ(calls[1].name, "cublasCgemm_v2");
    EXPECT_EQ(calls[1].ints, (Ints{number(handle), CUBLAS_OP_C, CUBLAS_OP_N, 2, 3, 4, number(device), 4,
                                   number(device + 8), 5, number(device + 32), 6}));
    EXPECT_EQ(calls[1].reals, (std::vector<double>{1.5, -2, 0, 3}));
    EXPECT_EQ(calls[2].name, "KernelLASWP");
    EXPECT_EQ(calls[2].ints, (Ints{4, 2, 1, 64, 1, 1}));
    EXPECT_EQ(calls[3].name, "cudaSetDevice") << "calls that fail are logged too";
    ASSERT_EQ(cublasDestroy_v2(handle), CUBLAS_STATUS_SUCCESS);
}
