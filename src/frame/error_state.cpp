#include "frame/error_state.h"

#include "frame/legacy_cublas.h"
#include "frame/thread_state.h"

#include <utility>

namespace velk {

void throwOnCudaError(cudaError_t code)
{
    constexpr auto memoryValueTooLarge = cudaError_t(32);
    if (code == cudaSuccess)
        return;
    cudaGetLastError();
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

CudaErrorGuard::CudaErrorGuard() { tarn::raiseEarlierErrors(); }

CublasErrorGuard::CublasErrorGuard() { throwOnCublasError(tarn::takeCublasError()); }

ReleaseScope::ReleaseScope() noexcept { tarn::postponeCudaError(tarn::takeCudaError()); }

ReleaseScope::~ReleaseScope() { cudaGetLastError(); }

} // namespace velk

namespace tarn {

namespace {

thread_local cublasStatus_t firstCublasFailure = CUBLAS_STATUS_SUCCESS;

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

cudaError_t takeCudaError() noexcept
{
    const cudaError_t code = cudaGetLastError();
    return code == cudaErrorNoDevice || code == cudaErrorInsufficientDriver ? cudaSuccess : code;
}

void raiseEarlierErrors() { velk::throwOnCudaError(takeCudaError()); }

void finishRoutine()
{
    cudaDeviceSynchronize();
    const velk::CublasErrorGuard cublas;
    velk::throwOnCudaError(takePostponedError());
    raiseEarlierErrors();
}

void abandonRoutine() noexcept
{
    cudaDeviceSynchronize();
    takeCublasError();
    cudaGetLastError();
    takePostponedError();
}

} // namespace tarn
