// The seam to cuBLAS: one thin wrapper per routine, on device addresses, for the element types of its line below.
//
// A wrapper translates the LAPACK letters, takes the calling thread's handle and makes the call on the default stream.
// It checks nothing and waits for nothing. A letter that it does not know means side "L", uplo "L", trans "N", diag
// "N". The status that it returns need not be looked at: the thread's first failure is kept for the end of the routine.
// Matrices are column-major; sizes, leading dimensions and increments count elements.
#pragma once

#include <cublas_v2.h>

#include <tarndev/Complex>

namespace tarn::cublas {

/// C := alpha op(A) op(B) + beta C, op(A) m by k, op(B) k by n. S D C Z.
template <class T>
cublasStatus_t gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
                    T beta, T* c, int ldc);

/// op(A) X = alpha B or X op(A) = alpha B, A triangular, X in place of B, m by n. S D C Z.
template <class T>
cublasStatus_t trsm(char side, char uplo, char trans, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
                    int ldb);

/// B := alpha op(A) B or alpha B op(A), A triangular, B m by n. S D C Z.
template <class T>
cublasStatus_t trmm(char side, char uplo, char trans, char diag, int m, int n, T alpha, const T* a, int lda, T* b,
                    int ldb);

/// C := alpha A B + beta C or alpha B A + beta C, A symmetric, C m by n. S D C Z.
template <class T>
cublasStatus_t symm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
                    int ldc);

/// As symm, A Hermitian. C Z.
template <class T>
cublasStatus_t hemm(char side, char uplo, int m, int n, T alpha, const T* a, int lda, const T* b, int ldb, T beta, T* c,
                    int ldc);

/// C := alpha A A^T + beta C or alpha A^T A + beta C, one triangle of C of order n. S D C Z.
template <class T>
cublasStatus_t syrk(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, T beta, T* c, int ldc);

/// C := alpha A A^H + beta C or alpha A^H A + beta C, one triangle of C of order n. C Z.
template <class T>
cublasStatus_t herk(char uplo, char trans, int n, int k, Real<T> alpha, const T* a, int lda, Real<T> beta, T* c,
                    int ldc);

/// C := alpha A B^T + alpha B A^T + beta C or alpha A^T B + alpha B^T A + beta C, one triangle. S D C Z.
template <class T>
cublasStatus_t syr2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
                     T* c, int ldc);

/// C := alpha A B^H + conj(alpha) B A^H + beta C or alpha A^H B + conj(alpha) B^H A + beta C, one triangle. C Z.
template <class T>
cublasStatus_t her2k(char uplo, char trans, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb,
                     Real<T> beta, T* c, int ldc);

/// y := alpha op(A) x + beta y, A m by n. S D C Z.
template <class T>
cublasStatus_t gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y,
                    int incy);

/// y := alpha A x + beta y, A symmetric of order n. S D.
template <class T>
cublasStatus_t symv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);

/// As symv, A Hermitian. C Z.
template <class T>
cublasStatus_t hemv(char uplo, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);

/// x := op(A) x, A triangular of order n. S C.
template <class T>
cublasStatus_t trmv(char uplo, char trans, char diag, int n, const T* a, int lda, T* x, int incx);

/// y := alpha x + y. S C.
template <class T>
cublasStatus_t axpy(int n, T alpha, const T* x, int incx, T* y, int incy);

/// y := x. S C.
template <class T>
cublasStatus_t copy(int n, const T* x, int incx, T* y, int incy);

/// Exchanges x and y. S C.
template <class T>
cublasStatus_t swap(int n, T* x, int incx, T* y, int incy);

/// x := alpha x. S.
cublasStatus_t scal(int n, float alpha, float* x, int incx);

/// x := alpha x with a real alpha. C.
cublasStatus_t csscal(int n, float alpha, Complex<float>* x, int incx);

/// (x, y) := (c x + s y, c y - conj(s) x). S C.
template <class T>
cublasStatus_t rot(int n, T* x, int incx, T* y, int incy, Real<T> c, T s);

} // namespace tarn::cublas
