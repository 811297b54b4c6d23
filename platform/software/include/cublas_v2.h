#pragma once
/// The cuBLAS v2 calls of the software device: the published names, signatures and numeric values, as far as this
/// system uses them. Matrices are column-major in device memory; scalars are host values, read at the call.

#ifdef TARN_SOFTDEV_CUBLAS_LEGACY
#    error "cublas.h and cublas_v2.h are two interfaces; include one of them"
#endif
#define TARN_SOFTDEV_CUBLAS_V2

#include "cublas_api.h"

#pragma GCC visibility push(default)
extern "C" {

cublasStatus_t cublasCreate_v2(cublasHandle_t* handle);
cublasStatus_t cublasDestroy_v2(cublasHandle_t handle);
cublasStatus_t cublasGetVersion_v2(cublasHandle_t handle, int* version);
cublasStatus_t cublasSetPointerMode_v2(cublasHandle_t handle, cublasPointerMode_t mode);

// Each macro declares one routine for one element type T; R is the type of the scalars that are real for every T.

#define TARN_CUBLAS_GEMM(name, T)                                                                                      \
    cublasStatus_t name(cublasHandle_t handle, cublasOperation_t transa, cublasOperation_t transb, int m, int n,       \
                        int k, const T* alpha, const T* A, int lda, const T* B, int ldb, const T* beta, T* C,          \
                        int ldc);
TARN_CUBLAS_GEMM(cublasSgemm_v2, float)
TARN_CUBLAS_GEMM(cublasDgemm_v2, double)
TARN_CUBLAS_GEMM(cublasCgemm_v2, cuComplex)
TARN_CUBLAS_GEMM(cublasZgemm_v2, cuDoubleComplex)
#undef TARN_CUBLAS_GEMM

/// C = alpha op(A) B or alpha B op(A); C may be B itself, with the same leading dimension.
#define TARN_CUBLAS_TRMM(name, T)                                                                                      \
    cublasStatus_t name(cublasHandle_t handle, cublasSideMode_t side, cublasFillMode_t uplo, cublasOperation_t trans,  \
                        cublasDiagType_t diag, int m, int n, const T* alpha, const T* A, int lda, const T* B, int ldb, \
                        T* C, int ldc);
TARN_CUBLAS_TRMM(cublasStrmm_v2, float)
TARN_CUBLAS_TRMM(cublasDtrmm_v2, double)
TARN_CUBLAS_TRMM(cublasCtrmm_v2, cuComplex)
TARN_CUBLAS_TRMM(cublasZtrmm_v2, cuDoubleComplex)
#undef TARN_CUBLAS_TRMM

#define TARN_CUBLAS_TRSM(name, T)                                                                                      \
    cublasStatus_t name(cublasHandle_t handle, cublasSideMode_t side, cublasFillMode_t uplo, cublasOperation_t trans,  \
                        cublasDiagType_t diag, int m, int n, const T* alpha, const T* A, int lda, T* B, int ldb);
TARN_CUBLAS_TRSM(cublasStrsm_v2, float)
TARN_CUBLAS_TRSM(cublasDtrsm_v2, double)
TARN_CUBLAS_TRSM(cublasCtrsm_v2, cuComplex)
TARN_CUBLAS_TRSM(cublasZtrsm_v2, cuDoubleComplex)
#undef TARN_CUBLAS_TRSM

#define TARN_CUBLAS_SYMM(name, T)                                                                                      \
    cublasStatus_t name(cublasHandle_t handle, cublasSideMode_t side, cublasFillMode_t uplo, int m, int n,             \
                        const T* alpha, const T* A, int lda, const T* B, int ldb, const T* beta, T* C, int ldc);
TARN_CUBLAS_SYMM(cublasSsymm_v2, float)
TARN_CUBLAS_SYMM(cublasDsymm_v2, double)
TARN_CUBLAS_SYMM(cublasCsymm_v2, cuComplex)
TARN_CUBLAS_SYMM(cublasZsymm_v2, cuDoubleComplex)
TARN_CUBLAS_SYMM(cublasChemm_v2, cuComplex)
TARN_CUBLAS_SYMM(cublasZhemm_v2, cuDoubleComplex)
#undef TARN_CUBLAS_SYMM

#define TARN_CUBLAS_SYRK(name, T, R)                                                                                   \
    cublasStatus_t name(cublasHandle_t handle, cublasFillMode_t uplo, cublasOperation_t trans, int n, int k,           \
                        const R* alpha, const T* A, int lda, const R* beta, T* C, int ldc);
TARN_CUBLAS_SYRK(cublasSsyrk_v2, float, float)
TARN_CUBLAS_SYRK(cublasDsyrk_v2, double, double)
TARN_CUBLAS_SYRK(cublasCsyrk_v2, cuComplex, cuComplex)
TARN_CUBLAS_SYRK(cublasZsyrk_v2, cuDoubleComplex, cuDoubleComplex)
TARN_CUBLAS_SYRK(cublasCherk_v2, cuComplex, float)
TARN_CUBLAS_SYRK(cublasZherk_v2, cuDoubleComplex, double)
#undef TARN_CUBLAS_SYRK

#define TARN_CUBLAS_SYR2K(name, T, R)                                                                                  \
    cublasStatus_t name(cublasHandle_t handle, cublasFillMode_t uplo, cublasOperation_t trans, int n, int k,           \
                        const T* alpha, const T* A, int lda, const T* B, int ldb, const R* beta, T* C, int ldc);
TARN_CUBLAS_SYR2K(cublasSsyr2k_v2, float, float)
TARN_CUBLAS_SYR2K(cublasDsyr2k_v2, double, double)
TARN_CUBLAS_SYR2K(cublasCsyr2k_v2, cuComplex, cuComplex)
TARN_CUBLAS_SYR2K(cublasZsyr2k_v2, cuDoubleComplex, cuDoubleComplex)
TARN_CUBLAS_SYR2K(cublasCher2k_v2, cuComplex, float)
TARN_CUBLAS_SYR2K(cublasZher2k_v2, cuDoubleComplex, double)
#undef TARN_CUBLAS_SYR2K

#define TARN_CUBLAS_GEMV(name, T)                                                                                      \
    cublasStatus_t name(cublasHandle_t handle, cublasOperation_t trans, int m, int n, const T* alpha, const T* A,      \
                        int lda, const T* x, int incx, const T* beta, T* y, int incy);
TARN_CUBLAS_GEMV(cublasSgemv_v2, float)
TARN_CUBLAS_GEMV(cublasDgemv_v2, double)
TARN_CUBLAS_GEMV(cublasCgemv_v2, cuComplex)
TARN_CUBLAS_GEMV(cublasZgemv_v2, cuDoubleComplex)
#undef TARN_CUBLAS_GEMV

#define TARN_CUBLAS_SYMV(name, T)                                                                                      \
    cublasStatus_t name(cublasHandle_t handle, cublasFillMode_t uplo, int n, const T* alpha, const T* A, int lda,      \
                        const T* x, int incx, const T* beta, T* y, int incy);
TARN_CUBLAS_SYMV(cublasSsymv_v2, float)
TARN_CUBLAS_SYMV(cublasDsymv_v2, double)
TARN_CUBLAS_SYMV(cublasChemv_v2, cuComplex)
TARN_CUBLAS_SYMV(cublasZhemv_v2, cuDoubleComplex)
#undef TARN_CUBLAS_SYMV

#define TARN_CUBLAS_TRMV(name, T)                                                                                      \
    cublasStatus_t name(cublasHandle_t handle, cublasFillMode_t uplo, cublasOperation_t trans, cublasDiagType_t diag,  \
                        int n, const T* A, int lda, T* x, int incx);
TARN_CUBLAS_TRMV(cublasStrmv_v2, float)
TARN_CUBLAS_TRMV(cublasCtrmv_v2, cuComplex)
#undef TARN_CUBLAS_TRMV

#define TARN_CUBLAS_VECTORS(L, T)                                                                                      \
    cublasStatus_t cublas##L##axpy_v2(cublasHandle_t handle, int n, const T* alpha, const T* x, int incx, T* y,        \
                                      int incy);                                                                       \
    cublasStatus_t cublas##L##copy_v2(cublasHandle_t handle, int n, const T* x, int incx, T* y, int incy);             \
    cublasStatus_t cublas##L##swap_v2(cublasHandle_t handle, int n, T* x, int incx, T* y, int incy);                   \
    cublasStatus_t cublas##L##rot_v2(cublasHandle_t handle, int n, T* x, int incx, T* y, int incy, const float* c,     \
                                     const T* s);
TARN_CUBLAS_VECTORS(S, float)
TARN_CUBLAS_VECTORS(C, cuComplex)
#undef TARN_CUBLAS_VECTORS

cublasStatus_t cublasSscal_v2(cublasHandle_t handle, int n, const float* alpha, float* x, int incx);
cublasStatus_t cublasCsscal_v2(cublasHandle_t handle, int n, const float* alpha, cuComplex* x, int incx);
}
#pragma GCC visibility pop
