/// Addresses and allocations.

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <random>

#include "cublas_v2.h"
#include "fixture.h"
#include "free_space.h"

using MemoryTest = SoftdevTest;
using MemoryDeathTest = SoftdevTest;

namespace {

constexpr std::size_t MiB = std::size_t{1} << 20;

void setMemory(std::size_t bytes)
{
    SoftdevDevice device = softdevDefaultDevice();
    device.memory = bytes;
    ASSERT_TRUE(softdevSetDevices({device}));
}

} // namespace

TEST_F(MemoryDeathTest, HostAccessFaults)
{
    DeviceArray<float> device(std::vector<float>(16, 1));
    volatile float* address = device;
    EXPECT_DEATH(address[0] = 1, "");
    EXPECT_DEATH(std::printf("%f", double(address[15])), "");
}

TEST_F(MemoryDeathTest, GuardZonesAreVerified)
{
    if (!softdevChecked())
        GTEST_SKIP() << "not a checked build";
    const auto write = [](std::ptrdiff_t index) {
        char* device;
        cudaMalloc(&device, 1000);
        char* inside = view(device);
        launch(1, [=] { inside[index] = 1; });
        cudaFree(device);
    };
    write(999);
    EXPECT_DEATH(write(1000), "allocation of 1000 bytes was written 1 bytes past");
    EXPECT_DEATH(write(-2), "allocation of 1000 bytes was written 2 bytes before");
}

