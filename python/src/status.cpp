#include "status.h"

#include <nanobind/nanobind.h>

#include <atomic>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>

namespace tarn::python {

namespace {

[[noreturn]] void raise(tarnStatus status, tarnInfo info, const std::string& routine)
{
    if (status == tarnInsufficientMemory)
        throw std::bad_alloc();
    const std::string text =
        routine + ": " + tarnGetStatusString(status) + (info == 0 ? "" : ", info " + std::to_string(info));
    if (status == tarnArgumentError)
        throw nanobind::value_error(text.c_str());
    throw std::runtime_error(text);
}

} // namespace

void initialize()
{
    static std::atomic<bool> done{false};
    static std::mutex starting;
    if (done.load(std::memory_order_acquire))
        return;
    const std::lock_guard lock(starting);
    if (const tarnStatus status = tarnInitialize(); status != tarnNoError)
        raise(status, tarnGetErrorInfo(), "tarnInitialize");
    done.store(true, std::memory_order_release);
}

int infoOf(tarnStatus status, const char* routine)
{
    if (status == tarnNoError)
        return 0;
    const tarnInfo info = tarnGetErrorInfo();
    if (status == tarnDataError && info > 0)
        return info;
    raise(status, info, routine);
}

void checkCuda(cudaError_t error)
{
    if (error == cudaSuccess)
        return;
    cudaGetLastError();
    if (error == cudaErrorMemoryAllocation)
        throw std::bad_alloc();
    throw std::runtime_error(std::string("CUDA: ") + cudaGetErrorString(error));
}

} // namespace tarn::python
