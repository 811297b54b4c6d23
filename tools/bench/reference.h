// The libraries that the benchmark measures against: the CPU BLAS and LAPACK, or cuBLAS and cuSOLVER in a CUDA build.
#pragma once

#include "../elements.h"

#include <type_traits>

namespace tarn::bench::reference {

/// True if the arrays of the calls below are device addresses.
extern const bool onDevice;

/// Names of the libraries.
extern const char* const blas;
extern const char* const lapack;

/// The type of a factor that is real in the Hermitian routines.
template <bool hermitian, class T>
using Scalar = std::conditional_t<hermitian, tool::Real<T>, T>;

// Each returns when the result is there, and raises tool::Failure if the library refuses. Pivots stay inside.

template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc);

template <class T>
void trsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb);

template <class T>
void trmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb);

/// symm, or hemm if hermitian.
template <bool hermitian, class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c, int ldc);

/// syrk, or herk if hermitian.
template <bool hermitian, class T>
void syrk(char uplo, char trans, int n, int k, Scalar<hermitian, T> alpha, const T* a, int lda,
          Scalar<hermitian, T> beta, T* c, int ldc);

/// syr2k, or her2k if hermitian.
template <bool hermitian, class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
           Scalar<hermitian, T> beta, T* c, int ldc);

template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);

/// symv for real T, hemv for complex T.
template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);

template <class T>
void getrf(int m, int n, T* a, int lda);

template <class T>
void gesv(int n, int nrhs, T* a, int lda, T* b, int ldb);

template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau);

/// Least squares with A of full rank, m >= n.
template <class T>
void gels(int m, int n, int nrhs, T* a, int lda, T* b, int ldb);

/// cuSOLVER has no such routine: there it is the null space method, of its QR factorisations.
template <class T>
void gglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x);

/// m >= n.
template <class T>
void gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, tool::Real<T>* s, T* u, int ldu, T* vt, int ldvt);

} // namespace tarn::bench::reference
