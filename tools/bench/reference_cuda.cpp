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
    void* factors(std::size_t bytes) { return reserve(factors_, factorBytes_, bytes); }

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
    DeviceArray<char> workspace_{0}, factors_{0};
    std::size_t pivotCount_ = 0, workspaceBytes_ = 0, factorBytes_ = 0;
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

/// Queues geqrf.
template <class T>
void queueGeqrf(int m, int n, T* a, int lda, T* tau)
{
    int elements = 0;
    solverCall(select<T>(cusolverDnSgeqrf_bufferSize, nullptr, cusolverDnCgeqrf_bufferSize, nullptr), m, n, a, lda,
               &elements);
    T* const workspace = static_cast<T*>(context().workspace(std::size_t(elements) * sizeof(T)));
    solverCall(select<T>(cusolverDnSgeqrf, nullptr, cusolverDnCgeqrf, nullptr), m, n, a, lda, tau, workspace, elements,
               context().info());
}

/// Queues C := op(Q) C or C op(Q), C m by n, with the k reflectors of a geqrf in a; "C" is the adjoint.
template <class T>
void queueMultiplyByQ(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c, int ldc)
{
    const cublasOperation_t op = trans == 'N' ? CUBLAS_OP_N : tool::isComplex<T> ? CUBLAS_OP_C : CUBLAS_OP_T;
    int elements = 0;
    solverCall(select<T>(cusolverDnSormqr_bufferSize, nullptr, cusolverDnCunmqr_bufferSize, nullptr), sideMode(side),
               op, m, n, k, a, lda, tau, c, ldc, &elements);
    T* const workspace = static_cast<T*>(context().workspace(std::size_t(elements) * sizeof(T)));
    solverCall(select<T>(cusolverDnSormqr, nullptr, cusolverDnCunmqr, nullptr), sideMode(side), op, m, n, k, a, lda,
               tau, c, ldc, workspace, elements, context().info());
}

/// Queues B := op(R)^-1 B with the upper triangle R in a.
template <class T>
void queueSolve(char trans, int n, int nrhs, const T* a, int lda, T* b, int ldb)
{
    const T one = 1;
    blasCall(select<T>(cublasStrsm, nullptr, cublasCtrsm, nullptr), CUBLAS_SIDE_LEFT, CUBLAS_FILL_MODE_UPPER,
             operation(trans), CUBLAS_DIAG_NON_UNIT, n, nrhs, &one, a, lda, b, ldb);
}

/// Queues the solution of a least squares problem, which replaces the first n rows of B.
template <class T>
void queueGels(int m, int n, int nrhs, T* a, int lda, T* tau, T* b, int ldb)
{
    queueGeqrf(m, n, a, lda, tau);
    queueMultiplyByQ('L', 'C', m, nrhs, n, a, lda, tau, b, ldb);
    queueSolve('N', n, nrhs, a, lda, b, ldb);
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

template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau)
{
    queueGeqrf(m, n, a, lda, tau);
    synchronize();
    context().checkInfo();
}

template <class T>
void gels(int m, int n, int nrhs, T* a, int lda, T* b, int ldb)
{
    queueGels(m, n, nrhs, a, lda, static_cast<T*>(context().factors(std::size_t(n) * sizeof(T))), b, ldb);
    synchronize();
    context().checkInfo();
}

template <class T>
void gglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x)
{
    // B^H = Q R and x = Q (y1; y2): R^H y1 = d, and y2 from the least squares problem A Q (y1; y2) = c.
    const T zero = 0, one = 1, minusOne = -1;
    const std::size_t elements = std::size_t(n) * p;
    T* const q = static_cast<T*>(context().factors((elements + std::size_t(n)) * sizeof(T)));
    T *const tau = q + elements, *const a2 = a + std::size_t(lda) * p;
    if (p > 0) {
        blasCall(select<T>(cublasSgeam, nullptr, cublasCgeam, nullptr), CUBLAS_OP_C, CUBLAS_OP_N, n, p, &one, b, ldb,
                 &zero, q, n, q, n);
        queueGeqrf(n, p, q, n, tau);
        queueSolve('C', p, 1, q, n, d, p);
        queueMultiplyByQ('R', 'N', m, n, p, q, n, tau, a, lda);
        blasCall(select<T>(cublasSgemv, nullptr, cublasCgemv, nullptr), CUBLAS_OP_N, m, p, &minusOne, a, lda, d, 1,
                 &one, c, 1);
        blasCall(select<T>(cublasScopy, nullptr, cublasCcopy, nullptr), p, d, 1, x, 1);
    }
    if (n > p) {
        queueGels(m, n - p, 1, a2, lda, tau + p, c, m);
        blasCall(select<T>(cublasScopy, nullptr, cublasCcopy, nullptr), n - p, c, 1, x + p, 1);
    }
    if (p > 0)
        queueMultiplyByQ('L', 'N', n, 1, p, q, n, tau, x, n);
    synchronize();
    context().checkInfo();
}

template <class T>
void gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, tool::Real<T>* s, T* u, int ldu, T* vt, int ldvt)
{
    int elements = 0;
    solverCall(select<T>(cusolverDnSgesvd_bufferSize, nullptr, cusolverDnCgesvd_bufferSize, nullptr), m, n, &elements);
    T* const workspace = static_cast<T*>(context().workspace(std::size_t(elements) * sizeof(T)));
    solverCall(select<T>(cusolverDnSgesvd, nullptr, cusolverDnCgesvd, nullptr), jobu, jobvt, m, n, a, lda, s, u, ldu,
               vt, ldvt, workspace, elements, static_cast<tool::Real<T>*>(nullptr), context().info());
    synchronize();
    context().checkInfo();
}

} // namespace tarn::bench::reference

#include "reference_instances.h"
