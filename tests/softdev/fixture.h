#pragma once
/// What the tests of the software device share.

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "softdev.h"
#include "softdev_launch.h"
#include "support/device.h"

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

/// Device memory of `count` elements, or of a copy of an array, which the calls take as an address.
template <class T>
class DeviceArray : public test::DeviceArray<T>
{
public:
    using test::DeviceArray<T>::DeviceArray;
    operator T*() const { return this->data(); }
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
