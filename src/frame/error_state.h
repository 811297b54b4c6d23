// The error states of CUDA and cuBLAS on the calling thread, and the guards through which call sites read them.
#pragma once

#include "frame/exceptions.h"

namespace velk {

/// Raises for a CUDA error: codes 2 and 32 as CudaMemoryException, any other as CudaRuntimeException. What is raised is
/// taken out of the CUDA error state, so that nobody is charged with it again.
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
    /// Raises what the CUDA error state holds.
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

/// Stands around the calls by which a destructor gives something back. What these report is nobody's: it is dropped at
/// the end of the scope. An error that stood in the CUDA error state before is kept for the end of the routine.
class ReleaseScope
{
public:
    ReleaseScope() noexcept;
    ~ReleaseScope();
    ReleaseScope(const ReleaseScope&) = delete;
    ReleaseScope& operator=(const ReleaseScope&) = delete;
};

} // namespace velk

namespace tarn {

/// Keeps the first failing status of this thread's cuBLAS calls until takeCublasError; hands the status through. The
/// algorithms queue their cuBLAS calls without looking at the result, and the end of the routine reads it here.
cublasStatus_t noteCublasStatus(cublasStatus_t status) noexcept;

/// The first failing code of this thread since the last reading, of the legacy interface or of noteCublasStatus.
cublasStatus_t takeCublasError() noexcept;

/// Reads and clears the CUDA error state. Without a driver or a device the state is never clear, but nothing runs that
/// it could speak of: that is cudaSuccess here, and the calls that need a device tell.
cudaError_t takeCudaError() noexcept;

/// Raises what the CUDA error state holds: an earlier launch that was refused.
void raiseEarlierErrors();

/// The common end of all routines: waits for the device, then raises what cuBLAS and CUDA have to report.
void finishRoutine();

/// The end of a routine that has failed already: waits for the device and drops errors that follow from the failure, so
/// that the caller's arrays are at rest and the next routine starts clean.
void abandonRoutine() noexcept;

} // namespace tarn
