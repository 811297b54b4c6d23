// The failures that travel inside the library; a frame (routine.h) turns them into a status and an error info.
#pragma once

#include "tarn_core.h"

#include <cublas_v2.h>
#include <cuda_runtime.h>

#include <new>
#include <stdexcept>
#include <string>

namespace velk {

/// CUDA or cuBLAS has no memory left. Ends as tarnInsufficientMemory.
class CudaMemoryException : public std::bad_alloc
{
public:
    explicit CudaMemoryException(const char* message);
    const char* what() const noexcept override;

private:
    std::string message_;
};

/// A CUDA call or a kernel failed. Ends as tarnRuntimeError with the CUDA code.
class CudaRuntimeException : public std::runtime_error
{
public:
    explicit CudaRuntimeException(cudaError_t code);
    cudaError_t code() const noexcept { return code_; }

private:
    cudaError_t code_;
};

/// A cuBLAS call failed. Ends as tarnBlasError with the cuBLAS code.
class CublasException : public std::runtime_error
{
public:
    explicit CublasException(cublasStatus_t code) : std::runtime_error(""), code_(code) {}
    cublasStatus_t code() const noexcept { return code_; }

private:
    cublasStatus_t code_;
};

/// A sparse library call failed; for code that shares these frames. Ends as tarnRuntimeError with the code.
class CusparseException : public std::runtime_error
{
public:
    explicit CusparseException(int code) : std::runtime_error(""), code_(code) {}
    int code() const noexcept { return code_; }

private:
    int code_;
};

} // namespace velk

namespace tarn {

/// A failure in LAPACK's manner: a status with its info. It does not count as a failed routine: results are delivered.
class InfoException
{
public:
    InfoException(tarnInfo info, tarnStatus status) : info_(info), status_(status) {}
    tarnInfo info() const noexcept { return info_; }
    tarnStatus status() const noexcept { return status_; }

private:
    tarnInfo info_;
    tarnStatus status_;
};

/// The request is legal but not served. Ends as tarnFeatureNotImplemented.
class FeatNotImplException
{};

/// Raises tarnArgumentError; `position` is minus the one-based position of the argument.
[[noreturn]] void argumentError(tarnInfo position);

/// Raises tarnDataError; `info` is positive.
[[noreturn]] void dataError(tarnInfo info);

/// Raises tarnArgumentError with `position` unless the condition on the argument holds.
inline void require(bool holds, tarnInfo position)
{
    if (!holds)
        argumentError(position);
}

/// The info of a CPU LAPACK call: 0 passes, a positive one is a data error, a negative one means that the library
/// itself passed a bad argument and ends as tarnRuntimeError.
void checkInfo(int info);

[[noreturn]] void featureNotImplemented();

} // namespace tarn
