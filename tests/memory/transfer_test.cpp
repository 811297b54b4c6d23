// Copies between host and device: which CUDA calls a shape takes, and where the data ends up.
#include "frame/device_table.h"
#include "frame/error_state.h"
#include "frame/machine.h"
#include "memory/allocators.h"
#include "memory/transfer.h"
#include "support/matrix.h"

#include <gtest/gtest.h>

#include <numeric>

#include <sys/mman.h>

namespace {

using namespace test;

constexpr auto in = cudaMemcpyHostToDevice, out = cudaMemcpyDeviceToHost;

/// The copies and waits in a log by name.
std::vector<std::string> copies(const std::vector<SoftdevCall>& log)
{
    std::vector<std::string> names;
    for (const SoftdevCall& call : log)
        if (call.name.rfind("cudaMemcpy", 0) == 0 || call.name == "cudaStreamSynchronize")
            names.push_back(call.name);
    return names;
}

using Names = std::vector<std::string>;

class Transfer : public OnMachine
{
protected:
    const DeviceArray<char> device{4096};
    std::vector<char> host = std::vector<char>(4096, 'x');
};

TEST_F(Transfer, ContiguousShapesAreOneLinearCopy)
{
    softdevLogStart();
    EXPECT_EQ(copy2D(device.data(), 10, host.data(), 10, 10, 20, in), cudaSuccess);
    EXPECT_EQ(copy3D(device.data(), 10, 50, host.data(), 10, 50, 10, 5, 4, in), cudaSuccess);
    EXPECT_EQ(copy3D(device.data(), 10, 200, host.data(), 10, 200, 10, 20, 1, in), cudaSuccess);
    const auto log = softdevLogTake();
    EXPECT_EQ(copies(log), Names(3, "cudaMemcpy"));
    for (const SoftdevCall& call : log)
        EXPECT_EQ(call.ints[2], 200) << "bytes";
}

TEST_F(Transfer, StridedShapesAreTwoDimensional)
{
    const StreamHandle stream = StreamHandle::create();
    softdevLogStart();
    EXPECT_EQ(copy2D(device.data(), 16, host.data(), 10, 10, 20, in), cudaSuccess);
    EXPECT_EQ(copy2D(host.data(), 16, device.data(), 16, 10, 20, out), cudaSuccess);
    EXPECT_EQ(copy2D(device.data(), 16, host.data(), 10, 10, 20, in, true, stream.raw()), cudaSuccess);
    EXPECT_EQ(copy2D(device.data(), 10, host.data(), 10, 10, 20, in, true, stream.raw()), cudaSuccess);
    EXPECT_EQ(copy2D(device.data(), 0x7ffffffe, host.data(), 10, 10, 1, in), cudaSuccess);
    EXPECT_EQ(copy3D(device.data(), 16, 320, host.data(), 10, 200, 10, 20, 3, in), cudaSuccess);
    stream.synchronize();
    EXPECT_EQ(copies(softdevLogTake()),
              (Names{"cudaMemcpy2D", "cudaMemcpy2D", "cudaMemcpy2DAsync", "cudaMemcpyAsync", "cudaMemcpy2D",
                     "cudaMemcpy2D", "cudaMemcpy2D", "cudaMemcpy2D", "cudaStreamSynchronize"}));

    softdevLogStart();
    softdevFailCall("cudaMemcpy2D", 2, 719);
    EXPECT_EQ(copy3D(device.data(), 16, 320, host.data(), 10, 200, 10, 20, 4, in), 719);
    EXPECT_EQ(countCalls(softdevLogTake(), "cudaMemcpy2D"), 2) << "the slices left are skipped";
    cudaGetLastError();
}

/// A host array of three rows whose pitch no two-dimensional copy takes; only the pages of the rows exist.
class HugePitch : public testing::Test
{
protected:
    static constexpr std::size_t pitch = 0x7fffffff, width = 8, bytes = 2 * pitch + width;

