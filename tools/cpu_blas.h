// The CPU BLAS of this process: which one it is, and whether it took this CPU for an older one.
#pragma once

#include <string>

namespace tarn::tool {

/// What the CPU BLAS tells of itself; OpenBLAS is asked, others stay unknown.
struct CpuBlas
{
    std::string name = "unknown"; ///< library and version
    std::string core = "unknown"; ///< CPU core whose kernels it uses
    int threads = 0;              ///< 0: unknown
    bool switchable = false;      ///< holds kernels for several cores and obeys OPENBLAS_CORETYPE
};

/// The CPU BLAS that this process is linked to.
CpuBlas cpuBlas();

/// The OpenBLAS core that suits a CPU with these instruction sets, or "" where `core` is no older than that.
std::string betterCore(const std::string& core, bool avx2, bool avx512);

/// As above, for the CPU that this runs on.
std::string betterCore(const std::string& core);

/// GFLOP/s of sgemm at order n: best of a few runs.
double sgemmRate(int n);

/// Where OpenBLAS took the CPU for one without AVX2, which costs it most of its speed, starts this program anew with
/// OPENBLAS_CORETYPE set to a core that suits; to be called first in main. Does nothing if that variable is set.
void preferFastCpuBlas(char** argv);

} // namespace tarn::tool
