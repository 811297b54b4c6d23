// Status texts, error messages and versions, which answer before the library is up, and how it comes up and goes down.
#include "support/api.h"
#include "support/device.h"
#include "tarn_core.h"

#include <gtest/gtest.h>

#include <climits>
#include <condition_variable>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <thread>

namespace {

using namespace test;

tarnStatus statusOf(int value) { return static_cast<tarnStatus>(value); }

TEST(Status, EveryStatusHasItsText)
{
    const char* const texts[] = {
        "No errors",
        "TARN is not initialized",
        "No hardware is present to run TARN",
        "CUDA runtime or driver is not supported",
        "Hardware does not have the required compute capability for this problem",
        "Insufficient memory to complete this operation",
        "A required feature is not yet implemented",
        "Argument error; see tarnGetErrorInfo for error code",
        "Data error; see tarnGetErrorInfo for error code",
        "Blas error; see tarnGetErrorInfo for error code",
        "Runtime error; see tarnGetErrorInfo for error code",
        "Invalid storage format; this operation cannot continue",
        "Unspecified error; contact the TARN team",
    };
    tarnSetLastStatus(tarnBlasError);
    tarnSetErrorInfo(13);
    for (int e = 0; e <= 12; ++e)
        EXPECT_STREQ(tarnGetStatusString(statusOf(e)), texts[e]);
    for (const int e : {-1, 13, 1000})
        EXPECT_STREQ(tarnGetStatusString(statusOf(e)), "Invalid tarnStatus");
    EXPECT_EQ(tarnGetLastStatus(), tarnBlasError) << "records nothing";
    EXPECT_EQ(tarnGetErrorInfo(), 13);
}

/// The message in a buffer of `size` bytes; fails if the rest of the buffer is not clear or a byte behind it changed.
std::string message(int e, int info, int size = 300)
{
    std::vector<char> buffer(size + 1, '#');
    EXPECT_EQ(tarnGetErrorInfoString(statusOf(e), info, buffer.data(), size), tarnNoError);
    EXPECT_EQ(tarnGetErrorInfo(), 0);
    EXPECT_EQ(buffer[size], '#');
    const std::string text = buffer.data();
    for (std::size_t k = text.size(); k < std::size_t(size); ++k)
        EXPECT_EQ(buffer[k], 0);
    return text;
}

TEST(Status, MessagesCarryTheDetail)
{
    EXPECT_EQ(message(tarnArgumentError, -4), "Argument 4 is invalid (see the Reference Manual for more information)");
    EXPECT_EQ(message(tarnArgumentError, 4), message(tarnArgumentError, -4));
    EXPECT_EQ(message(tarnArgumentError, INT_MIN),
              "Argument 2147483648 is invalid (see the Reference Manual for more information)");
    EXPECT_EQ(message(tarnDataError, 17),
              "This status can mean one of the following:\n"
              "    TARN Lapack: Data error at pos 17 (see the Reference Manual for guidance)\n"
              "    TARN Sparse: A data problem was found; inspect result.flag to discriminate");
    const std::pair<int, const char*> phrases[] = {
        {0, "call tarnGetErrorInfo() to determine this error with specificity"},
        {1, "not initialized"},
        {3, "allocation failure"},
        {7, "Invalid argument value"},
        {8, "architecture mismatch"},
        {11, "mapping error"},
        {13, "execution failed"},
        {14, "internal error"},
        {2, "unknown"},
        {99, "unknown"},
    };
    for (const auto& [code, phrase] : phrases)
        EXPECT_EQ(message(tarnBlasError, code), std::string("CUBLAS error: ") + phrase);
    EXPECT_EQ(message(tarnRuntimeError, 2), "CUDA Error:  out of memory (see Programmer's Guide)");
    EXPECT_EQ(message(tarnBadStorageFormat, 0),
              "See the TARN Sparse user guide for the requirements for matrix formats");
    for (const tarnStatus e :
         {tarnNoError, tarnNotInitialized, tarnNoHardware, tarnInsufficientRuntime, tarnInsufficientComputeCapability,
          tarnInsufficientMemory, tarnFeatureNotImplemented, tarnUnspecifiedError})
        EXPECT_EQ(message(e, 5), tarnGetStatusString(e));
}

TEST(Status, MessagesAreCutToTheBuffer)
{
    const std::string whole = message(tarnDataError, 3);
    for (const int size : {1, 2, 10, int(whole.size()), int(whole.size()) + 1})
        EXPECT_EQ(message(tarnDataError, 3, size), whole.substr(0, size - 1));
}

TEST(Status, MessageArgumentsAreCheckedInOrder)
{
    char buffer[4] = "abc";
    const auto infoOf = [](tarnStatus status) { return status == tarnArgumentError ? tarnGetErrorInfo() : 1; };
    EXPECT_EQ(infoOf(tarnGetErrorInfoString(statusOf(13), 0, nullptr, 0)), -1);
    EXPECT_EQ(infoOf(tarnGetErrorInfoString(statusOf(15), 0, buffer, 4)), -1);
    EXPECT_EQ(infoOf(tarnGetErrorInfoString(tarnNoError, 0, nullptr, 0)), -3);
    EXPECT_EQ(infoOf(tarnGetErrorInfoString(tarnNoError, 0, buffer, 0)), -4);
    EXPECT_EQ(infoOf(tarnGetErrorInfoString(tarnNoError, 0, buffer, -5)), -4);
    EXPECT_EQ(tarnGetLastStatus(), tarnArgumentError);
    EXPECT_STREQ(buffer, "abc");
}

TEST(Status, AnErrorLeftOverIsReportedAndTheErrorTextClearsIt)
{
    EXPECT_NE(cudaSetDevice(999), cudaSuccess);
    EXPECT_EQ(message(tarnRuntimeError, 2), "CUDA Error:  out of memory (see Programmer's Guide)");
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);

