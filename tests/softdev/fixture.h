#pragma once
/// What the tests of the software device share.

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "softdev.h"
#include "softdev_launch.h"

/// Starts every test on the default machine, and finds out if it leaves something behind.
class SoftdevTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(softdevSetDevices({softdevDefaultDevice()}));
        softdevSetHold(false);
    }

    void TearDown() override
    {
        softdevClearFailures();
        softdevSetPoison(false);
        softdevSetHold(false);
        softdevSetEager(false);
        softdevSetOrder(0);
        softdevSetSticky(false);
        cudaGetLastError();
        const SoftdevLive live = softdevLive();
        EXPECT_EQ(live.allocations, 0u);
        EXPECT_EQ(live.hostAllocations, 0u);
        EXPECT_EQ(live.streams, 0u);
        EXPECT_EQ(live.handles, 0u);
    }
};

/// Device memory of `count` elements.
template <class T>
class DeviceArray
{
public:
    explicit DeviceArray(std::size_t count) : count_(count)
    {
        EXPECT_EQ(cudaMalloc(&data_, count * sizeof(T)), cudaSuccess);
    }
    explicit DeviceArray(const std::vector<T>& values) : DeviceArray(values.size())
    {
        EXPECT_EQ(cudaMemcpy(data_, values.data(), bytes(), cudaMemcpyHostToDevice), cudaSuccess);
    }
    ~DeviceArray() { EXPECT_EQ(cudaFree(data_), cudaSuccess); }
    DeviceArray(const DeviceArray&) = delete;

    operator T*() const { return data_; }
    std::size_t bytes() const { return count_ * sizeof(T); }

    std::vector<T> download() const
    {
        std::vector<T> values(count_);
        EXPECT_EQ(cudaMemcpy(values.data(), data_, bytes(), cudaMemcpyDeviceToHost), cudaSuccess);
        return values;
    }

private:
    T* data_ = nullptr;
    std::size_t count_;
};

/// Page-locked host memory of `count` elements.
template <class T>
class PinnedArray
{
public:
    explicit PinnedArray(std::size_t count) { EXPECT_EQ(cudaMallocHost(&data_, count * sizeof(T)), cudaSuccess); }
    ~PinnedArray() { EXPECT_EQ(cudaFreeHost(data_), cudaSuccess); }
    PinnedArray(const PinnedArray&) = delete;

    operator T*() const { return data_; }

private:
    T* data_ = nullptr;
};

/// Queues `blocks` blocks of one thread that each run `body`.
inline cudaError_t launch(unsigned blocks, std::function<void()> body)
{
    return softdevLaunch("Test_k", dim3(blocks), dim3(1), dim3(1), std::move(body));
}

/// Queues one such block under that name.
inline cudaError_t launch(const char* name, std::function<void()> body)
{
    return softdevLaunch(name, dim3(1), dim3(1), dim3(1), std::move(body));
}

/// The address by which a test's kernel reaches device memory.
template <class T>
T* view(T* address)
{
    void* inside = nullptr;
    EXPECT_EQ(softdevDeviceView(address, &inside), cudaSuccess);
    return static_cast<T*>(inside);
}
