// The BLAS of the library's algorithms, on device addresses, for S, D, C and Z; the exported device forms run it.
//
// Except gemm, each routine first makes the argument check of its public form (checks.h), whose positions a raised
// tarnArgumentError carries. Everything is queued on the default stream and, but for symv, nothing waits.
#pragma once

#include <tarndev/Complex>

namespace tarn::blas {

/// C := alpha op(A) op(B) + beta C. Checks nothing.
template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc);

/// op(A) X = alpha B or X op(A) = alpha B, A triangular, X in place of B, m by n. Recursive if m and n are at least
/// 512.
template <class T>
void trsm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb);

/// B := alpha op(A) B or alpha B op(A), A triangular, in place, B m by n. Recursive if m or n is at least 1024.
template <class T>
void trmm(char side, char uplo, char transa, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb);

/// C := alpha A B + beta C or alpha B A + beta C, A symmetric, C m by n. Recursive if m or n is at least 1024.
template <class T>
void symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c, int ldc);

/// As symm, A Hermitian. Recursive if m and n are at least 1024. C Z.
template <class T>
void hemm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c, int ldc);

/// One triangle of C := alpha A A^T + beta C (trans "N") or alpha A^T A + beta C, C of order n. Recursive if n and k
/// are at least 1024 and the device is of capability 1.x.
template <class T>
void syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c, int ldc);

/// One triangle of C := alpha A A^H + beta C (trans "N") or alpha A^H A + beta C, C of order n. Recursive if n and k
/// are at least 1024. C Z.
template <class T>
void herk(char uplo, char trans, int n, int k, Real<T> alpha, const T* a, int lda, Real<T> beta, T* c, int ldc);

/// One triangle of C := alpha A B^T + alpha B A^T + beta C (trans "N") or alpha A^T B + alpha B^T A + beta C. Recursive
/// if n and k are at least 1024.
template <class T>
void syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
           int ldc);

/// One triangle of C := alpha A B^H + conj(alpha) B A^H + beta C (trans "N") or alpha A^H B + conj(alpha) B^H A + beta
/// C. Recursive if n and k are at least 1024. C Z.
template <class T>
void her2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, Real<T> beta, T* c,
           int ldc);

/// y := alpha A x + beta y, A symmetric of order n. From order 1200 on by the library's own kernel, which on a device
/// of capability 1.x takes n ceil(n / 32) elements of the memory pool; then it waits for the device. Raises
/// FeatNotImplException for an increment below 1. S D.
template <class T>
void symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);

/// As symv, A Hermitian. C Z.
template <class T>
void hemv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);

} // namespace tarn::blas