    EXPECT_NE(cudaSetDevice(999), cudaSuccess);
    char buffer[40];
    EXPECT_EQ(tarnGetErrorInfoString(tarnNoError, 0, buffer, sizeof buffer), tarnRuntimeError);
    EXPECT_EQ(tarnGetErrorInfo(), cudaErrorInvalidDevice);
    EXPECT_STREQ(buffer, "No errors");
    EXPECT_EQ(cudaGetLastError(), cudaSuccess);
}

TEST(Status, EachThreadHasItsOwn)
{
    tarnSetLastStatus(tarnDataError);
    tarnSetErrorInfo(5);
    std::thread([] {
        EXPECT_EQ(tarnGetLastStatus(), tarnNoError);
        EXPECT_EQ(tarnGetErrorInfo(), 0);
        tarnGetDeviceCount(nullptr);
    }).join();
    EXPECT_EQ(tarnGetLastStatus(), tarnDataError);
    EXPECT_EQ(tarnGetErrorInfo(), 5);
}

TEST(Versions, AnswerBeforeInitialisation)
{
    tarnSetLastStatus(tarnDataError);
    EXPECT_EQ(tarnGetVersion(), 14000);
    EXPECT_EQ(tarnGetCudaMinimumVersion(), 4010);
    EXPECT_EQ(tarnGetCublasMinimumVersion(), 4010);
    EXPECT_GE(tarnGetCudaRuntimeVersion(), 4010);
    EXPECT_GE(tarnGetCudaDriverVersion(), tarnGetCudaRuntimeVersion());
    EXPECT_GE(tarnGetCublasRuntimeVersion(), 4010);
    EXPECT_EQ(tarnGetLastStatus(), tarnDataError) << "records nothing";
}

/// Every test starts and ends with the library down, on one default device.
class Lifecycle : public WithControls
{
protected:
    void TearDown() override
    {
        WithControls::TearDown();
        softdevSetVersions(13000, 13000, 130000);
        tarnShutdown();
        EXPECT_FALSE(isUp());
        EXPECT_EQ(softdevLive().handles, 0u);
        EXPECT_TRUE(!hasControls || softdevSetDevices({softdevDefaultDevice()}));
    }

    static bool isUp()
    {
        int device;
        return tarnGetExecutingDevice(&device) != tarnNotInitialized;
    }
};

