// The seam to the CPU LAPACK and BLAS: one wrapper per routine, on host memory, for the element types of its line.
//
// Arguments are those of the standard routine without workspace and info, by value. The wrapper owns the workspace. A
// positive info leaves as a data error, a negative one as tarnRuntimeError (checkInfo); the output is complete then.
#pragma once

#include <device_glue.h>
#include <tarndev/Complex>

#include <optional>

namespace tarn::cpu {

/// The turn on the threads of the CPU BLAS, for work of that many operations: idle ones spin, so that the calls of
/// several callers at a time would each take many times as long as one after the other. Small work uses one thread and
/// needs no turn. The wrappers below take it by themselves; who calls several of them in a row may hold it around all.
class Turn
{
public:
    explicit Turn(double flops);
    ~Turn();
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

private:
    std::optional<platform::CpuTurn> turn_;
};

/// A = P L U, A m by n; ipiv gets min(m, n) one-based pivots. A data error names the first zero pivot. S C.
template <class T>
void getrf(int m, int n, T* a, int lda, int* ipiv);

/// Exchanges rows k and ipiv[k - 1] of the n columns of A, for k from k1 to k2, one-based. S C.
template <class T>
void laswp(int n, T* a, int lda, int k1, int k2, const int* ipiv);

/// A = Q R, unblocked. S C.
template <class T>
void geqr2(int m, int n, T* a, int lda, T* tau);

/// A = L Q. S C.
template <class T>
void gelqf(int m, int n, T* a, int lda, T* tau);

/// A = R Q. S C.
template <class T>
void gerqf(int m, int n, T* a, int lda, T* tau);

/// Unblocked reduction to bidiagonal form, A = Q B P^H. S C.
template <class T>
void gebd2(int m, int n, T* a, int lda, Real<T>* d, Real<T>* e, T* tauq, T* taup);

/// The m by n matrix Q of k reflectors as of geqrf (C: ungqr). S C.
template <class T>
void orgqr(int m, int n, int k, T* a, int lda, const T* tau);

/// The m by n matrix Q of k reflectors as of gelqf (C: unglq). S C.
template <class T>
void orglq(int m, int n, int k, T* a, int lda, const T* tau);

/// C := op(Q) C or C op(Q), Q as of geqrf; "T" and "C" both mean Q^H. S C.
template <class T>
void ormqr(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c, int ldc);

/// As ormqr, Q as of gelqf. S C.
template <class T>
void ormlq(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c, int ldc);

/// As ormqr, Q as of gerqf. S C.
template <class T>
void ormrq(char side, char trans, int m, int n, int k, const T* a, int lda, const T* tau, T* c, int ldc);

/// An elementary reflector H with H^H (alpha, x) = (beta, 0). S C.
template <class T>
void larfg(int n, T* alpha, T* x, int incx, T* tau);

/// The triangular factor T of a block reflector. S C.
template <class T>
void larft(char direct, char storev, int n, int k, const T* v, int ldv, const T* tau, T* t, int ldt);

/// C := H C, H^H C, C H or C H^H, H = I - V T V^H with k reflectors. S C.
template <class T>
void larfb(char side, char trans, char direct, char storev, int m, int n, int k, const T* v, int ldv, const T* t,
           int ldt, T* c, int ldc);

/// Conjugates x. C.
void lacgv(int n, Complex<float>* x, int incx);

/// A plane rotation with (cs, sn; -sn, cs) (f, g) = (r, 0). S.
void lartg(float f, float g, float* cs, float* sn, float* r);

/// Singular values of the 2 by 2 triangle (f, g; 0, h). S.
void las2(float f, float g, float h, float* ssmin, float* ssmax);

/// Singular value decomposition of the 2 by 2 triangle (f, g; 0, h). S.
void lasv2(float f, float g, float h, float* ssmin, float* ssmax, float* snr, float* csr, float* snl, float* csl);

/// Singular values of the bidiagonal matrix (d, e) of order n, into d. S.
void lasq1(int n, float* d, float* e);

/// C := alpha op(A) op(B) + beta C; "T" and "C" both mean the conjugate transpose. S C.
template <class T>
void gemm(char transa, char transb, int m, int n, int k, T alpha, const T* a, int lda, const T* b, int ldb, T beta,
          T* c, int ldc);

/// B := alpha op(A) B or alpha B op(A), A triangular; "T" and "C" both mean A^H. S C.
template <class T>
void trmm(char side, char uplo, char trans, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb);

/// Solves op(A) X = alpha B or X op(A) = alpha B for X, which replaces B, A triangular; "T" and "C" both mean A^H. S C.
template <class T>
void trsm(char side, char uplo, char trans, char diag, int m, int n, T alpha, const T* a, int lda, T* b, int ldb);

/// y := alpha op(A) x + beta y; "T" and "C" both mean A^H. S C.
template <class T>
void gemv(char trans, int m, int n, T alpha, const T* a, int lda, const T* x, int incx, T beta, T* y, int incy);

/// y := alpha x + y. S C.
template <class T>
void axpy(int n, T alpha, const T* x, int incx, T* y, int incy);

/// y := x. S C.
template <class T>
void copy(int n, const T* x, int incx, T* y, int incy);

/// x := alpha x. S C.
template <class T>
void scal(int n, T alpha, T* x, int incx);

} // namespace tarn::cpu
