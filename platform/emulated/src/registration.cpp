/// The calls that nvcc's host code makes by itself: registration of kernels when a library loads, and their launches.

#include <cxxabi.h>

#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <unordered_map>
#include <vector>

#include "error.h"
#include "fat_binary.h"
#include "kernel_launch.h"
#include "machine.h"

using namespace tarn::soft;

namespace {

/// What nvcc hands over: a wrapper around the fat binary.
struct Wrapper
{
    int magic, version;
    const void* fatBinary;
    void* unused;
};

using ModuleHandle = std::shared_ptr<const tarn::ptx::Module>;

/// Never destroyed: libraries unregister, and may launch, until the process ends.
struct Registry
{
    std::mutex mutex;
    std::unordered_map<const void*, RegisteredKernel> kernels; ///< by the address of the host's stub
};

Registry& registry()
{
    static Registry& theOnly = *new Registry;
    return theOnly;
}

struct Configuration
{
    dim3 grid, block;
    std::size_t shared;
    cudaStream_t stream;
};
thread_local std::vector<Configuration> configurations;

/// A kernel's name without its namespaces, template arguments and parameters.
std::string shortName(const char* mangled)
{
    int status = 0;
    const std::unique_ptr<char, void (*)(void*)> readable(abi::__cxa_demangle(mangled, nullptr, nullptr, &status),
                                                          std::free);
    std::string name = readable ? readable.get() : mangled;
    name = name.substr(0, name.find_first_of("<("));
    const auto scope = name.find_last_of(": ");
    return scope == std::string::npos ? name : name.substr(scope + 1);
}

} // namespace

extern "C" {

void** __cudaRegisterFatBinary(void* wrapper)
{
    try {
        const std::string text = ptxOfFatBinary(static_cast<const Wrapper*>(wrapper)->fatBinary);
        return reinterpret_cast<void**>(new ModuleHandle(tarn::ptx::parse(text)));
    } catch (const std::exception& error) {
        // There is nobody to tell: this runs while the library loads.
        std::fprintf(stderr, "emulated GPU: %s\n", error.what());
        std::abort();
    }
}

void __cudaRegisterFatBinaryEnd(void**) {}

void __cudaUnregisterFatBinary(void** handle) { delete reinterpret_cast<ModuleHandle*>(handle); }

void __cudaRegisterFunction(void** handle, const char* stub, char*, const char* name, int, uint3*, uint3*, dim3*, dim3*,
                            int*)
{
    const ModuleHandle& module = *reinterpret_cast<ModuleHandle*>(handle);
    const auto found = module->kernels.find(name);
    if (found == module->kernels.end()) {
        std::fprintf(stderr, "emulated GPU: no kernel %s in its module\n", name);
        std::abort();
    }
    const std::lock_guard lock(registry().mutex);
    registry().kernels[stub] = {shortName(name), module, &found->second};
}

unsigned __cudaPushCallConfiguration(dim3 grid, dim3 block, std::size_t shared, CUstream_st* stream)
{
    configurations.push_back({grid, block, shared, stream});
    return 0;
}

cudaError_t __cudaPopCallConfiguration(dim3* grid, dim3* block, std::size_t* shared, void* stream)
{
    if (configurations.empty())
        return latch(cudaErrorMissingConfiguration);
    const Configuration last = configurations.back();
    configurations.pop_back();
    *grid = last.grid;
    *block = last.block;
    *shared = last.shared;
    *static_cast<cudaStream_t*>(stream) = last.stream;
    return cudaSuccess;
}

cudaError_t __cudaGetKernel(cudaKernel_t* kernel, const void* stub)
{
    const std::lock_guard lock(registry().mutex);
    const auto found = registry().kernels.find(stub);
    if (found == registry().kernels.end())
        return latch(cudaErrorInvalidDeviceFunction);
    *kernel = reinterpret_cast<cudaKernel_t>(&found->second);
    return cudaSuccess;
}

/// Dynamic shared memory and streams other than the default one are not there: no kernel of the library uses them.
cudaError_t __cudaLaunchKernel(cudaKernel_t kernel, dim3 grid, dim3 block, void** arguments, std::size_t shared,
                               cudaStream_t stream)
{
    if (!kernel || shared != 0 || stream)
        return latch(cudaErrorNotSupported);
    return launchKernel(*reinterpret_cast<const RegisteredKernel*>(kernel), grid, block, arguments);
}
}