    void SetUp() override
    {
        void* const p =
            mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        if (p == MAP_FAILED)
            GTEST_SKIP() << "no address space for " << bytes << " bytes";
        rows = static_cast<char*>(p);
    }
    void TearDown() override
    {
        if (rows)
            munmap(rows, bytes);
    }

    char* rows = nullptr;
};

TEST_F(HugePitch, GoesRowByRow)
{
    DeviceArray<char> device(3 * width);
    for (std::size_t row = 0; row < 3; ++row)
        std::fill_n(rows + row * pitch, width, char('a' + row));
    ASSERT_EQ(copy2D(device.data(), width, rows, pitch, width, 3, in), cudaSuccess);
    const auto packed = device.download();
    EXPECT_EQ(std::string(packed.begin(), packed.end()), "aaaaaaaabbbbbbbbcccccccc");

    device.upload(std::vector<char>(3 * width, 'z'));
    ASSERT_EQ(copy2D(rows, pitch, device.data(), width, 5, 3, out, true), cudaSuccess);
    ASSERT_EQ(cudaDeviceSynchronize(), cudaSuccess);
    for (std::size_t row = 0; row < 3; ++row)
        EXPECT_EQ(std::string(rows + row * pitch, width), "zzzzz" + std::string(3, char('a' + row)));

    if (!hasControls)
        return;
    softdevLogStart();
    softdevFailCall("cudaMemcpy", 2, 719);
    EXPECT_EQ(copy2D(device.data(), width, rows, pitch, width, 3, in), 719);
    EXPECT_EQ(copies(softdevLogTake()), Names(2, "cudaMemcpy")) << "stops at the first row that fails";
    softdevClearFailures();
    cudaGetLastError();
}

TEST(HostCopy, MovesSlicesOfAnyPitch)
{
    std::vector<char> src(60), dst(100, '.'), packed(24, '.');
    std::iota(src.begin(), src.end(), '!');
    hostCopy3D(dst.data(), 6, 40, src.data(), 5, 30, 4, 3, 2);
    for (int k = 0; k < 100; ++k) {
        const int slice = k / 40, row = k % 40 / 6, byte = k % 40 % 6;
        const bool inside = slice < 2 && row < 3 && byte < 4;
        EXPECT_EQ(dst[k], inside ? src[30 * slice + 5 * row + byte] : '.') << k;
    }
    hostCopy3D(packed.data(), 4, 12, dst.data(), 6, 40, 4, 3, 2);
    std::vector<char> again(24);
    hostCopy3D(again.data(), 4, 12, packed.data(), 4, 12, 4, 3, 2);
    EXPECT_EQ(again, packed);
    EXPECT_EQ(packed[12 + 4 + 1], src[30 + 5 + 1]);
}

/// The typed helpers for one element type, through the library's own page-locked memory.
template <class T>
class Helpers : public testing::Test
{
protected:
    void SetUp() override
    {
        tarn::bindThreadDevice();
        const auto numbers = Matrix<T>::random(ld, 10, ld);
        host = numbers.elements();
    }

