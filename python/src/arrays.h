// Arrays of Python, in host or in device memory, as the C interface takes them.
#pragma once

#include "elements.h"
#include "status.h"

#include <nanobind/nanobind.h>
#include <nanobind/ndarray.h>

#include <cuda_runtime.h>

#include <vector>

namespace tarn::python {

namespace nb = nanobind;
using tool::call;
using tool::isComplex;
using tool::Real;
using tool::select;

/// A vector or a column-major matrix without padding.
template <class T>
using Array = nb::ndarray<T, nb::f_contig>;

/// A matrix that is only read: column-major or row-major, with any leading dimension.
template <class T>
using Readable = nb::ndarray<const T, nb::ndim<2>>;

/// An array of any type and layout.
using AnyArray = nb::ndarray<>;
using AnyReadable = nb::ndarray<nb::ro>;

template <class A>
bool onDevice(const A& array)
{
    return array.device_type() == nb::device::cuda::value || array.device_type() == nb::device::cuda_managed::value;
}

inline int dimension(std::size_t extent)
{
    if (extent > std::size_t(std::numeric_limits<int>::max()))
        throw nb::value_error("arrays of more than 2^31 - 1 rows or columns are not served");
    return int(extent);
}

template <class A>
int rows(const A& array)
{
    return array.ndim() == 0 ? 1 : dimension(array.shape(0));
}

/// 1 for a vector.
template <class A>
int cols(const A& array)
{
    return array.ndim() < 2 ? 1 : dimension(array.shape(1));
}

/// The leading dimension of an Array.
template <class T>
int leading(const Array<T>& array)
{
    return std::max(1, rows(array));
}

/// How a matrix lies in memory: as itself or as its transpose, column by column, ld elements apart.
struct Layout
{
    bool transposed;
    int ld;
};

template <class A>
Layout layoutOf(const A& a)
{
    const int m = rows(a), n = cols(a);
    const auto fits = [](int inner, std::int64_t step, int outer, std::int64_t leap) {
        return (step == 1 || inner <= 1) && (leap >= std::max(1, inner) || outer <= 1);
    };
    const std::int64_t down = a.stride(0), across = a.ndim() < 2 ? std::max(1, m) : a.stride(1);
    if (fits(m, down, n, across))
        return {false, n <= 1 ? std::max(1, m) : dimension(std::size_t(across))};
    if (fits(n, across, m, down))
        return {true, m <= 1 ? std::max(1, n) : dimension(std::size_t(down))};
    throw nb::value_error("the array is strided: make it contiguous first");
}

/// Device memory for the time of a call.
template <class T>
class DeviceBuffer
{
public:
    explicit DeviceBuffer(std::size_t count)
    {
        checkCuda(cudaMalloc(&data_, std::max<std::size_t>(1, count) * sizeof(T)));
    }
    ~DeviceBuffer() { cudaFree(data_); }
    DeviceBuffer(const DeviceBuffer&) = delete;
    DeviceBuffer& operator=(const DeviceBuffer&) = delete;

    T* data() const { return data_; }

private:
    T* data_ = nullptr;
};

/// Copies m by n elements between column-major matrices.
template <class T>
void copyMatrix(int m, int n, T* to, int ldTo, const T* from, int ldFrom, cudaMemcpyKind kind)
{
    if (m > 0 && n > 0)
        checkCuda(cudaMemcpy2D(to, std::size_t(ldTo) * sizeof(T), from, std::size_t(ldFrom) * sizeof(T),
                               std::size_t(m) * sizeof(T), std::size_t(n), kind));
}

/// A matrix in device memory, column by column, on the host.
template <class T>
std::vector<T> downloaded(int m, int n, const T* from, int ld)
{
    std::vector<T> host(std::size_t(m) * std::size_t(n));
    copyMatrix(m, n, host.data(), std::max(1, m), from, ld, cudaMemcpyDeviceToHost);
    return host;
}

} // namespace tarn::python
