#include "../elements.h"
#include "../failure.h"
#include "../lapack.h"
#include "reference.h"

#include <algorithm>
#include <vector>

namespace tarn::bench::reference {

using namespace tool;

const bool onDevice = false;
const char* const blas = "CPU BLAS";
const char* const lapack = "CPU LAPACK";

namespace {

void checkInfo(int info)
{
    if (info != 0)
        throw Failure("the CPU LAPACK returned info " + std::to_string(info));
}

} // namespace

template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc)
{
    select<T>(sgemm_, dgemm_, cgemm_, zgemm_)(&transa, &transb, &m, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1,
                                              1);
}

template <class T>
void trsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb)
{
    select<T>(strsm_, dtrsm_, ctrsm_, ztrsm_)(&side, &uplo, &transa, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1,
                                              1);
}

template <class T>
void trmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb)
{
    select<T>(strmm_, dtrmm_, ctrmm_, ztrmm_)(&side, &uplo, &transa, &diag, &m, &n, &alpha, a, &lda, b, &ldb, 1, 1, 1,
                                              1);
}

template <bool hermitian, class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c, int ldc)
{
    const auto routine = select<hermitian, T>(ssymm_, dsymm_, csymm_, zsymm_, chemm_, zhemm_);
    routine(&side, &uplo, &m, &n, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1);
}

template <bool hermitian, class T>
void syrk(char uplo, char trans, int n, int k, Scalar<hermitian, T> alpha, const T* a, int lda,
          Scalar<hermitian, T> beta, T* c, int ldc)
{
    const auto routine = select<hermitian, T>(ssyrk_, dsyrk_, csyrk_, zsyrk_, cherk_, zherk_);
    routine(&uplo, &trans, &n, &k, &alpha, a, &lda, &beta, c, &ldc, 1, 1);
}

template <bool hermitian, class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
           Scalar<hermitian, T> beta, T* c, int ldc)
{
    const auto routine = select<hermitian, T>(ssyr2k_, dsyr2k_, csyr2k_, zsyr2k_, cher2k_, zher2k_);
    routine(&uplo, &trans, &n, &k, &alpha, a, &lda, b, &ldb, &beta, c, &ldc, 1, 1);
}

template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    select<T>(sgemv_, dgemv_, cgemv_, zgemv_)(&trans, &m, &n, &alpha, a, &lda, x, &incx, &beta, y, &incy, 1);
}

template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy)
{
    select<T>(ssymv_, dsymv_, chemv_, zhemv_)(&uplo, &n, &alpha, a, &lda, x, &incx, &beta, y, &incy, 1);
}

template <class T>
void getrf(int m, int n, T* a, int lda)
{
    std::vector<int> pivots(std::min(m, n));
    int info = 0;
    select<T>(sgetrf_, nullptr, cgetrf_, nullptr)(&m, &n, a, &lda, pivots.data(), &info);
    checkInfo(info);
}

template <class T>
void gesv(int n, int nrhs, T* a, int lda, T* b, int ldb)
{
    std::vector<int> pivots(n);
    int info = 0;
    select<T>(sgesv_, nullptr, cgesv_, nullptr)(&n, &nrhs, a, &lda, pivots.data(), b, &ldb, &info);
    checkInfo(info);
}

template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau)
{
    int info = 0;
    withWorkspace<T>([&](T* work, const int* lwork) {
        select<T>(sgeqrf_, nullptr, cgeqrf_, nullptr)(&m, &n, a, &lda, tau, work, lwork, &info);
    });
    checkInfo(info);
}

template <class T>
void gels(int m, int n, int nrhs, T* a, int lda, T* b, int ldb)
{
    int info = 0;
    withWorkspace<T>([&](T* work, const int* lwork) {
        select<T>(sgels_, nullptr, cgels_, nullptr)("N", &m, &n, &nrhs, a, &lda, b, &ldb, work, lwork, &info, 1);
    });
    checkInfo(info);
}

template <class T>
void gglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x)
{
    int info = 0;
    withWorkspace<T>([&](T* work, const int* lwork) {
        select<T>(sgglse_, nullptr, cgglse_, nullptr)(&m, &n, &p, a, &lda, b, &ldb, c, d, x, work, lwork, &info);
    });
    checkInfo(info);
}

template <class T>
void gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, Real<T>* s, T* u, int ldu, T* vt, int ldvt)
{
    int info = 0;
    std::vector<float> rotations(isComplex<T> ? 5 * std::size_t(n) : 0);
    withWorkspace<T>([&](T* work, const int* lwork) {
        if constexpr (isComplex<T>)
            cgesvd_(&jobu, &jobvt, &m, &n, a, &lda, s, u, &ldu, vt, &ldvt, work, lwork, rotations.data(), &info, 1, 1);
        else
            sgesvd_(&jobu, &jobvt, &m, &n, a, &lda, s, u, &ldu, vt, &ldvt, work, lwork, &info, 1, 1);
    });
    checkInfo(info);
}

} // namespace tarn::bench::reference

#include "reference_instances.h"
