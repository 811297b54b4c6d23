#include "../elements.h"
#include "device_array.h"
#include "reference.h"

#include <cublas_v2.h>
#include <cusolverDn.h>

#include <complex>

namespace tarn::bench::reference {

using tool::select;

const bool onDevice = true;
const char* const blas = "cuBLAS";
const char* const lapack = "cuSOLVER";

namespace {

void check(cublasStatus_t status)
{
    if (status != CUBLAS_STATUS_SUCCESS)
        throw tool::Failure("cuBLAS returned status " + std::to_string(status));
}

void check(cusolverStatus_t status)
{
    if (status != CUSOLVER_STATUS_SUCCESS)
        throw tool::Failure("cuSOLVER returned status " + std::to_string(status));
}

/// Handles and workspace of both libraries, kept from call to call so that only the first pays for them.
class Context
{
public:
    Context() : info_(1)
    {
        check(cublasCreate(&blas_));
        check(cusolverDnCreate(&solver_));
    }
    ~Context()
    {
        cusolverDnDestroy(solver_);
        cublasDestroy(blas_);
    }
    Context(const Context&) = delete;
    Context& operator=(const Context&) = delete;

    cublasHandle_t blasHandle() const { return blas_; }
    cusolverDnHandle_t solver() const { return solver_; }
    int* info() const { return info_.data(); }
    int* pivots(std::size_t count) { return reserve(pivots_, pivotCount_, count); }
    void* workspace(std::size_t bytes) { return reserve(workspace_, workspaceBytes_, bytes); }

    void checkInfo() const
    {
        std::vector<int> info(1);
        info_.get(info);
        if (info[0] != 0)
            throw tool::Failure("cuSOLVER returned info " + std::to_string(info[0]));
    }

private:
    template <class T>
    static T* reserve(DeviceArray<T>& array, std::size_t& size, std::size_t wanted)
    {
        if (size < wanted) {
            array = DeviceArray<T>(wanted);
            size = wanted;
        }
        return array.data();
    }

    cublasHandle_t blas_ = nullptr;
    cusolverDnHandle_t solver_ = nullptr;
    DeviceArray<int> info_, pivots_{0};
    DeviceArray<char> workspace_{0};
    std::size_t pivotCount_ = 0, workspaceBytes_ = 0;
};

Context& context()
{
    static Context shared;
    return shared;
}

// An argument as cuBLAS and cuSOLVER take it; the complex types of the two sides share one layout.
template <class A>
A toCuda(A argument)
{
    return argument;
}
cuComplex* toCuda(std::complex<float>* p) { return reinterpret_cast<cuComplex*>(p); }
const cuComplex* toCuda(const std::complex<float>* p) { return reinterpret_cast<const cuComplex*>(p); }
cuDoubleComplex* toCuda(std::complex<double>* p) { return reinterpret_cast<cuDoubleComplex*>(p); }
const cuDoubleComplex* toCuda(const std::complex<double>* p) { return reinterpret_cast<const cuDoubleComplex*>(p); }

template <class Routine, class... Arguments>
void blasCall(Routine routine, Arguments... arguments)
{
    check(routine(context().blasHandle(), toCuda(arguments)...));
}

template <class Routine, class... Arguments>
void solverCall(Routine routine, Arguments... arguments)
{
    check(routine(context().solver(), toCuda(arguments)...));
}

void synchronize() { bench::check(cudaDeviceSynchronize(), "cudaDeviceSynchronize"); }

cublasOperation_t operation(char trans)
{
    return trans == 'N' ? CUBLAS_OP_N : trans == 'T' ? CUBLAS_OP_T : CUBLAS_OP_C;
}

cublasFillMode_t fill(char uplo) { return uplo == 'U' ? CUBLAS_FILL_MODE_UPPER : CUBLAS_FILL_MODE_LOWER; }

cublasSideMode_t sideMode(char side) { return side == 'L' ? CUBLAS_SIDE_LEFT : CUBLAS_SIDE_RIGHT; }

/// Queues getrf; the pivots lie in context().pivots.
template <class T>
void queueGetrf(int m, int n, T* a, int lda)
{
    int elements = 0;
    solverCall(select<T>(cusolverDnSgetrf_bufferSize, nullptr, cusolverDnCgetrf_bufferSize, nullptr), m, n, a, lda,
               &elements);
    T* const workspace = static_cast<T*>(context().workspace(std::size_t(elements) * sizeof(T)));
    solverCall(select<T>(cusolverDnSgetrf, nullptr, cusolverDnCgetrf, nullptr), m, n, a, lda, workspace,
               context().pivots(std::size_t(std::min(m, n))), context().info());
}

} // namespace

template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc)
{
    blasCall(select<T>(cublasSgemm, cublasDgemm, cublasCgemm, cublasZgemm), operation(transa), operation(transb), m, n,
             k, &alpha, a, lda, b, ldb, &beta, c, ldc);
    synchronize();
}

