// Orthogonal factorisations, multiplication by Q, generation of Q, and least squares. S and C; all arrays are device
// addresses, matrices column-major in LAPACK's layouts.
//
// Failures are raised: InfoException with tarnArgumentError (minus the one-based position of the first bad argument,
// before anything is touched) or tarnDataError, and those of CUDA and memory. Letters are folded to upper case; "T" and
// "C" both mean the conjugate transpose. Everything runs on the default stream but the panel copies of geqrf.
#pragma once

namespace tarn::qr {

// Checks of the public arguments. Letters are folded in place.
void checkGeqrf(int m, int n, const void* a, int lda, const void* tau);
void checkGels(char& trans, int m, int n, int nrhs, const void* a, int lda, const void* b, int ldb);
void checkGglse(int m, int n, int p, const void* a, int lda, const void* b, int ldb, const void* c, const void* d,
                const void* x);

/// A = Q R, A m by n. R replaces the upper triangle; the k = min(m, n) reflectors of Q stand below the diagonal, their
/// scalars in tau. Panels are factorised on the CPU while the device updates the rest. 2 m n^2 - 2/3 n^3 flops for
/// m >= n, times 4 for complex.
template <class T>
void geqrf(int m, int n, T* a, int lda, T* tau);

/// A = L Q, A m by n: L in the lower triangle, the reflectors as rows to the right of the diagonal.
template <class T>
void gelqf(int m, int n, T* a, int lda, T* tau);

/// A = R Q, A m by n: R in the triangle that ends in the last row and column, the reflectors as rows to the left of it.
template <class T>
void gerqf(int m, int n, T* a, int lda, T* tau);

/// Generalised RQ factorisation B = (0 T) Q, A = Z R Q, with B p by n and A m by n.
template <class T>
void ggrqf(int p, int m, int n, T* b, int ldb, T* taub, T* a, int lda, T* taua);

/// C := op(Q) C (side "L") or C op(Q) (side "R"), C m by n, with Q the product of the k reflectors of geqrf in A, nq by
/// k; nq is m for "L" and n for "R". tau is left as it was. 4 m n k - 2 n k^2 flops for side "L".
template <class T>
void ormqr(char side, char trans, int m, int n, int k, const T* a, int lda, T* tau, T* c, int ldc);

/// As ormqr, with the reflectors of gelqf in A, k by nq.
template <class T>
void ormlq(char side, char trans, int m, int n, int k, const T* a, int lda, T* tau, T* c, int ldc);

/// As ormqr, with the reflectors of gerqf in A, k by nq.
template <class T>
void ormrq(char side, char trans, int m, int n, int k, const T* a, int lda, T* tau, T* c, int ldc);

/// The first n columns of Q, m by n, n <= m, over the k reflectors of geqrf in the first columns of A.
template <class T>
void orgqr(int m, int n, int k, T* a, int lda, T* tau);

/// The first m rows of Q, m by n, m <= n, over the k reflectors of gelqf in the first rows of A.
template <class T>
void orglq(int m, int n, int k, T* a, int lda, T* tau);

/// Q (vect "Q") or P^H (vect "P") of a bidiagonal reduction, m by n, over its reflectors in A. k is the number of
/// columns of the reduced matrix for "Q", of its rows for "P".
template <class T>
void orgbr(char vect, int m, int n, int k, T* a, int lda, T* tau);

/// C := H C (trans "N", side "L"), H^H C, C H or C H^H with the block reflector H = I - V T V^H of k reflectors. V
/// holds them as columns (storev "C") or rows ("R"), in forward ("F") or backward ("B") order; its unit triangle is not
/// read. T is k by k. Nothing waits on the host. 4 m n k flops about.
template <class T>
void larfb(char side, char trans, char direct, char storev, int m, int n, int k, const T* v, int ldv, const T* t,
           int ldt, T* c, int ldc);

/// Solves op(A) X = B, A triangular of order n, X in place of B, n by nrhs. A zero on the diagonal, unless that counts
/// as ones (diag "U"), raises a data error with its index, before B is touched.
template <class T>
void trtrs(char uplo, char trans, char diag, int n, int nrhs, const T* a, int lda, T* b, int ldb);

/// Least squares or minimum norm solution of op(A) X = B, A m by n of full rank, B max(m, n) by nrhs.
template <class T>
void gels(char trans, int m, int n, int nrhs, T* a, int lda, T* b, int ldb);

/// Minimises norm2(c - A x) subject to B x = d, with A m by n, B p by n, p <= n <= m + p.
template <class T>
void gglse(int m, int n, int p, T* a, int lda, T* b, int ldb, T* c, T* d, T* x);

} // namespace tarn::qr
