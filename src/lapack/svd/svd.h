// The singular value decomposition and its parts. S and C; all arrays are device addresses, matrices column-major in
// LAPACK's layouts. Failures are raised as in qr.h.
#pragma once

#include <tarndev/Complex>

namespace tarn::svd {

/// Check of the public arguments. Letters are folded in place.
void checkGesvd(char& jobu, char& jobvt, int m, int n, const void* a, int lda, const void* s, const void* u, int ldu,
                const void* vt, int ldvt);

/// A = Q B P^H with B real and bidiagonal, upper for m >= n and lower otherwise; A is m by n with m, n >= 1. d and e
/// get the diagonal (k = min(m, n) elements) and the off-diagonal (k - 1) of B, which also replace those of A; the
/// reflectors stand in the rest of A, their scalars in tauq and taup (k each). Checks nothing. 4 m n^2 - 4/3 n^3 flops
/// for m >= n, times 4 for complex; half of them in products of the trailing matrix with a vector, on the device.
template <class T>
void gebrd(int m, int n, T* a, int lda, Real<T>* d, Real<T>* e, T* tauq, T* taup);

/// B = Q S P^T for a bidiagonal B of order n, diagonal d and off-diagonal e, upper or lower by uplo: d becomes S in
/// descending order, vt := P^T vt (n by ncvt), u := u Q (nru by n). Implicit zero-shift QR; the rotations of a sweep
/// are computed on the host and applied on the device by one launch per matrix. With ncvt = nru = 0 the values come
/// from the CPU LAPACK's qd iteration. ncc must be 0: a third matrix c is not served (FeatNotImplException). If the
/// iteration does not converge, a data error tells how many elements of e are not zero; the arrays then hold the state
/// reached, with d sorted but not made positive. A B with NaNs or infinities ends so, or gives values that are not
/// finite.
template <class T>
void bdsqr(char uplo, int n, int ncvt, int nru, int ncc, Real<T>* d, Real<T>* e, T* vt, int ldvt, T* u, int ldu, T* c,
           int ldc);

/// A = U S V^H, A m by n, by the jobs "A", "S", "O" and "N" for u and vt; s gets min(m, n) values in descending order.
/// A is not scaled. A matrix whose longer side is at least 1.6 times the other is reduced to a triangle by QR or LQ
/// first. Scratch matrices come from the memory pool. After a data error the arrays hold what bdsqr left.
template <class T>
void gesvd(char jobu, char jobvt, int m, int n, T* a, int lda, Real<T>* s, T* u, int ldu, T* vt, int ldvt);

} // namespace tarn::svd