TEST_F(MemoryTest, ForeignPointersAreRefused)
{
    DeviceArray<char> device(4096), other(4096);
    PinnedArray<char> pinned(4096);
    std::vector<char> host(8192);
    char* d = device;
    char* h = host.data();
    struct
    {
        void* dst;
        const void* src;
        std::size_t bytes;
        cudaMemcpyKind kind;
    } const refused[] = {
        {h, h + 100, 8, cudaMemcpyHostToDevice}, {h, h + 100, 8, cudaMemcpyDeviceToHost},
        {d, d, 8, cudaMemcpyHostToDevice},       {d, d, 8, cudaMemcpyDeviceToHost},
        {d, nullptr, 8, cudaMemcpyHostToDevice}, {nullptr, d, 8, cudaMemcpyDeviceToHost},
        {d, h, 4097, cudaMemcpyHostToDevice},    {d + 4000, h, 97, cudaMemcpyHostToDevice},
        {d - 1, h, 8, cudaMemcpyHostToDevice},   {d, pinned + 4000, 100, cudaMemcpyHostToDevice},
        {h, view(d), 8, cudaMemcpyHostToHost},   {d, h, std::size_t(-1), cudaMemcpyHostToDevice},
        {d, other, 8, cudaMemcpyHostToHost},
    };
    for (const auto& copy : refused) {
        EXPECT_EQ(cudaMemcpy(copy.dst, copy.src, copy.bytes, copy.kind), cudaErrorInvalidValue);
        EXPECT_EQ(cudaMemcpyAsync(copy.dst, copy.src, copy.bytes, copy.kind), cudaErrorInvalidValue);
    }
    for (const int kind : {-1, 5})
        EXPECT_EQ(cudaMemcpy(d, h, 8, cudaMemcpyKind(kind)), cudaErrorInvalidMemcpyDirection);
    // The last row of one ends behind 2^64, the last of the other begins there.
    const std::pair<std::size_t, std::size_t> endless[] = {{17, std::size_t(-1) / 17 + 1},
                                                           {1 << 30, (std::size_t{1} << 34) + 1}};
    for (const auto& [pitch, rows] : endless)
        EXPECT_EQ(cudaMemcpy2D(d, pitch, h, pitch, 17, rows, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemset(h, 0, 8), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemset(d + 8, 0, 4096), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFree(h), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFree(d + 256), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFreeHost(h), cudaErrorInvalidValue);
    EXPECT_EQ(cudaFreeHost(d), cudaErrorInvalidValue);
    void* inside;
    EXPECT_EQ(softdevDeviceView(h, &inside), cudaErrorInvalidValue);
    char* gone;
    ASSERT_EQ(cudaMalloc(&gone, 64), cudaSuccess);
    ASSERT_EQ(cudaFree(gone), cudaSuccess);
    EXPECT_EQ(cudaFree(gone), cudaErrorInvalidValue);
    EXPECT_EQ(softdevDeviceView(gone, &inside), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemset(gone, 0, 1), cudaErrorInvalidValue);
}

TEST_F(MemoryTest, NothingIsCopiedOrFreedFromNowhere)
{
    EXPECT_EQ(cudaMemcpy(nullptr, nullptr, 0, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(cudaMemcpyAsync(nullptr, nullptr, 0, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(cudaMemcpy2D(nullptr, 8, nullptr, 8, 8, 0, cudaMemcpyDeviceToHost), cudaSuccess);
    EXPECT_EQ(cudaMemset(nullptr, 0, 0), cudaSuccess);
    EXPECT_EQ(cudaFree(nullptr), cudaSuccess);
    EXPECT_EQ(cudaFreeHost(nullptr), cudaSuccess);
    void* view = this;
    EXPECT_EQ(softdevDeviceView(nullptr, &view), cudaSuccess);
    EXPECT_EQ(view, nullptr);
}

// Rows of 10 bytes, 16 apart on the device, 20 on the host.
TEST_F(MemoryTest, PitchedCopies)
{
    DeviceArray<char> device(16 * 6 + 10);
    std::vector<char> host(20 * 7), back(20 * 7, 'x');
    for (std::size_t i = 0; i < host.size(); ++i)
        host[i] = char('a' + i % 23);
    ASSERT_EQ(cudaMemcpy2D(device, 16, host.data(), 20, 10, 7, cudaMemcpyHostToDevice), cudaSuccess);
    EXPECT_EQ(cudaMemcpy2D(device, 16, host.data(), 20, 11, 7, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy2D(device, 16, host.data(), 20, 10, 8, cudaMemcpyHostToDevice), cudaErrorInvalidValue);
    EXPECT_EQ(cudaMemcpy2D(device, 9, host.data(), 20, 10, 2, cudaMemcpyHostToDevice), cudaErrorInvalidPitchValue);
    EXPECT_EQ(cudaMemcpy2D(device, 16, host.data(), std::size_t{1} << 31, 10, 1, cudaMemcpyHostToDevice),
              cudaErrorInvalidPitchValue);
    ASSERT_EQ(cudaMemcpy2D(back.data(), 20, device, 16, 10, 7, cudaMemcpyDefault), cudaSuccess);
    for (std::size_t i = 0; i < host.size(); ++i)
        ASSERT_EQ(back[i], i % 20 < 10 ? host[i] : 'x') << i;

    // Rows of one element.
    for (const std::size_t element : {4, 8, 16}) {
        std::fill(back.begin(), back.end(), 'x');
        ASSERT_EQ(cudaMemcpy2D(device, 16, host.data(), 20, element, 6, cudaMemcpyHostToDevice), cudaSuccess);
        ASSERT_EQ(cudaMemcpy2D(back.data(), 20, device, 16, element, 6, cudaMemcpyDeviceToHost), cudaSuccess);
        for (std::size_t i = 0; i < host.size(); ++i)
            ASSERT_EQ(back[i], i < 120 && i % 20 < element ? host[i] : 'x') << element << ", " << i;
    }
}

// Large enough for several cores, linear and by rows of odd size, long and short.
TEST_F(MemoryTest, LargeCopies)
{
    for (const auto& shape : {std::pair<std::size_t, std::size_t>{1201, 8001}, {60001, 81}}) {
        const std::size_t rows = shape.first, width = shape.second, gap = 30;
        std::vector<char> large(rows * width), again(rows * (width + gap), 'x');
        for (std::size_t i = 0; i < large.size(); ++i)
            large[i] = char(i * 2654435761u >> 13);
        char* pitched;
        std::size_t pitch;
        ASSERT_EQ(cudaMallocPitch(&pitched, &pitch, width, rows), cudaSuccess);
        EXPECT_GE(pitch, width);
        EXPECT_EQ(pitch % 256, 0u);
        ASSERT_EQ(cudaMemcpy2D(pitched, pitch, large.data(), width, width, rows, cudaMemcpyHostToDevice), cudaSuccess);
        ASSERT_EQ(cudaMemcpy2D(again.data(), width + gap, pitched, pitch, width, rows, cudaMemcpyDeviceToHost),
                  cudaSuccess);
        for (std::size_t i = 0; i < again.size(); ++i) {
            const std::size_t row = i / (width + gap), byte = i % (width + gap);
            ASSERT_EQ(again[i], byte < width ? large[row * width + byte] : 'x') << row << ", " << byte;
        }
        EXPECT_EQ(cudaFree(pitched), cudaSuccess);
        const DeviceArray<char> linear(large);
        EXPECT_TRUE(linear.download() == large);
        ASSERT_EQ(cudaMemset(linear + 1, 'y', large.size() - 2), cudaSuccess);
        std::fill(large.begin() + 1, large.end() - 1, 'y');
        EXPECT_TRUE(linear.download() == large);
    }
}

TEST_F(MemoryTest, CapacityIsALimitAndComesBack)
{
    setMemory(MiB);
    char *first, *second, *third;
    ASSERT_EQ(cudaMalloc(&first, MiB / 2), cudaSuccess);
    ASSERT_EQ(cudaMalloc(&second, MiB / 4), cudaSuccess);
    EXPECT_EQ(cudaMalloc(&third, MiB / 4 + 1), cudaErrorMemoryAllocation);
    EXPECT_EQ(cudaGetLastError(), cudaErrorMemoryAllocation);
    ASSERT_EQ(cudaMalloc(&third, MiB / 4), cudaSuccess);
    EXPECT_EQ(cudaFree(first), cudaSuccess);
    EXPECT_EQ(cudaFree(third), cudaSuccess);
    ASSERT_EQ(cudaMalloc(&first, 3 * MiB / 4), cudaSuccess) << "free memory in two pieces is free memory";
    EXPECT_EQ(cudaFree(first), cudaSuccess);
    EXPECT_EQ(cudaFree(second), cudaSuccess);
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    std::size_t pitch = 7;
    for (const auto& shape : {std::pair<std::size_t, std::size_t>{MiB, 2}, {MiB, most >> 14}, {most, 1}})
        EXPECT_EQ(cudaMallocPitch(&first, &pitch, shape.first, shape.second), cudaErrorMemoryAllocation);
    EXPECT_EQ(pitch, 7u) << "a call that fails writes none";
    EXPECT_EQ(cudaMalloc(&first, MiB + 1), cudaErrorMemoryAllocation);
    EXPECT_EQ(cudaMallocHost(&first, most / 2), cudaErrorMemoryAllocation);
    first = second;
    ASSERT_EQ(cudaMallocHost(&first, 0), cudaSuccess);
    EXPECT_EQ(first, nullptr);
    first = second;
    ASSERT_EQ(cudaMalloc(&first, 0), cudaSuccess);
    EXPECT_EQ(first, nullptr);
}

// Whatever the order in which neighbours come back, they are one range again.
TEST(FreeSpaceTest, NeighboursJoin)
{
    std::vector<std::size_t> order{0, 1, 2, 3};
    do {
        tarn::soft::FreeSpace space(400);
        for (std::size_t i = 0; i < 4; ++i)
            ASSERT_EQ(space.take(100), i * 100);
        ASSERT_FALSE(space.take(1));
        for (const std::size_t i : order)
            space.give(i * 100, 100, 50);
        EXPECT_EQ(space.resident(), 200u);
        EXPECT_EQ(space.take(400), 0u);
        EXPECT_EQ(space.resident(), 0u);
    } while (std::next_permutation(order.begin(), order.end()));
}

// Each live block is filled with a value of its own, which must still be there when it is freed.
TEST_F(MemoryTest, LiveBlocksNeverOverlap)
{
    setMemory(MiB);
    std::mt19937 random(1);
    std::map<char*, std::pair<std::size_t, int>> live;
    const auto free = [&](std::map<char*, std::pair<std::size_t, int>>::iterator block) {
        std::vector<char> bytes(block->second.first);
        ASSERT_EQ(cudaMemcpy(bytes.data(), block->first, bytes.size(), cudaMemcpyDeviceToHost), cudaSuccess);
        ASSERT_EQ(bytes, std::vector<char>(bytes.size(), char(block->second.second)));
        ASSERT_EQ(cudaFree(block->first), cudaSuccess);
        live.erase(block);
    };
    int refused = 0;
    for (int step = 0; step < 4000; ++step) {
        const std::size_t bytes = 1 + random() % 40000;
        char* block;
        if (cudaMalloc(&block, bytes) != cudaSuccess) {
            ++refused;
            for (int i = 0; i < 5; ++i)
                ASSERT_NO_FATAL_FAILURE(free(std::next(live.begin(), long(random() % live.size()))));
            continue;
        }
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 256, 0u);
        ASSERT_EQ(cudaMemset(block, step, bytes), cudaSuccess);
        live[block] = {bytes, step};
    }
    EXPECT_GT(refused, 100);
    while (!live.empty())
        ASSERT_NO_FATAL_FAILURE(free(live.begin()));
}

TEST_F(MemoryTest, FreshMemoryIsPoisonedOnRequest)
{
    softdevSetPoison(true);
    {
        const DeviceArray<float> used(std::vector<float>(5000, 1));
    }
    for (const float value : DeviceArray<float>(5000).download())
        ASSERT_TRUE(std::isnan(value));
    for (const double value : DeviceArray<double>(5000).download())
        ASSERT_TRUE(std::isnan(value));
}

TEST_F(MemoryTest, LiveCounts)
{
    softdevResetPeak();
    cudaStream_t stream;
    cublasHandle_t handle;
    {
        const DeviceArray<char> a(1000);
        {
            const DeviceArray<char> b(500);
        }
        const PinnedArray<char> pinned(300);
        ASSERT_EQ(cudaStreamCreate(&stream), cudaSuccess);
        ASSERT_EQ(cublasCreate_v2(&handle), CUBLAS_STATUS_SUCCESS);
        const SoftdevLive live = softdevLive();
        EXPECT_EQ(live.allocations, 1u);
        EXPECT_EQ(live.bytes, 1000u);
        EXPECT_EQ(live.peakBytes, 1500u);
        EXPECT_EQ(live.hostAllocations, 1u);
        EXPECT_EQ(live.hostBytes, 300u);
        EXPECT_EQ(live.streams, 1u);
        EXPECT_EQ(live.handles, 1u);
        EXPECT_FALSE(softdevSetDevices({})) << "devices must not vanish under live memory";
        softdevResetPeak();
        EXPECT_EQ(softdevLive().peakBytes, 1000u);
    }
    EXPECT_FALSE(softdevSetDevices({}));
    ASSERT_EQ(cudaStreamDestroy(stream), cudaSuccess);
    EXPECT_FALSE(softdevSetDevices({}));
    ASSERT_EQ(cublasDestroy_v2(handle), CUBLAS_STATUS_SUCCESS);
}
