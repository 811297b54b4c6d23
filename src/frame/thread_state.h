// What the library keeps per thread: the state of the outermost routine, and the cuBLAS handles.
#pragma once

#include <cublas_v2.h>

namespace tarn {

/// Enters a frame on this thread: makes the thread's state if it has none, deepens it, and notes the current device.
/// Raises CudaRuntimeException if the device cannot be had, std::runtime_error "TSS failure" if the state cannot.
void enterRoutine();

/// Leaves a frame; the outermost one drops the state. Raises nothing.
void leaveRoutine() noexcept;

/// Marks the outermost routine as failed: its mirrors will not copy results back.
void markFailed() noexcept;

/// Keeps a CUDA error for the end of the routine that the thread is in; the first one counts. For destructors, which
/// cannot raise. Outside of routines it is dropped: there is nobody whose error it could be.
void postponeCudaError(cudaError_t code) noexcept;

/// The error kept, which is forgotten thereby; cudaSuccess if there is none.
cudaError_t takePostponedError() noexcept;

/// True if the routine that runs on this thread was marked; false outside routines.
bool hasFailed() noexcept;

/// Device of the running routine; outside one, the current device.
int executingDevice();

/// The cuBLAS handle of this thread for executingDevice(), in host pointer mode; made at first use and kept.
/// Raises CublasException with the code if cuBLAS cannot make it, std::runtime_error "Cublas Context TSS failure" if
/// the thread's storage cannot be had.
cublasHandle_t cublasHandle();

/// Destroys the cuBLAS handles of this thread. They also go when the thread ends.
void dropCublasHandles() noexcept;

} // namespace tarn
