// Launches a kernel of every family of the library once, single precision where there is a choice, on square matrices:
// what the counters of the emulated GPU are read from.
// Usage: kernel-launches ORDER
#include "frame/device_table.h"
#include "lapack/kernels.h"

#include <cuda_runtime.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <numeric>
#include <stdexcept>
#include <vector>

namespace {

using namespace tarn;

void check(cudaError_t code)
{
    if (code != cudaSuccess)
        throw std::runtime_error(cudaGetErrorString(code));
}

/// Device memory of `count` elements, filled with a value; it lives as long as the process.
template <class T>
T* array(std::size_t count, T value)
{
    void* device = nullptr;
    const std::vector<T> host(count, value);
    check(cudaMalloc(&device, count * sizeof(T)));
    check(cudaMemcpy(device, host.data(), count * sizeof(T), cudaMemcpyHostToDevice));
    return static_cast<T*>(device);
}

void elements(int n, float* a, float* b, float* c)
{
    const std::size_t count = std::size_t(n) * std::size_t(n);
    kernel::CopyMatrix(n, n, b, n, a, n);
    kernel::CopyVector(n, b, 1, a, 1);
    kernel::LACPY('A', n, n, a, n, b, n);
    kernel::LACPY('L', n, n, a, n, b, n);
    kernel::SetMatrixZero(n, n, b, n);
    kernel::SetVectorZero(n, b, 1);
    kernel::MakeTriangular('U', 'N', n, n, b, n);
    kernel::LASET('A', n, n, 1.f, 2.f, b, n);
    kernel::PrecisionConvert(n, n, array(count, 0.5), n, c, n, array(1, 0));
    kernel::ConjugateMatrix(n, n, array(count, Complex<float>(1, 1)), n);
    for (const char transa : {'N', 'T'})
        for (const char transb : {'N', 'T'}) {
            kernel::SubtractMatrix(transa, transb, n, n, a, n, b, n);
            kernel::MADD(transa, transb, n, n, 1.f, a, n, 1.f, b, n, c, n);
        }
}

void tilesAndLines(int n, float* a, float* b)
{
    kernel::Transpose(b, n, a, n, n, n);
    kernel::TransposeInplace(n, a, n);
    std::vector<int> pivots(16);
    std::iota(pivots.begin(), pivots.end(), n - 15); // each row with one from the far end
    kernel::LASWP(n, a, n, 1, 16, pivots.data(), 1);
    kernel::LASWPCOL(n, a, n, 1, 16, pivots.data(), 1);
    float *const cosines = array(std::size_t(n), 0.6f), *const sines = array(std::size_t(n), 0.8f);
    kernel::LASR('L', 'V', 'F', n, n, cosines, sines, a, n);
    kernel::LASR('R', 'V', 'F', n, n, cosines, sines, a, n);
    kernel::SweepColumns sweeps[kernel::sweepsInPass];
    std::fill(std::begin(sweeps), std::end(sweeps), kernel::SweepColumns{0, n});
    kernel::SWEEPS('F', n, sweeps, cosines, sines, 0, a, n);
    kernel::ORGBR_COPY('L', n, a, n);
    kernel::ORGBR_COPY('U', n, a, n);
}

void productsAndNorms(int n, float* a, float* work)
{
    float *const x = array(std::size_t(n), 1.f), *const y = array(std::size_t(n), 1.f);
    kernel::gemv('T', n, n, 1.f, a, n, x, 1, 1.f, y, 1);
    kernel::symv('L', n, 1.f, a, n, x, 1, 1.f, y, 1, work);
    float* const result = array(1, 0.f);
    for (const char norm : {'M', 'F', 'O', 'I'})
        kernel::LANGE(norm, n, n, a, n, work, result);
    kernel::LANHE('L', n, a, n, work, result);
}

} // namespace

int main(int argc, char** argv)
{
    const int n = argc == 2 ? std::atoi(argv[1]) : 0;
    if (n < 32) {
        std::fprintf(stderr, "usage: kernel-launches ORDER, 32 or more\n");
        return 2;
    }
    try {
        bindThreadDevice();
        const std::size_t count = std::size_t(n) * std::size_t(n);
        float *const a = array(count, 0.5f), *const b = array(count, 0.25f), *const c = array(count, 0.f);
        elements(n, a, b, c);
        tilesAndLines(n, a, b);
        productsAndNorms(n, a, c);
        check(cudaDeviceSynchronize());
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "kernel-launches: %s\n", failure.what());
        return 1;
    }
}
