#include "frame/thread_state.h"

#include "frame/device_table.h"
#include "frame/error_state.h"

#include <boost/thread/tss.hpp>
#include <device_glue.h>

#include <array>
#include <optional>
#include <utility>

/// Of the drop-in library, if it answers the BLAS and LAPACK names in this process: with 1 it hands on what this thread
/// calls, until -1 takes that back. The CPU LAPACK calls the BLAS by these names while it works for a routine.
extern "C" [[gnu::weak]] void tarn_blas_suspend(int step);

namespace tarn {

namespace {

struct ThreadState
{
    int depth = 0;
    std::optional<platform::Seat> seat; ///< while a routine runs
    bool failed = false;
    int device = -1;
    cudaError_t postponed = cudaSuccess;
};

/// The cuBLAS handles of one thread by device number.
struct Ctx
{
    std::array<cublasHandle_t, deviceLimit> handles{};

    Ctx() = default;
    Ctx(const Ctx&) = delete;
    Ctx& operator=(const Ctx&) = delete;

    ~Ctx()
    {
        const velk::ReleaseScope scope;
        for (cublasHandle_t& handle : handles) {
            if (handle)
                cublasDestroy_v2(handle);
            handle = nullptr;
        }
    }
};

// Never destroyed: threads may end, and clean up through these, after static destructors have begun.
boost::thread_specific_ptr<ThreadState>& threadState()
{
    static auto& state = *new boost::thread_specific_ptr<ThreadState>;
    return state;
}

boost::thread_specific_ptr<Ctx>& threadContext()
{
    static auto& context = *new boost::thread_specific_ptr<Ctx>;
    return context;
}

/// Runs `make`; failures of class `Kept` pass, all others become a std::runtime_error with the text given.
template <class Kept, class Make>
auto withTssFailure(const char* text, Make&& make)
{
    try {
        return make();
    } catch (const Kept&) {
        throw;
    } catch (...) {
        throw std::runtime_error(text);
    }
}

void suspendDropin(int step)
{
    if (tarn_blas_suspend)
        tarn_blas_suspend(step);
}

ThreadState& requireState()
{
    if (!threadState().get())
        threadState().reset(new ThreadState);
    return *threadState();
}

cublasHandle_t createHandle()
{
    cublasHandle_t handle = nullptr;
    if (const cublasStatus_t status = cublasCreate_v2(&handle); status != CUBLAS_STATUS_SUCCESS)
        throw velk::CublasException(status);
    if (const cublasStatus_t status = cublasSetPointerMode_v2(handle, CUBLAS_POINTER_MODE_HOST);
        status != CUBLAS_STATUS_SUCCESS) {
        cublasDestroy_v2(handle);
        throw velk::CublasException(status);
    }
    return handle;
}

} // namespace

void enterRoutine()
{
    withTssFailure<velk::CudaRuntimeException>("TSS failure", [] {
        ThreadState& state = requireState();
        if (++state.depth == 1)
            state.seat.emplace();
        suspendDropin(1);
        state.device = currentDevice();
    });
}

void leaveRoutine() noexcept
{
    try {
        ThreadState* state = threadState().get();
        if (!state)
            return;
        suspendDropin(-1);
        if (--state->depth <= 0)
            threadState().reset();
    } catch (...) {
        // Nothing can be done for a thread whose storage fails.
    }
}

void markFailed() noexcept
{
    if (ThreadState* state = threadState().get())
        state->failed = true;
}

void postponeCudaError(cudaError_t code) noexcept
{
    ThreadState* state = threadState().get();
    if (state && state->postponed == cudaSuccess)
        state->postponed = code;
}

cudaError_t takePostponedError() noexcept
{
    ThreadState* state = threadState().get();
    return state ? std::exchange(state->postponed, cudaSuccess) : cudaSuccess;
}

bool hasFailed() noexcept
{
    const ThreadState* state = threadState().get();
    return state && state->failed;
}

int executingDevice()
{
    return withTssFailure<velk::CudaRuntimeException>("TSS failure", [] {
        if (!threadState().get()) {
            const int device = currentDevice();
            requireState().device = device;
        }
        return threadState()->device;
    });
}

cublasHandle_t cublasHandle()
{
    return withTssFailure<velk::CublasException>("Cublas Context TSS failure", [] {
        if (!threadContext().get())
            threadContext().reset(new Ctx);
        cublasHandle_t& handle = threadContext()->handles.at(executingDevice());
        if (!handle)
            handle = createHandle();
        return handle;
    });
}

void dropCublasHandles() noexcept
{
    try {
        threadContext().reset();
    } catch (...) {
        // The handles go with the thread then.
    }
}

} // namespace tarn
