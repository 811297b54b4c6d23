#include "commands.h"
#include "cpu_blas.h"
#include "device.h"
#include "failure.h"
#include "versions.h"

#include <fmt/format.h>

namespace tarn::tool {

namespace {

constexpr int sgemmOrder = 1024;

void line(const char* label, const std::string& text) { fmt::print("{:<14}{}\n", label, text); }

void printDevices()
{
    const int count = deviceCount();
    if (count == 0)
        line("device", "none");
    for (int device = 0; device < count; ++device)
        line(fmt::format("device {}", device).c_str(), describeDevice(device));
}

void printCpuBlas()
{
    const CpuBlas blas = cpuBlas();
    line("CPU BLAS", fmt::format("{}, core {}, {} threads", blas.name, blas.core,
                                 blas.threads > 0 ? std::to_string(blas.threads) : "unknown"));
    line("", fmt::format("sgemm of order {}: {:.0f} GFLOP/s", sgemmOrder, sgemmRate(sgemmOrder)));
    if (const std::string core = betterCore(blas.core); !core.empty())
        fmt::print("warning: the CPU BLAS uses kernels for '{}', but this CPU can run those for '{}', several times as "
                   "fast; set OPENBLAS_CORETYPE={}\n",
                   blas.core, core, core);
}

int runInfo()
{
    line("tarn", libraryVersion());
    line("CUDA runtime", cudaVersion(tarnGetCudaRuntimeVersion()));
    line("CUDA driver", cudaVersion(tarnGetCudaDriverVersion()));
    line("cuBLAS", cublasVersion(tarnGetCublasRuntimeVersion()));
    printDevices();
    printCpuBlas();

    const tarnStatus status = tarnInitialize();
    line("status", tarnGetStatusString(status));
    check(status, "tarnInitialize");
    tarnShutdown();
    return 0;
}

} // namespace

Command addInfo(CLI::App& tarn)
{
    return {tarn.add_subcommand("info", "Print devices, versions, and the CPU BLAS with its speed"), &runInfo};
}

} // namespace tarn::tool
