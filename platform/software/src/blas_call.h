#pragma once
/// The frame that every cuBLAS entry point has, and the checks of its arguments.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <utility>

#include "calls.h"
#include "checks.h"
#include "cpu_turn.h"
#include "cublas_api.h"
#include "handles.h"

namespace tarn::soft {

inline bool isZero(float x) { return x == 0; }
inline bool isZero(double x) { return x == 0; }
inline bool isZero(cuComplex x) { return x.x == 0 && x.y == 0; }
inline bool isZero(cuDoubleComplex x) { return x.x == 0 && x.y == 0; }

template <class T>
constexpr bool isComplex = !std::is_floating_point_v<T>;

/// The Fortran letter of an enumerator; 0 if it is none.
inline char letter(cublasOperation_t op) { return unsigned(op) < 3 ? "NTC"[op] : '\0'; }
inline char letter(cublasFillMode_t uplo) { return unsigned(uplo) < 2 ? "LU"[uplo] : '\0'; }
inline char letter(cublasDiagType_t diag) { return unsigned(diag) < 2 ? "NU"[diag] : '\0'; }
inline char letter(cublasSideMode_t side) { return unsigned(side) < 2 ? "LR"[side] : '\0'; }

/// Checks and translates the arguments of one numerical call, then queues its work on the default stream. After a bad
/// argument the rest is not looked at, and submit() does nothing but report it.
class BlasArguments
{
public:
    explicit BlasArguments(Device& device) : device_(device) {}

    void require(bool condition) { good_ = good_ && condition; }

    void dimensions(int m, int n, int k = 0) { require(m >= 0 && n >= 0 && k >= 0); }

    /// Reads a scalar, now.
    template <class T>
    T scalar(const T* value)
    {
        require(value != nullptr);
        return good_ ? *value : T{};
    }

    /// The writable address of a rows by cols matrix; all of it must be device memory, unless it is empty.
    template <class T>
    T* matrix(const T* address, int rows, int cols, int ld)
    {
        require(ld >= std::max(1, rows));
        if (!good_ || rows == 0 || cols == 0)
            return nullptr;
        return translate(address, std::size_t(cols - 1) * std::size_t(ld) + std::size_t(rows));
    }

    /// The same for a vector of n elements.
    template <class T>
    T* vector(const T* address, int n, int inc)
    {
        require(inc != 0);
        if (!good_ || n <= 0)
            return nullptr;
        return translate(address, std::size_t(n - 1) * std::size_t(std::abs(std::int64_t{inc})) + 1);
    }

    /// Queues `work`, which takes some `operations` multiply-adds or memory accesses.
    template <class Routine>
    cublasStatus_t submit(double operations, Routine work)
    {
        if (!good_)
            return CUBLAS_STATUS_INVALID_VALUE;
        constexpr double worthThreads = 500'000;
        const auto run = [work, wanted = operations > worthThreads] {
            const CpuTurn turn(wanted);
            work();
            return cudaSuccess;
        };
        device_.submit({run, static_cast<std::int64_t>(operations / 8), false});
        return CUBLAS_STATUS_SUCCESS;
    }

    /// The answer of a call with nothing to do.
    cublasStatus_t nothing() const { return good_ ? CUBLAS_STATUS_SUCCESS : CUBLAS_STATUS_INVALID_VALUE; }

private:
    template <class T>
    T* translate(const T* address, std::size_t elements)
    {
        require(device_.memory.holds(address, elements * sizeof(T)));
        return good_ ? reinterpret_cast<T*>(device_.memory.arena().inner(address)) : nullptr;
    }

    Device& device_;
    bool good_ = true;
};

/// One cuBLAS call: announced when constructed, worked by one of the methods.
class BlasCall
{
public:
    template <class... Args>
    explicit BlasCall(const char* name, Args... arguments)
        : name_(name), code_(unloaded() ? CUBLAS_STATUS_NOT_INITIALIZED
                                        : static_cast<cublasStatus_t>(announceCall(name, arguments...)))
    {}

    /// body() -> cublasStatus_t
    template <class Body>
    cublasStatus_t run(const Body& body) const noexcept
    {
        if (code_ != CUBLAS_STATUS_SUCCESS)
            return code_;
        try {
            return body();
        } catch (...) {
            return CUBLAS_STATUS_ALLOC_FAILED;
        }
    }

    /// body(BlasArguments&) -> cublasStatus_t, for a numerical routine. A handle serves the device on which it was
    /// made, and that device must be current.
    template <class Body>
    cublasStatus_t compute(cublasHandle_t handle, const Body& body) const noexcept
    {
        return run([&] {
            const auto context = blasHandles().find(handle);
            if (!context)
                return CUBLAS_STATUS_NOT_INITIALIZED;
            if (context->device != machine().current() || context->device->queue.stuck() != cudaSuccess)
                return CUBLAS_STATUS_EXECUTION_FAILED;
            BlasArguments arguments(*context->device);
            const cublasStatus_t status = body(arguments);
            // Callers tend to drop the status; the operands are then silently wrong.
            if (checked && status == CUBLAS_STATUS_INVALID_VALUE)
                std::fprintf(stderr, "softdev: %s refuses its arguments\n", name_);
            return status;
        });
    }

private:
    const char* name_;
    cublasStatus_t code_;
};

} // namespace tarn::soft
