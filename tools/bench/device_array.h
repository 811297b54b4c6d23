// An array in device memory.
#pragma once

#include "../failure.h"

#include <cuda_runtime.h>

#include <utility>
#include <vector>

namespace tarn::bench {

/// Raises tool::Failure for a CUDA code that is none of success.
inline void check(cudaError_t error, const char* call)
{
    if (error != cudaSuccess)
        throw tool::Failure(std::string(call) + ": " + cudaGetErrorString(error));
}

/// Owns `size` elements of device memory.
template <class T>
class DeviceArray
{
public:
    explicit DeviceArray(std::size_t size)
    {
        void* p = nullptr;
        if (size > 0)
            check(cudaMalloc(&p, size * sizeof(T)), "cudaMalloc");
        data_ = static_cast<T*>(p);
    }

    DeviceArray(DeviceArray&& other) noexcept : data_(std::exchange(other.data_, nullptr)) {}
    DeviceArray& operator=(DeviceArray&& other) noexcept
    {
        std::swap(data_, other.data_);
        return *this;
    }
    ~DeviceArray() { cudaFree(data_); }

    T* data() const { return data_; }

    /// Copies all of a host array here, at most as long as this one.
    void set(const std::vector<T>& from)
    {
        if (!from.empty())
            check(cudaMemcpy(data_, from.data(), from.size() * sizeof(T), cudaMemcpyHostToDevice), "cudaMemcpy");
    }

    /// Fills a host array, at most as long as this one, from here.
    void get(std::vector<T>& to) const
    {
        if (!to.empty())
            check(cudaMemcpy(to.data(), data_, to.size() * sizeof(T), cudaMemcpyDeviceToHost), "cudaMemcpy");
    }

private:
    T* data_ = nullptr;
};

} // namespace tarn::bench
