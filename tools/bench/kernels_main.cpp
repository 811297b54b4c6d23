// Times the device modules by themselves: they are no part of the library's interface, so this program is made from the
// library's objects. Single precision; `tarn bench --kernels` runs it.
// Usage: tarn-bench-kernels repeats size...
#include "cpu_blas.h"
#include "device_array.h"
#include "frame/device_table.h"
#include "lapack/kernels.h"
#include "timing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <functional>

extern "C" void slasr_(const char* side, const char* pivot, const char* direct, const int* m, const int* n,
                       const float* c, const float* s, float* a, const int* lda, std::size_t, std::size_t, std::size_t);

namespace tarn::bench {

namespace {

using Work = std::function<void()>;

/// A kernel, and the CPU routine that it is timed beside.
struct Row
{
    const char* kernel;
    Work launch;
    const char* reference;
    Work call;
};

double median(std::vector<double> times)
{
    const auto middle = times.begin() + std::ptrdiff_t(times.size() / 2);
    std::nth_element(times.begin(), middle, times.end());
    return *middle;
}

/// Both sides in turns, after one call each to warm up.
void time(const Row& row, int n, int repeats)
{
    const Work launch = [&] {
        row.launch();
        check(cudaDeviceSynchronize(), row.kernel);
    };
    launch();
    row.call();
    std::vector<double> ours, theirs;
    for (int i = 0; i < repeats; ++i) {
        ours.push_back(tool::secondsOf(launch));
        theirs.push_back(tool::secondsOf(row.call));
    }
    const double seconds = median(ours), reference = median(theirs);
    fmt::print("{:<18} {:>6} {:>11.6f}  {:<8} {:>11.6f} {:>7.3f}\n", row.kernel, n, seconds, row.reference, reference,
               seconds / reference);
    std::fflush(stdout);
}

/// The arrays of the rows: two matrices of order n and n rotations, on the device and in host memory.
struct Arrays
{
    explicit Arrays(int n)
        : hostA(std::size_t(n) * n), hostB(hostA.size()), c(std::size_t(n)), s(std::size_t(n)), a(hostA.size()),
          b(hostA.size()), deviceC(c.size()), deviceS(s.size())
    {
        for (std::size_t i = 0; i < hostA.size(); ++i)
            hostA[i] = float(i % 1009) / 1009;
        for (int j = 0; j < n; ++j) {
            c[std::size_t(j)] = std::cos(float(j));
            s[std::size_t(j)] = std::sin(float(j));
        }
        a.set(hostA);
        b.set(hostA);
        deviceC.set(c);
        deviceS.set(s);
    }

    std::vector<float> hostA, hostB, c, s;
    DeviceArray<float> a, b, deviceC, deviceS;
};

void timeAll(int n, int repeats)
{
    Arrays x(n);
    const Work copy = [&] { std::memcpy(x.hostB.data(), x.hostA.data(), x.hostA.size() * sizeof(float)); };
    const auto lasr = [&](char side, char direct) {
        return [&x, n, side, direct] {
            kernel::LASR(side, 'V', direct, n, n, x.deviceC.data(), x.deviceS.data(), x.a.data(), n);
        };
    };
    const auto slasr = [&](char side, char direct) {
        return [&x, n, side, direct] {
            slasr_(&side, "V", &direct, &n, &n, x.c.data(), x.s.data(), x.hostA.data(), &n, 1, 1, 1);
        };
    };
    float *const a = x.a.data(), *const b = x.b.data();
    const Row rows[] = {
        {"CopyMatrix", [=] { kernel::CopyMatrix(n, n, b, n, a, n); }, "memcpy", copy},
        {"CopyVector", [=] { kernel::CopyVector(n * n, b, 1, a, 1); }, "memcpy", copy},
        {"LACPY", [=] { kernel::LACPY('A', n, n, a, n, b, n); }, "memcpy", copy},
        {"Transpose", [=] { kernel::Transpose(b, n, a, n, n, n); }, "memcpy", copy},
        {"TransposeInplace", [=] { kernel::TransposeInplace(n, a, n); }, "memcpy", copy},
        {"LASR right forward", lasr('R', 'F'), "slasr", slasr('R', 'F')},
        {"LASR right backw.", lasr('R', 'B'), "slasr", slasr('R', 'B')},
        {"LASR left forward", lasr('L', 'F'), "slasr", slasr('L', 'F')},
        {"LASR left backw.", lasr('L', 'B'), "slasr", slasr('L', 'B')},
    };
    for (const Row& row : rows)
        time(row, n, repeats);
}

} // namespace

} // namespace tarn::bench

int main(int argc, char** argv)
{
    tarn::tool::preferFastCpuBlas(argv);
    try {
        tarn::bindThreadDevice();
        fmt::print("{:<18} {:>6} {:>11}  {:<8} {:>11} {:>7}\n", "kernel", "n", "seconds", "beside", "seconds", "ratio");
        for (int i = 2; i < argc; ++i)
            tarn::bench::timeAll(std::atoi(argv[i]), std::atoi(argv[1]));
    } catch (const std::exception& failure) {
        fmt::print(stderr, "tarn-bench-kernels: {}\n", failure.what());
        return 1;
    }
}
