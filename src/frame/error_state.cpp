#include "frame/error_state.h"

#include "frame/legacy_cublas.h"

#include <utility>

namespace velk {

void throwOnCudaError(cudaError_t code)
{
    constexpr auto memoryValueTooLarge = cudaError_t(32);
    if (code == cudaSuccess)
        return;
    if (code == cudaErrorMemoryAllocation || code == memoryValueTooLarge)
        throw CudaMemoryException(cudaGetErrorString(code));
    throw CudaRuntimeException(code);
}

void throwOnCublasError(cublasStatus_t code)
{
    if (code == CUBLAS_STATUS_SUCCESS)
        return;
    if (code == CUBLAS_STATUS_ALLOC_FAILED)
        throw CudaMemoryException("CUBLAS Allocation Failure");
    throw CublasException(code);
}

CudaErrorGuard::CudaErrorGuard() { throwOnCudaError(cudaGetLastError()); }

CublasErrorGuard::CublasErrorGuard() { throwOnCublasError(tarn::takeCublasError()); }

} // namespace velk

namespace tarn {

namespace {

thread_local cublasStatus_t firstCublasFailure = CUBLAS_STATUS_SUCCESS;
thread_local cudaError_t postponedError = cudaSuccess;

} // namespace

cublasStatus_t noteCublasStatus(cublasStatus_t status) noexcept
{
    if (firstCublasFailure == CUBLAS_STATUS_SUCCESS)
        firstCublasFailure = status;
    return status;
}

cublasStatus_t takeCublasError() noexcept
{
    // "Not initialized" only says that nobody has used the legacy interface, as before tarnInitialize.
    const cublasStatus_t legacy = legacyCublasGetError();
    const cublasStatus_t noted = std::exchange(firstCublasFailure, CUBLAS_STATUS_SUCCESS);
    return legacy == CUBLAS_STATUS_SUCCESS || legacy == CUBLAS_STATUS_NOT_INITIALIZED ? noted : legacy;
}

void postponeCudaError() noexcept
{
    const cudaError_t code = cudaGetLastError();
    if (postponedError == cudaSuccess)
        postponedError = code;
}

void finishRoutine()
{
    // Without a device nothing runs, and service functions answer all the same.
    const cudaError_t waited = cudaDeviceSynchronize();
    if (waited == cudaErrorNoDevice || waited == cudaErrorInsufficientDriver)
        cudaGetLastError();
    velk::CublasErrorGuard();
    postponeCudaError();
    velk::throwOnCudaError(std::exchange(postponedError, cudaSuccess));
}

void abandonRoutine() noexcept
{
    cudaDeviceSynchronize();
    takeCublasError();
    postponeCudaError();
    postponedError = cudaSuccess;
}

} // namespace tarn