template <class T>
void trsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb)
{
    blasCall(select<T>(cublasStrsm, cublasDtrsm, cublasCtrsm, cublasZtrsm), sideMode(side), fill(uplo),
             operation(transa), diag == 'U' ? CUBLAS_DIAG_UNIT : CUBLAS_DIAG_NON_UNIT, m, n, &alpha, a, lda, b, ldb);
    synchronize();
}

template <class T>
void trmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb)
{
    blasCall(select<T>(cublasStrmm, cublasDtrmm, cublasCtrmm, cublasZtrmm), sideMode(side), fill(uplo),
             operation(transa), diag == 'U' ? CUBLAS_DIAG_UNIT : CUBLAS_DIAG_NON_UNIT, m, n, &alpha, a, lda, b, ldb, b,
             ldb);
    synchronize();
}

template <bool hermitian, class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c, int ldc)
{
    const auto routine =
        select<hermitian, T>(cublasSsymm, cublasDsymm, cublasCsymm, cublasZsymm, cublasChemm, cublasZhemm);
    blasCall(routine, sideMode(side), fill(uplo), m, n, &alpha, a, lda, b, ldb, &beta, c, ldc);
    synchronize();
}

template <bool hermitian, class T>
void syrk(char uplo, char trans, int n, int k, Scalar<hermitian, T> alpha, const T* a, int lda,
          Scalar<hermitian, T> beta, T* c, int ldc)
{
    const auto routine =
        select<hermitian, T>(cublasSsyrk, cublasDsyrk, cublasCsyrk, cublasZsyrk, cublasCherk, cublasZherk);
    blasCall(routine, fill(uplo), operation(trans), n, k, &alpha, a, lda, &beta, c, ldc);
    synchronize();
}

template <bool hermitian, class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
           Scalar<hermitian, T> beta, T* c, int ldc)
{
    const auto routine =
        select<hermitian, T>(cublasSsyr2k, cublasDsyr2k, cublasCsyr2k, cublasZsyr2k, cublasCher2k, cublasZher2k);
    blasCall(routine, fill(uplo), operation(trans), n, k, &alpha, a, lda, b, ldb, &beta, c, ldc);
    synchronize();
}

template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    blasCall(select<T>(cublasSgemv, cublasDgemv, cublasCgemv, cublasZgemv), operation(trans), m, n, &alpha, a, lda, x,
             incx, &beta, y, incy);
    synchronize();
}

template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    blasCall(select<T>(cublasSsymv, cublasDsymv, cublasChemv, cublasZhemv), fill(uplo), n, &alpha, a, lda, x, incx,
             &beta, y, incy);
    synchronize();
}

template <class T>
void getrf(int m, int n, T* a, int lda)
{
    queueGetrf(m, n, a, lda);
    synchronize();
    context().checkInfo();
}

template <class T>
void gesv(int n, int nrhs, T* a, int lda, T* b, int ldb)
{
    queueGetrf(n, n, a, lda);
    solverCall(select<T>(cusolverDnSgetrs, nullptr, cusolverDnCgetrs, nullptr), CUBLAS_OP_N, n, nrhs, a, lda,
               context().pivots(std::size_t(n)), b, ldb, context().info());
    synchronize();
    context().checkInfo();
}

} // namespace tarn::bench::reference

#include "reference_instances.h"
