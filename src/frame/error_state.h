// The error states of CUDA and cuBLAS on the calling thread, and the guards through which call sites read them.
#pragma once

#include "frame/exceptions.h"

namespace velk {

/// Raises for a CUDA error: codes 2 and 32 as CudaMemoryException, any other as CudaRuntimeException.
void throwOnCudaError(cudaError_t code);

/// Raises for a cuBLAS error: code 3 as CudaMemoryException, any other as CublasException.
void throwOnCublasError(cublasStatus_t code);

/// Stands before a CUDA call, so that an error left over from an earlier launch is not charged to that call:
///
///     CudaErrorGuard guard;
///     guard.check(cudaMemcpy(...));
class CudaErrorGuard
{
public:
    CudaErrorGuard();
    explicit CudaErrorGuard(cudaError_t code) { throwOnCudaError(code); }

    cudaError_t check(cudaError_t code) const
    {
        throwOnCudaError(code);
        return code;
    }
};

/// Raises if a cuBLAS call of this thread has failed since the last reading.
class CublasErrorGuard
{
public:
    CublasErrorGuard();
};

} // namespace velk

namespace tarn {

/// Keeps the first failing status of this thread's cuBLAS calls until takeCublasError; hands the status through. The
/// algorithms queue their cuBLAS calls without looking at the result, and the end of the routine reads it here.
cublasStatus_t noteCublasStatus(cublasStatus_t status) noexcept;

/// The first failing code of this thread since the last reading, of the legacy interface or of noteCublasStatus.
cublasStatus_t takeCublasError() noexcept;

/// For destructors, which cannot raise: keeps an error that an earlier launch has left in the CUDA error state for the
/// end of the routine, before the destructor's own calls come upon it.
void postponeCudaError() noexcept;

/// The common end of all routines: waits for the device, then raises what cuBLAS and CUDA have to report.
void finishRoutine();

/// The end of a routine that has failed already: waits for the device and drops errors that follow from the failure, so
/// that the caller's arrays are at rest and the next routine starts clean.
void abandonRoutine() noexcept;

} // namespace tarn
