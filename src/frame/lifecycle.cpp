#include "frame/lifecycle.h"

#include "frame/legacy_cublas.h"
#include "frame/routine.h"
#include "memory/memory_pool.h"
#include "tarn_lapack.h"

#include <boost/thread/lock_guard.hpp>
#include <boost/thread/mutex.hpp>

#include <atomic>
#include <cstdlib>
#include <set>

#include <sys/syscall.h>
#include <unistd.h>

namespace tarn {

namespace {

std::atomic<bool> initialized{false};

struct Lifecycle
{
    boost::mutex mutex;    ///< guards what follows; taken before the pool mutex, never after it
    std::set<int> threads; ///< that have called tarnInitialize and not yet tarnShutdown
};

/// Never destroyed: a program may shut the library down from its own exit handlers and static destructors.
Lifecycle& lifecycle()
{
    static auto& lifecycle = *new Lifecycle;
    return lifecycle;
}

int threadId() { return int(syscall(SYS_gettid)); }

/// The query alone can fail, not the error state: without a driver that is never clear, but the version is known, 0.
int queryVersion(cudaError_t (*query)(int*))
{
    int version = 0;
    velk::throwOnCudaError(query(&version));
    return version;
}

bool cudaIsNewEnough()
{
    const int runtime = queryVersion(cudaRuntimeGetVersion);
    if (runtime < tarnGetCudaMinimumVersion())
        return false;
    const int driver = queryVersion(cudaDriverGetVersion);
    return driver >= tarnGetCudaMinimumVersion() && driver >= runtime;
}

tarnStatus bringUp()
{
    if (!cudaIsNewEnough())
        return tarnInsufficientRuntime;
    if (supportedDeviceCount() == 0)
        return tarnNoHardware;
    if (tarnGetCublasRuntimeVersion() < tarnGetCublasMinimumVersion())
        return tarnInsufficientRuntime;
    const cublasStatus_t started = legacyCublasInit();
    if (started == CUBLAS_STATUS_ALLOC_FAILED)
        return tarnInsufficientMemory;
    if (started != CUBLAS_STATUS_SUCCESS)
        throw velk::CublasException(started);
    bindThreadDevice();
    // Lets the OpenMP runtime of some CPU BLAS tolerate a second copy of itself in the process.
    setenv("KMP_DUPLICATE_LIB_OK", "TRUE", 1);
    return tarnNoError;
}

} // namespace

bool isInitialized() noexcept { return initialized.load(std::memory_order_acquire); }

} // namespace tarn

using namespace tarn;

tarnStatus tarnInitialize()
{
    tarnSetErrorInfo(0);
    tarnStatus status = tarnNoError;
    try {
        const boost::lock_guard<boost::mutex> lock(lifecycle().mutex);
        lifecycle().threads.insert(threadId());
        if (isInitialized())
            bindThreadDevice();
        else
            status = bringUp();
        if (status == tarnNoError) {
            finishRoutine();
            initialized = true;
        } else {
            // What CUDA has to add on a machine that cannot serve is not the reason.
            abandonRoutine();
        }
    } catch (...) {
        status = translateException();
    }
    return record(status);
}

void tarnShutdown()
{
    const boost::lock_guard<boost::mutex> lock(lifecycle().mutex);
    if (!isInitialized())
        return;
    lifecycle().threads.erase(threadId());
    dropCublasHandles();
    if (lifecycle().threads.empty()) {
        freePools();
        legacyCublasGetError();
        legacyCublasShutdown();
        initialized = false;
    }
}

void tarnFreeBuffers()
{
    const boost::lock_guard<boost::mutex> lock(lifecycle().mutex);
    if (isInitialized())
        freePools();
}
