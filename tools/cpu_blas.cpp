#include "cpu_blas.h"

#include "lapack.h"

#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <vector>

namespace tarn::tool {

namespace {

constexpr const char* coreVariable = "OPENBLAS_CORETYPE";

/// The function of that name in any loaded library, null if none has it.
template <class Function>
Function* loaded(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

/// OpenBLAS cores whose kernels do without AVX2.
constexpr std::array coresWithoutAvx2 = {
    "generic", "katmai",      "coppermine", "northwood", "prescott",   "banias",       "yonah",     "core2",
    "penryn",  "dunnington",  "nehalem",    "athlon",    "opteron",    "opteron_sse3", "barcelona", "nano",
    "atom",    "sandybridge", "bobcat",     "bulldozer", "piledriver", "steamroller"};

std::string lower(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    return text;
}

} // namespace

CpuBlas cpuBlas()
{
    CpuBlas blas;
    if (const auto config = loaded<char*()>("openblas_get_config")) {
        std::istringstream words(config());
        std::string library, version;
        words >> library >> version;
        blas.name = library + " " + version;
        blas.switchable = std::strstr(config(), "DYNAMIC_ARCH") != nullptr;
    }
    if (const auto core = loaded<char*()>("openblas_get_corename"))
        blas.core = core();
    if (const auto threads = loaded<int()>("openblas_get_num_threads"))
        blas.threads = threads();
    return blas;
}

std::string betterCore(const std::string& core, bool avx2, bool avx512)
{
    const std::string name = lower(core);
    if (!avx2 || std::find(coresWithoutAvx2.begin(), coresWithoutAvx2.end(), name) == coresWithoutAvx2.end())
        return "";
    return avx512 ? "SkylakeX" : "Haswell";
}

std::string betterCore(const std::string& core)
{
#if defined(__x86_64__)
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
    const bool avx512 = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw") &&
                        __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512vl");
    return betterCore(core, avx2, avx512);
#else
    return betterCore(core, false, false);
#endif
}

double sgemmRate(int n)
{
    const std::vector<float> a(std::size_t(n) * n, 0.5f), b(a);
    std::vector<float> c(a.size());
    const float one = 1, zero = 0;
    double best = 0;
    for (int run = 0; run < 4; ++run) {
        const auto start = std::chrono::steady_clock::now();
        sgemm_("N", "N", &n, &n, &n, &one, a.data(), &n, b.data(), &n, &zero, c.data(), &n, 1, 1);
        const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start;
        best = std::max(best, 2e-9 * n * n * n / elapsed.count());
    }
    return best;
}

void preferFastCpuBlas(char** argv)
{
    if (std::getenv(coreVariable))
        return;
    const CpuBlas blas = cpuBlas();
    const std::string core = betterCore(blas.core);
    if (core.empty() || !blas.switchable)
        return;
    // OpenBLAS chooses its kernels while it is loaded, so only a new start of the program can change them.
    setenv(coreVariable, core.c_str(), 0);
    execv("/proc/self/exe", argv);
    unsetenv(coreVariable);
}

} // namespace tarn::tool