/// The smallest routine that needs a cuBLAS handle: c = a b.
tarnStatus multiply()
{
    float a = 3, b = 4, c = 0;
    const tarnStatus status = tarnSgemm('N', 'N', 1, 1, 1, 1, &a, 1, &b, 1, 0, &c, 1);
    EXPECT_EQ(c, status == tarnNoError ? 12 : 0);
    return status;
}

/// A thread that works on request, so that it is there while others look.
class Worker
{
public:
    ~Worker() { end(); }

    /// Returns when the thread has done the task.
    void run(std::function<void()> task)
    {
        std::unique_lock<std::mutex> lock(mutex_);
        task_ = std::move(task);
        changed_.notify_all();
        changed_.wait(lock, [this] { return !task_; });
    }

    void end()
    {
        if (!thread_.joinable())
            return;
        run([this] { ending_ = true; });
        thread_.join();
    }

private:
    void serve()
    {
        for (std::unique_lock<std::mutex> lock(mutex_); !ending_; changed_.notify_all()) {
            changed_.wait(lock, [this] { return bool(task_); });
            task_();
            task_ = nullptr;
        }
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    std::function<void()> task_;
    bool ending_ = false;
    std::thread thread_{[this] { serve(); }};
};

TEST_F(Lifecycle, VersionsAreThoseThatCudaReports)
{
    softdevSetVersions(5050, 6000, 5000);
    EXPECT_EQ(tarnGetCudaRuntimeVersion(), 5050);
    EXPECT_EQ(tarnGetCudaDriverVersion(), 6000);
    EXPECT_EQ(tarnGetCublasRuntimeVersion(), 5000);
    for (const char* query : {"cudaRuntimeGetVersion", "cudaDriverGetVersion", "cublasGetVersion_v2"})
        softdevFailCall(query, 1, 3);
    EXPECT_EQ(tarnGetCudaRuntimeVersion(), 0);
    EXPECT_EQ(tarnGetCudaDriverVersion(), 0);
    EXPECT_EQ(tarnGetCublasRuntimeVersion(), 0);
    EXPECT_EQ(cudaGetLastError(), cudaSuccess) << "nothing is left for the next call to report";
}

TEST_F(Lifecycle, OneShutdownEndsWhatTwoCallsOfOneThreadBegan)
{
    softdevLogStart();
    tarnShutdown();
    tarnFreeBuffers();
    EXPECT_TRUE(softdevLogTake().empty()) << "before initialisation both do nothing";

    softdevLogStart();
    EXPECT_EQ(tarnInitialize(), tarnNoError);
    EXPECT_EQ(tarnInitialize(), tarnNoError);
    EXPECT_EQ(tarnGetLastStatus(), tarnNoError);
    EXPECT_TRUE(isUp());
    tarnShutdown();
    const auto log = softdevLogTake();
    EXPECT_FALSE(isUp());
    EXPECT_EQ(countCalls(log, "cublasInit"), 1);
    EXPECT_EQ(countCalls(log, "cublasShutdown"), 1);

    EXPECT_EQ(tarnInitialize(), tarnNoError);
    EXPECT_EQ(multiply(), tarnNoError);
    tarnShutdown();
    EXPECT_EQ(multiply(), tarnNotInitialized);
}

TEST_F(Lifecycle, TheLastThreadTakesTheLibraryDown)
{
    Worker other;
    EXPECT_EQ(tarnInitialize(), tarnNoError);
    other.run([] { EXPECT_EQ(tarnInitialize(), tarnNoError); });
    tarnShutdown();
    tarnShutdown();
    EXPECT_TRUE(isUp());
    EXPECT_EQ(multiply(), tarnNoError) << "a thread that has left, or never came, may run routines";
    tarnShutdown();
    EXPECT_EQ(softdevLive().handles, 0u);
    other.run([] {
        EXPECT_EQ(multiply(), tarnNoError);
        tarnShutdown();
    });
    EXPECT_FALSE(isUp());
}

TEST_F(Lifecycle, HandlesGoWithTheirThreadOrItsShutdown)
{
    EXPECT_EQ(tarnInitialize(), tarnNoError);
    EXPECT_EQ(softdevLive().handles, 0u) << "made at first use";
    EXPECT_EQ(multiply(), tarnNoError);
    EXPECT_EQ(multiply(), tarnNoError);
    EXPECT_EQ(softdevLive().handles, 1u);
    {
        Worker ends, leaves;
        ends.run([] { EXPECT_EQ(multiply(), tarnNoError); });
        leaves.run([] { EXPECT_EQ(multiply(), tarnNoError); });
        EXPECT_EQ(softdevLive().handles, 3u);
        ends.end();
        EXPECT_EQ(softdevLive().handles, 2u);
        leaves.run([] { tarnShutdown(); });
        EXPECT_EQ(softdevLive().handles, 1u);
        EXPECT_TRUE(isUp());
        leaves.run([] { EXPECT_EQ(multiply(), tarnNoError) << "with a new handle"; });
    }
    EXPECT_EQ(softdevLive().handles, 1u);
}

TEST_F(Lifecycle, ThreadsMayComeAndGoAtOnce)
{
    EXPECT_EQ(tarnInitialize(), tarnNoError);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([] {
            for (int k = 0; k < 50; ++k) {
                EXPECT_EQ(tarnInitialize(), tarnNoError);
                EXPECT_EQ(multiply(), tarnNoError);
                tarnFreeBuffers();
                tarnShutdown();
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_TRUE(isUp());
}

TEST_F(Lifecycle, TellsTheOpenMPRuntimeOfItsTwin)
{
    unsetenv("KMP_DUPLICATE_LIB_OK");
    softdevFailCall("cublasInit", 1, 14);
    EXPECT_EQ(tarnInitialize(), tarnBlasError);
    EXPECT_EQ(getenv("KMP_DUPLICATE_LIB_OK"), nullptr);
    EXPECT_EQ(tarnInitialize(), tarnNoError);
    EXPECT_STREQ(getenv("KMP_DUPLICATE_LIB_OK"), "TRUE");
}

TEST_F(Lifecycle, InitialisationFailsByTheTable)
{
    const auto versions = [](int runtime, int driver, int cublas) {
        return [=] { softdevSetVersions(runtime, driver, cublas); };
    };
    const auto failing = [](const char* call, int code) { return [=] { softdevFailCall(call, 1, code); }; };
    const auto machine = [](std::vector<SoftdevDevice> devices) {
        return [=] { EXPECT_TRUE(softdevSetDevices(devices)); };
    };
    const struct
    {
        const char* what;
        std::function<void()> arrange;
        tarnStatus status;
        tarnInfo info;
    } rows[] = {
        {"old runtime", versions(4000, 13000, 130000), tarnInsufficientRuntime, 0},
        {"old driver", versions(4010, 4000, 4010), tarnInsufficientRuntime, 0},
        {"driver older than runtime", versions(12000, 11080, 12000), tarnInsufficientRuntime, 0},
        {"no driver", versions(12000, 0, 12000), tarnInsufficientRuntime, 0},
        {"old cuBLAS", versions(13000, 13000, 4000), tarnInsufficientRuntime, 0},
        {"cuBLAS does not tell", failing("cublasGetVersion_v2", 1), tarnInsufficientRuntime, 0},
        {"runtime query", failing("cudaRuntimeGetVersion", 999), tarnRuntimeError, 999},
        {"driver query", failing("cudaDriverGetVersion", 3), tarnRuntimeError, 3},
        {"device count", failing("cudaGetDeviceCount", 999), tarnRuntimeError, 999},
        {"device count, memory", failing("cudaGetDeviceCount", 2), tarnInsufficientMemory, 0},
        {"device count, memory value", failing("cudaGetDeviceCount", 32), tarnInsufficientMemory, 0},
        {"properties", failing("cudaGetDeviceProperties", 719), tarnRuntimeError, 719},
        {"no device", machine({}), tarnNoHardware, 0},
        {"placeholder", machine({deviceOf(9999, 9999)}), tarnNoHardware, 0},
        {"device of major 0", machine({deviceOf(0, 9)}), tarnNoHardware, 0},
        {"cuBLAS memory", failing("cublasInit", 3), tarnInsufficientMemory, 0},
        {"cuBLAS start", failing("cublasInit", 1), tarnBlasError, 1},
        {"cuBLAS state", failing("cublasGetError", 14), tarnBlasError, 14},
        {"device in use", failing("cudaGetDevice", 46), tarnRuntimeError, 46},
        {"wait", failing("cudaDeviceSynchronize", 700), tarnRuntimeError, 700},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        tarnSetErrorInfo(77);
        row.arrange();
        EXPECT_EQ(tarnInitialize(), row.status);
        EXPECT_EQ(tarnGetLastStatus(), row.status);
        EXPECT_EQ(tarnGetErrorInfo(), row.info);
        EXPECT_FALSE(isUp());
        EXPECT_EQ(multiply(), tarnNotInitialized);

        softdevClearFailures();
        softdevSetVersions(13000, 13000, 130000);
        EXPECT_TRUE(softdevSetDevices({softdevDefaultDevice()}));
        EXPECT_EQ(tarnInitialize(), tarnNoError);
        EXPECT_EQ(multiply(), tarnNoError);
        tarnShutdown();
    }
    softdevSetVersions(4010, 4010, 4010);
    EXPECT_EQ(tarnInitialize(), tarnNoError) << "the oldest that is served";
}

TEST_F(Lifecycle, AFailedInitialisationCountsTheThreadAllTheSame)
{
    softdevFailCall("cublasInit", 1, 1);
    EXPECT_EQ(tarnInitialize(), tarnBlasError);
    std::thread([] {
        EXPECT_EQ(tarnInitialize(), tarnNoError);
        tarnShutdown();
    }).join();
    EXPECT_TRUE(isUp());
    tarnShutdown();
    EXPECT_FALSE(isUp());
}

TEST_F(Lifecycle, ServiceFunctionsAnswerWithoutADevice)
{
    ASSERT_TRUE(softdevSetDevices({}));
    int count = -1;
    EXPECT_EQ(tarnGetDeviceCount(&count), tarnNoError);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(tarnSelectDevice(0), tarnArgumentError);
    EXPECT_EQ(tarnGetErrorInfo(), -1);
    EXPECT_EQ(message(tarnNoHardware, 0), "No hardware is present to run TARN");
    EXPECT_EQ(message(tarnRuntimeError, 100),
              "CUDA Error:  no CUDA-capable device is detected (see Programmer's Guide)");
    EXPECT_EQ(tarnInitialize(), tarnNoHardware);
    EXPECT_EQ(tarnGetErrorInfo(), 0);
    softdevSetVersions(13000, 0, 13000);
    EXPECT_EQ(cudaGetLastError(), cudaErrorInsufficientDriver);
    EXPECT_EQ(tarnGetDeviceCount(&count), tarnNoError);
    EXPECT_EQ(count, 0);
    EXPECT_EQ(message(tarnRuntimeError, 35),
              "CUDA Error:  CUDA driver version is insufficient for CUDA runtime version (see Programmer's Guide)");
    EXPECT_EQ(tarnInitialize(), tarnInsufficientRuntime) << "there is no driver";
    softdevSetVersions(13000, 13000, 130000);

    // Two placeholders are not looked at; of many devices the library serves sixteen.
    ASSERT_TRUE(softdevSetDevices({deviceOf(9999, 9999), deviceOf(0, 0)}));
    EXPECT_EQ(tarnGetDeviceCount(&count), tarnNoError);
    EXPECT_EQ(count, 2);
    ASSERT_TRUE(softdevSetDevices(std::vector<SoftdevDevice>(17, deviceOf(9, 0))));
    EXPECT_EQ(tarnGetDeviceCount(&count), tarnNoError);
    EXPECT_EQ(count, 16);
    EXPECT_EQ(tarnSelectDevice(15), tarnNoError);
    EXPECT_EQ(tarnSelectDevice(16), tarnArgumentError);
}

} // namespace