    static constexpr int ld = 9;
    std::vector<T> host;
    const DeviceArray<T> device{200};
};

using ElementTypes = testing::Types<float, tarn::Complex<float>>;
TYPED_TEST_SUITE(Helpers, ElementTypes);

TYPED_TEST(Helpers, RoundTripsWithAndWithoutStream)
{
    using T = TypeParam;
    const Extent extent{9, 10, 1};
    velk::PageLockedAllocator<T> pageLocked;
    T* const staging = pageLocked.allocate(extent);
    for (const StreamHandle& stream : {StreamHandle(), StreamHandle::create()}) {
        std::copy(this->host.begin(), this->host.end(), staging);
        setMatrix(7, 10, this->device.data(), 20, staging, 9, stream);
        stream.synchronize();
        std::fill_n(staging, 90, T(0));
        getMatrix(7, 10, staging, 8, this->device.data(), 20, stream);
        stream.synchronize();
        for (int j = 0; j < 10; ++j)
            for (int i = 0; i < 8; ++i)
                EXPECT_EQ(staging[8 * j + i], i < 7 ? this->host[9 * j + i] : T(0));

        setVector(90, this->device.data(), this->host.data());
        getVector(90, staging, this->device.data(), stream);
        stream.synchronize();
        EXPECT_TRUE(std::equal(this->host.begin(), this->host.end(), staging));
    }
    pageLocked.release(staging, 90);
}

TEST_F(Transfer, HelpersMakeNoCallForEmptyShapesAndRaiseFailures)
{
    const DeviceArray<int> ints(10);
    std::vector<int> pivots(10);
    float* const null = nullptr;
    softdevLogStart();
    setMatrix(0, 5, null, 1, null, 1);
    setMatrix(5, 0, null, 5, null, 5);
    getMatrix(0, 0, null, 1, null, 1);
    setVector(0, null, null);
    getVector(0, null, null);
    EXPECT_TRUE(softdevLogTake().empty());

    softdevLogStart();
    setVector(10, ints.data(), pivots.data());
    getMatrix(5, 2, pivots.data(), 5, ints.data(), 5);
    EXPECT_EQ(copies(softdevLogTake()), Names(2, "cudaMemcpy"));
    softdevFailCall("cudaMemcpy", 1, 2);
    EXPECT_THROW(getVector(10, pivots.data(), ints.data()), velk::CudaMemoryException);
    softdevFailCall("cudaMemcpy2D", 1, 12);
    EXPECT_THROW(setMatrix(2, 2, ints.data(), 3, pivots.data(), 2), velk::CudaRuntimeException);
}

TEST_F(Transfer, WithAStreamHelpersDoNotWait)
{
    const DeviceArray<float> numbers(std::vector<float>(100, 3.f));
    velk::PageLockedAllocator<float> pageLocked;
    float* const staging = pageLocked.allocate({100, 1, 1});
    std::fill_n(staging, 100, 0.f);
    const StreamHandle stream = StreamHandle::create();
    softdevSetHold(true);
    getMatrix(10, 10, staging, 10, numbers.data(), 10, stream);
    EXPECT_EQ(staging[99], 0);
    stream.synchronize();
    EXPECT_EQ(staging[99], 3);
    softdevSetHold(softdevChecked());
    pageLocked.release(staging, 100);
}

TEST_F(Transfer, StreamsAreSharedAndDieWithTheirLastHandle)
{
    EXPECT_EQ(StreamHandle().raw(), nullptr);
    {
        const StreamHandle a = StreamHandle::create(), b = StreamHandle::create();
        StreamHandle c = a;
        EXPECT_NE(a.raw(), nullptr);
        EXPECT_TRUE(a == c && a.isShared());
        EXPECT_TRUE(a != b && !b.isShared() && a != StreamHandle());
        c = {};
        EXPECT_FALSE(a.isShared());
        EXPECT_EQ(softdevLive().streams, 2u);
        softdevFailCall("cudaStreamSynchronize", 1, 719);
        EXPECT_THROW(a.synchronize(), velk::CudaRuntimeException);
    }
    EXPECT_EQ(softdevLive().streams, 0u);
    softdevFailCall("cudaStreamCreate", 1, 2);
    EXPECT_THROW(StreamHandle::create(), velk::CudaMemoryException);
}

TEST_F(Transfer, WithoutOverlapEverythingIsSynchronous)
{
    ASSERT_EQ(cudaSetDevice(firstGeneration), cudaSuccess);
    const DeviceArray<float> numbers(std::vector<float>(100, 3.f));
    std::vector<float> back(100);
    softdevLogStart();
    const StreamHandle stream = StreamHandle::create();
    EXPECT_EQ(stream.raw(), nullptr);
    EXPECT_TRUE(stream == StreamHandle());
    getMatrix(10, 10, back.data(), 10, numbers.data(), 10, stream);
    EXPECT_EQ(back[99], 3);
    stream.synchronize();
    const auto log = softdevLogTake();
    EXPECT_EQ(countCalls(log, "cudaStreamCreate"), 0);
    EXPECT_EQ(copies(log), (Names{"cudaMemcpy", "cudaStreamSynchronize"}));
    EXPECT_EQ(softdevLive().streams, 0u);
}

} // namespace
