// LU factorisation with partial pivoting, and the solve on top of it. S and C; all arrays are device addresses.
// Failures are raised: InfoException with tarnArgumentError or tarnDataError, and those of CUDA and memory.
#pragma once

namespace tarn::lu {

/// Checks of getrf and gesv on the public arguments: minus the position of the first bad one.
void checkGetrf(int m, int n, const void* a, int lda, const int* ipiv);
void checkGesv(int n, int nrhs, const void* a, int lda, const int* ipiv, const void* b, int ldb);

/// A = P L U in LAPACK's layout; ipiv gets min(m, n) one-based pivots. Panels are factorised on the CPU while the
/// device updates the rest. Square matrices of order 513 and more are worked on in transposed storage. A zero pivot
/// raises a data error with the index of the first one after the factorisation has been completed.
template <class T>
void getrf(int m, int n, T* a, int lda, int* ipiv);

/// Solves A X = B with the factors of getrf; X replaces B, n by nrhs. Only trans "N" is served.
template <class T>
void getrs(char trans, int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb);

/// Factorises A and solves A X = B. After a data error B is unchanged.
template <class T>
void gesv(int n, int nrhs, T* a, int lda, int* ipiv, T* b, int ldb);

} // namespace tarn::lu
