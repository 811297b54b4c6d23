#pragma once
/// The frame that every CUDA entry point has.

#include <new>

#include "calls.h"
#include "error.h"
#include "machine.h"

namespace tarn::soft {

/// One call: announced when constructed, worked by one of the two methods. Both return and latch the injected failure
/// instead of working, and a failure of the body.
class CudaCall
{
public:
    template <class... Args>
    explicit CudaCall(const char* name, Args... arguments)
        : code_(unloaded() ? cudaErrorCudartUnloading : static_cast<cudaError_t>(announceCall(name, arguments...)))
    {}

    /// body() -> cudaError_t
    template <class Body>
    cudaError_t run(const Body& body) const noexcept
    {
        return latch(code_ == cudaSuccess ? guarded(body) : code_);
    }

    /// body(Device& current) -> cudaError_t
    template <class Body>
    cudaError_t onDevice(const Body& body) const noexcept
    {
        return run([&] {
            Device* device = machine().current();
            if (!device)
                return machine().absence();
            const cudaError_t stuck = device->queue.stuck();
            return stuck == cudaSuccess ? body(*device) : stuck;
        });
    }

private:
    template <class Body>
    static cudaError_t guarded(const Body& body) noexcept
    {
        try {
            return body();
        } catch (const std::bad_alloc&) {
            return cudaErrorMemoryAllocation;
        } catch (...) {
            return cudaErrorInitializationError;
        }
    }

    cudaError_t code_;
};

} // namespace tarn::soft
