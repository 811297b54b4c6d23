// The device under test: what it is, and arrays in its memory.
#pragma once

#include <cuda_runtime.h>
#include <gtest/gtest.h>
#include <softdev.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace test {

#ifdef TARN_CUDA
/// Whether the emulated GPU is what the CUDA build runs on.
bool findControls();
inline constexpr bool isCudaBuild = true;
#else
inline bool findControls() { return true; }
inline constexpr bool isCudaBuild = false;
#endif

/// Whether the device has the controls of softdev.h: the software device and the emulated GPU have.
inline const bool hasControls = findControls();
inline const bool onEmulatedGpu = isCudaBuild && hasControls;

/// Base of tests that read the call log, inject failures or set up machines. Injected failures are not sticky: what
/// follows them is part of the test.
class WithControls : public testing::Test
{
protected:
    void SetUp() override
    {
        if (!hasControls)
            GTEST_SKIP() << "needs a device with controls";
        softdevSetSticky(false);
    }
    void TearDown() override { softdevClearFailures(); }
};

/// A software device of a capability such as {1, 3}; overlap of copies and kernels from 2.0 on.
inline SoftdevDevice deviceOf(int major, int minor)
{
    SoftdevDevice device = softdevDefaultDevice();
    device.major = major;
    device.minor = minor;
    device.asyncEngines = major >= 2 ? 2 : 0;
    return device;
}

/// Capability value of the current device: major * 10 + minor.
inline int capability()
{
    int device = 0;
    cudaGetDevice(&device);
    cudaDeviceProp properties{};
    cudaGetDeviceProperties(&properties, device);
    return properties.major * 10 + properties.minor;
}

/// An array in device memory. Construction and copies fail the test on a CUDA error.
template <class T>
class DeviceArray
{
public:
    explicit DeviceArray(std::size_t elements) : size_(elements)
    {
        void* p = nullptr;
        EXPECT_EQ(cudaMalloc(&p, std::max<std::size_t>(elements, 1) * sizeof(T)), cudaSuccess);
        data_ = static_cast<T*>(p);
    }
    explicit DeviceArray(const std::vector<T>& host) : DeviceArray(host.size()) { upload(host); }
    ~DeviceArray() { cudaFree(data_); }
    DeviceArray(const DeviceArray&) = delete;
    DeviceArray& operator=(const DeviceArray&) = delete;

    T* data() const { return data_; }

    void upload(const std::vector<T>& host)
    {
        EXPECT_EQ(cudaMemcpy(data_, host.data(), size_ * sizeof(T), cudaMemcpyHostToDevice), cudaSuccess);
    }

    std::vector<T> download() const
    {
        std::vector<T> host(size_);
        EXPECT_EQ(cudaMemcpy(host.data(), data_, size_ * sizeof(T), cudaMemcpyDeviceToHost), cudaSuccess);
        return host;
    }

private:
    T* data_;
    std::size_t size_;
};

/// Number of calls of that name in a log.
inline long countCalls(const std::vector<SoftdevCall>& log, const std::string& name)
{
    return std::count_if(log.begin(), log.end(), [&](const SoftdevCall& call) { return call.name == name; });
}

} // namespace test
