// Launch wrappers of the device modules. They queue on the default stream and return without waiting; a failed launch
// shows at the end of the routine. Matrices are device addresses, column-major; sizes count elements. Checks raise
// tarnArgumentError with minus the one-based position in the argument order that the wrapper's comment gives.
#pragma once

#include <cstdint>

namespace tarn::kernel {

/// B := A^T, A m by n, B n by m; they must not overlap. Positions of a bad argument: m, n, A, lda, B, ldb. S C.
template <class T>
void Transpose(T* B, int ldb, const T* A, int lda, int m, int n);

/// B := A^H, as Transpose. S C.
template <class T>
void ConjugateTranspose(T* B, int ldb, const T* A, int lda, int m, int n);

/// A := A^T in place, A n by n. Positions: n, A, lda. S C.
template <class T>
void TransposeInplace(int n, T* A, int lda);

/// Applies the interchanges k1 to k2 (one-based, inclusive, in forward order) to n columns of A: row k is exchanged with
/// row ipiv[k - 1]. Rows count from one at A. ipiv is host memory, read before the wrapper returns, so that no pivot
/// goes through device memory. incx is not used. Positions: n, A, lda, k1, k2, ipiv; nothing is checked for n = 0. S C.
template <class T>
void LASWP(int n, T* A, int lda, int k1, int k2, const int* ipiv, int incx);

/// As LASWP, with the columns of a matrix of n rows exchanged. S C.
template <class T>
void LASWPCOL(int n, T* A, int lda, int k1, int k2, const int* ipiv, int incx);

/// y := alpha op(A) x + beta y, A m by n. By the library's own kernel for trans "T" and "C" with positive increments, else
/// by cuBLAS. y is left alone if m or n is 0. Positions: those of the public gemv (checkGemv). S D C Z.
template <class T>
void gemv(char trans, int m, int n, T alpha, const T* A, int lda, const T* x, int incx, T beta, T* y, int incy);

/// Elements of the workspace of symv: a row of n for each 32 rows of A.
inline std::int64_t symvWorkspace(int n) { return (std::int64_t(n) + 31) / 32 * n; }

/// y := alpha A x + beta y, A symmetric (real T) or Hermitian of order n > 0, of which the triangle uplo is read;
/// increments positive. Without a workspace partial sums meet in y by atomic additions, so that the last bits may vary
/// from run to run; with `work`, symvWorkspace(n) elements, the result is reproducible. Checks nothing. S D C Z.
template <class T>
void symv(char uplo, int n, T alpha, const T* A, int lda, const T* x, int incx, T beta, T* y, int incy, T* work);

} // namespace tarn::kernel
