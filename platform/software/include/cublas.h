#pragma once
/// The legacy cuBLAS calls of the software device: lifecycle and error state. As in the published library, a source
/// file takes this header or cublas_v2.h, never both.

#ifdef TARN_SOFTDEV_CUBLAS_V2
#    error "cublas.h and cublas_v2.h are two interfaces; include one of them"
#endif
#define TARN_SOFTDEV_CUBLAS_LEGACY

#include "cublas_api.h"

typedef cublasStatus_t cublasStatus;

#pragma GCC visibility push(default)
extern "C" {
cublasStatus cublasInit();
cublasStatus cublasShutdown();

/// Reads and clears the error state that the legacy numerical calls leave. The v2 calls return their status and leave
/// none here.
cublasStatus cublasGetError();
}
#pragma GCC visibility pop
