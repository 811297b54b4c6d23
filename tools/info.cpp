#include "commands.h"
#include "cpu_blas.h"
#include "device.h"
#include "failure.h"
#include "json.h"
#include "versions.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <vector>

namespace tarn::tool {

namespace {

constexpr int sgemmOrder = 1024;

/// What the tool says of this installation; versions are empty where the software device takes a library's place.
struct Info
{
    std::string runtime, driver, cublas;
    std::vector<DeviceFacts> devices;
    CpuBlas blas;
    double sgemmRate;
    std::string betterCore;
};

Info gather()
{
    Info info;
    if (!isSoftwareDevice) {
        info.runtime = cudaVersion(tarnGetCudaRuntimeVersion());
        info.driver = cudaVersion(tarnGetCudaDriverVersion());
        info.cublas = cublasVersion(tarnGetCublasRuntimeVersion());
    }
    for (int device = 0, count = deviceCount(); device < count; ++device)
        info.devices.push_back(deviceFacts(device));
    info.blas = cpuBlas();
    info.sgemmRate = sgemmRate(sgemmOrder);
    info.betterCore = betterCore(info.blas.core);
    return info;
}

void line(const std::string& label, const std::string& text) { fmt::print("{:<14}{}\n", label, text); }

void printText(const Info& info, const char* status)
{
    const auto version = [](const std::string& text) { return text.empty() ? "software device" : text; };
    line("tarn", libraryVersion());
    line("CUDA runtime", version(info.runtime));
    line("CUDA driver", version(info.driver));
    line("cuBLAS", version(info.cublas));
    if (info.devices.empty())
        line("device", "none");
    for (std::size_t device = 0; device < info.devices.size(); ++device)
        line(fmt::format("device {}", device), describe(info.devices[device]));
    line("CPU BLAS", fmt::format("{}, core {}, {} threads", info.blas.name, info.blas.core,
                                 info.blas.threads > 0 ? std::to_string(info.blas.threads) : "unknown"));
    line("", fmt::format("sgemm of order {}: {:.0f} GFLOP/s", sgemmOrder, info.sgemmRate));
    if (!info.betterCore.empty())
        fmt::print("warning: the CPU BLAS uses kernels for '{}', but this CPU can run those for '{}', several times as "
                   "fast; set OPENBLAS_CORETYPE={}\n",
                   info.blas.core, info.betterCore, info.betterCore);
    line("status", status);
}

void printJson(const Info& info, const char* status)
{
    const auto orNull = [](const std::string& text) {
        return text.empty() || text == "unknown" ? nlohmann::ordered_json() : nlohmann::ordered_json(text);
    };
    auto devices = nlohmann::ordered_json::array();
    for (const DeviceFacts& device : info.devices)
        devices.push_back({{"name", device.name},
                           {"capability", fmt::format("{}.{}", device.major, device.minor)},
                           {"multiprocessors", device.multiprocessors},
                           {"memory_bytes", device.memory}});
    printObject({{"tarn", libraryVersion()},
                 {"provider", isSoftwareDevice ? "software" : "cuda"},
                 {"cuda_runtime", orNull(info.runtime)},
                 {"cuda_driver", orNull(info.driver)},
                 {"cublas", orNull(info.cublas)},
                 {"devices", devices},
                 {"cpu_blas",
                  {{"name", orNull(info.blas.name)},
                   {"core", orNull(info.blas.core)},
                   {"threads", info.blas.threads > 0 ? nlohmann::ordered_json(info.blas.threads) : nullptr},
                   {"sgemm_order", sgemmOrder},
                   {"sgemm_gflops", info.sgemmRate},
                   {"faster_core", orNull(info.betterCore)}}},
                 {"status", status}});
}

} // namespace

int runInfo(bool json)
{
    const Info info = gather();
    const tarnStatus status = tarnInitialize();
    (json ? printJson : printText)(info, tarnGetStatusString(status));
    check(status, "tarnInitialize");
    tarnShutdown();
    return 0;
}

} // namespace tarn::tool
