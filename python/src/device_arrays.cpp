// Arrays in device memory: allocated here, or another library's, reached by their addresses.
#include "arrays.h"
#include "module.h"

#include <nanobind/stl/tuple.h>
#include <nanobind/stl/vector.h>

#include <cstring>

namespace tarn::python {

namespace {

/// An array in device memory as other libraries see it, through __dlpack__.
using Exported = nb::ndarray<nb::array_api>;

/// The element type of a letter of NumPy: f, d, F, D or i.
nb::dlpack::dtype typeOf(char letter)
{
    switch (letter) {
    case 'f':
        return nb::dtype<float>();
    case 'd':
        return nb::dtype<double>();
    case 'F':
        return nb::dtype<std::complex<float>>();
    case 'D':
        return nb::dtype<std::complex<double>>();
    case 'i':
        return nb::dtype<int>();
    default:
        throw nb::type_error("elements of this type are not served on the device");
    }
}

char letterOf(nb::dlpack::dtype type)
{
    for (const char letter : {'f', 'd', 'F', 'D', 'i'})
        if (typeOf(letter) == type)
            return letter;
    return '?';
}

Exported exported(void* data, const std::vector<std::size_t>& shape, nb::handle owner,
                  const std::vector<std::int64_t>& strides, char letter)
{
    int device = 0;
    checkCuda(cudaGetDevice(&device));
    return Exported(data, shape.size(), shape.data(), owner, strides.data(), typeOf(letter), nb::device::cuda::value,
                    device);
}

/// New device memory, column by column.
Exported allocate(const std::vector<std::size_t>& shape, char letter)
{
    initialize();
    std::vector<std::int64_t> strides;
    std::size_t count = 1;
    for (const std::size_t extent : shape) {
        strides.push_back(std::int64_t(count));
        count *= extent;
    }
    void* data = nullptr;
    checkCuda(cudaMalloc(&data, std::max<std::size_t>(1, count) * (typeOf(letter).bits / 8)));
    const nb::capsule owner(data, [](void* p) noexcept { cudaFree(p); });
    return exported(data, shape, owner, strides, letter);
}

/// An array at an address that `owner` keeps alive, as __cuda_array_interface__ tells of it; strides in elements. Waits
/// for the stream in which it is made, unless that is 0 or the legacy default stream, 1.
Exported borrow(std::uintptr_t data, const std::vector<std::size_t>& shape, const std::vector<std::int64_t>& strides,
                char letter, nb::handle owner, std::uintptr_t stream)
{
    initialize();
    if (stream > 1)
        checkCuda(cudaStreamSynchronize(reinterpret_cast<cudaStream_t>(stream)));
    return exported(reinterpret_cast<void*>(data), shape, owner, strides, letter);
}

/// (address, shape, strides in elements, letter of the type, whether in device memory)
std::tuple<std::uintptr_t, std::vector<std::int64_t>, std::vector<std::int64_t>, char, bool>
describe(const AnyReadable& array)
{
    std::vector<std::int64_t> shape, strides;
    for (std::size_t i = 0; i < array.ndim(); ++i) {
        shape.push_back(std::int64_t(array.shape(i)));
        strides.push_back(array.stride(i));
    }
    return {reinterpret_cast<std::uintptr_t>(array.data()), shape, strides, letterOf(array.dtype()), onDevice(array)};
}

/// to := from for arrays of one type whose columns lie alike, in host or device memory; `to` has no padding.
void copy(const AnyArray& to, const AnyReadable& from)
{
    const nb::gil_scoped_release released;
    initialize();
    const Layout source = layoutOf(from), target = layoutOf(to);
    if (to.dtype() != from.dtype() || rows(to) != rows(from) || cols(to) != cols(from) ||
        source.transposed != target.transposed)
        throw nb::value_error("the arrays do not match");
    const cudaMemcpyKind kind = onDevice(from) ? (onDevice(to) ? cudaMemcpyDeviceToDevice : cudaMemcpyDeviceToHost)
                                               : (onDevice(to) ? cudaMemcpyHostToDevice : cudaMemcpyHostToHost);
    const std::size_t size = to.dtype().bits / 8, width = std::size_t(target.transposed ? cols(to) : rows(to)) * size;
    const std::size_t height = std::size_t(target.transposed ? rows(to) : cols(to));
    if (width > 0 && height > 0)
        checkCuda(cudaMemcpy2D(to.data(), std::size_t(target.ld) * size, from.data(), std::size_t(source.ld) * size,
                               width, height, kind));
}

} // namespace

void addDeviceArrays(nb::module_& m)
{
    m.def("allocate", &allocate, nb::arg("shape"), nb::arg("letter"));
    m.def("borrow", &borrow, nb::arg("data"), nb::arg("shape"), nb::arg("strides"), nb::arg("letter"), nb::arg("owner"),
          nb::arg("stream"));
    m.def("describe", &describe, nb::arg("array").noconvert());
    m.def("copy", &copy, nb::arg("to").noconvert(), nb::arg("source").noconvert());
}

} // namespace tarn::python
