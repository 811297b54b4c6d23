// What tarn.show_config and tarn.device_info tell.
#include "cpu_blas.h"
#include "module.h"
#include "status.h"

#include <nanobind/stl/string.h>

#include <vector>

namespace tarn::python {

namespace nb = nanobind;

namespace {

nb::dict config()
{
    const tool::CpuBlas blas = tool::cpuBlas();
    nb::dict facts;
    facts["version"] = tarnGetVersion();
    facts["device"] = TARN_PROVIDER;
    facts["cuda_runtime"] = tarnGetCudaRuntimeVersion();
    facts["cuda_driver"] = tarnGetCudaDriverVersion();
    facts["cublas"] = tarnGetCublasRuntimeVersion();
    facts["cpu_blas"] = blas.name;
    facts["cpu_blas_core"] = blas.core;
    facts["cpu_blas_threads"] = blas.threads;
    facts["better_core"] = blas.switchable ? tool::betterCore(blas.core) : "";
    return facts;
}

nb::list devices()
{
    nb::list all;
    int count = 0;
    if (tarnGetDeviceCount(&count) != tarnNoError)
        return all;
    for (int device = 0; device < count; ++device) {
        cudaDeviceProp properties{};
        checkCuda(cudaGetDeviceProperties(&properties, device));
        nb::dict facts;
        facts["device"] = device;
        facts["name"] = std::string(properties.name);
        facts["capability"] = nb::make_tuple(properties.major, properties.minor);
        facts["multiprocessors"] = properties.multiProcessorCount;
        facts["memory"] = properties.totalGlobalMem;
        all.append(facts);
    }
    return all;
}

void selectDevice(int device)
{
    initialize();
    infoOf(tarnSelectDevice(device), "tarnSelectDevice");
}

} // namespace

void addInformation(nb::module_& m)
{
    m.def("config", &config);
    m.def("devices", &devices);
    m.def("select_device", &selectDevice, nb::arg("device"));
}

} // namespace tarn::python
