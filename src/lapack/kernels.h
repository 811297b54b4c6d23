// Launch wrappers of the device modules. They queue on the default stream and return without waiting; a failed launch
// shows at the end of the routine. Matrices are device addresses, column-major; sizes count elements. Checks raise
// tarnArgumentError with minus the one-based position in the argument order that the wrapper's comment gives. S D C Z
// name the element types for which a wrapper exists.
#pragma once

#include <cstdint>
#include <tarndev/Complex>

namespace tarn::kernel {

/// B := A^T, A m by n, B n by m; they must not overlap. Positions of a bad argument: m, n, A, lda, B, ldb. S D C Z.
template <class T>
void Transpose(T* B, int ldb, const T* A, int lda, int m, int n);

/// B := A^H, as Transpose. S D C Z.
template <class T>
void ConjugateTranspose(T* B, int ldb, const T* A, int lda, int m, int n);

/// A := A^T in place, A n by n. Positions: n, A, lda. S D C Z.
template <class T>
void TransposeInplace(int n, T* A, int lda);

/// Applies the interchanges k1 to k2 (one-based, inclusive, in forward order) to n columns of A: row k is exchanged
/// with row ipiv[k - 1]. Rows count from one at A. ipiv is host memory, read before the wrapper returns, so that no
/// pivot goes through device memory. incx is not used. Positions: n, A, lda, k1, k2, ipiv; nothing is checked for n =
/// 0. S D C Z.
template <class T>
void LASWP(int n, T* A, int lda, int k1, int k2, const int* ipiv, int incx);

/// As LASWP, with the columns of a matrix of n rows exchanged. S D C Z.
template <class T>
void LASWPCOL(int n, T* A, int lda, int k1, int k2, const int* ipiv, int incx);

/// dst[k incDst] := src[k incSrc] for k below n, with zero imaginary parts. Nothing if n or an increment is not
/// positive. S D C Z.
template <class T>
void CopyVectorRealToComplex(int n, T* dst, int incDst, const Real<T>* src, int incSrc);

/// dst := src, m by n. Nothing if m or n is not positive. S D C Z.
template <class T>
void CopyMatrix(int m, int n, T* dst, int ldd, const T* src, int lds);

/// *p := 1. S D C Z.
template <class T>
void SetOne(T* p);

/// x := 0, n elements incx apart. Nothing if n or incx is not positive. S D C Z.
template <class T>
void SetVectorZero(int n, T* x, int incx);

/// A := 0, m by n. Nothing if m, n or lda is not positive. S D C Z.
template <class T>
void SetMatrixZero(int m, int n, T* A, int lda);

/// Keeps the triangle of A, m by n, that uplo names ("U" upper, else lower) and writes 0 into the opposite one. The
/// diagonal is kept, or becomes 1 if diag is "U" or "Z". Nothing if m or n is not positive. S D C Z.
template <class T>
void MakeTriangular(char uplo, char diag, int m, int n, T* A, int lda);

/// B := A, m by n: "L" on and below the diagonal, "U" on and above it, "A" or "F" all. Positions: uplo, m, n, A, lda,
/// B, ldb; the last four are not checked if m or n is 0. S D C Z.
template <class T>
void LACPY(char uplo, int m, int n, const T* A, int lda, T* B, int ldb);

/// A := beta on the diagonal and alpha off it, m by n; with uplo "L" only below the diagonal, with "U" only above it,
/// with "A" or "F" on both sides. Positions: uplo, m, n, alpha, beta, A, lda; the last two are not checked if m or n is
/// 0. S D C Z.
template <class T>
void LASET(char uplo, int m, int n, T alpha, T beta, T* A, int lda);

/// A := conj(A), m by n. Positions: m, n, A, lda; A is not checked if m or n is 0. C Z.
template <class T>
void ConjugateMatrix(int m, int n, T* A, int lda);

/// op(A) := op(A) - op(B), m by n. With trans "T" or "C" a matrix is stored by its conjugate transpose, n by m; the
/// result replaces A element by element, so that a transposed A receives the plain transpose of the result. Nothing if
/// m or n is not positive. S D C Z.
template <class T>
void SubtractMatrix(char transa, char transb, int m, int n, T* A, int lda, const T* B, int ldb);

/// y := alpha op(A) x + beta y, A m by n. By the library's own kernel for trans "T" and "C" with positive increments,
/// else by cuBLAS. y is left alone if m or n is 0. Positions: those of the public gemv (checkGemv). S D C Z.
template <class T>
void gemv(char trans, int m, int n, T alpha, const T* A, int lda, const T* x, int incx, T beta, T* y, int incy);

/// Elements of the workspace of symv: a row of n for each 32 rows of A.
inline std::int64_t symvWorkspace(int n) { return (std::int64_t(n) + 31) / 32 * n; }

/// y := alpha A x + beta y, A symmetric (real T) or Hermitian of order n > 0, of which the triangle uplo is read;
/// increments positive. Without a workspace partial sums meet in y by atomic additions, so that the last bits may vary
/// from run to run; with `work`, symvWorkspace(n) elements, the result is reproducible. Checks nothing. S D C Z.
template <class T>
void symv(char uplo, int n, T alpha, const T* A, int lda, const T* x, int incx, T beta, T* y, int incy, T* work);

/// Applies the plane rotations (c[j], s[j]) of the planes j and j + 1 to A, m by n, from side "L" (rows, m - 1
/// rotations) or "R" (columns, n - 1), in the order of j for direct "F" and against it for "B", as LAPACK's lasr with
/// pivot "V". c and s are device arrays. Pivots "T" and "B" pass the checks and do nothing. Positions: side, pivot,
/// direct, m, n, c, s, A, lda; from m on not checked if m or n is 0 or 1. 6 flops per rotation and line, 12 for complex
/// A. S D C Z.
template <class T>
void LASR(char side, char pivot, char direct, int m, int n, const Real<T>* c, const Real<T>* s, T* A, int lda);

/// Columns first to first + order - 1 of a matrix, counted from zero, that a sweep of rotations takes in.
struct SweepColumns
{
    int first, order;
};

/// Sweeps that go through a matrix in one pass.
inline constexpr int sweepsInPass = 8;

/// Sweeps of rotations, one after the other, in one pass over A: what LASR does with side "R" on m rows of the columns
/// of each sweep, bit by bit. Sweep k has its rotations at c + k stride and s + k stride, device arrays; all go in the
/// same direction. Each element is read and written once for all sweeps. Checks nothing. S C.
template <class T>
void SWEEPS(char direct, int m, const SweepColumns (&sweeps)[sweepsInPass], const Real<T>* c, const Real<T>* s,
            std::int64_t stride, T* A, int lda);

/// Shifts the reflectors of a square bidiagonal reduction in A, of order n: "L", rows from 1 on move one column to the
/// right; "U", the part above the diagonal moves one row down in columns from 2 on. Nothing if n is below 2. S D C Z.
template <class T>
void ORGBR_COPY(char uplo, int n, T* A, int lda);

// What follows serves no routine of the library: the rest of the device modules, by wrappers of their own.

/// A := A^H in place, as TransposeInplace. S D C Z.
template <class T>
void ConjugateTransposeInplace(int n, T* A, int lda);

/// *dst := *src; between real and complex with a zero imaginary part, or without it. S D C Z, CopyComplexToReal C Z.
template <class T>
void CopySingle(T* dst, const T* src);
template <class T>
void CopyComplexToReal(Real<T>* dst, const T* src);
template <class T>
void CopyRealToComplex(T* dst, const Real<T>* src);

/// dst[k incDst] := src[k incSrc] for k below n. Nothing if n or an increment is not positive. S D C Z.
template <class T>
void CopyVector(int n, T* dst, int incDst, const T* src, int incSrc);

/// As SetOne, SetVectorZero, SetMatrixZero and MakeTriangular, for the values V = 0 and 1. d: value of the diagonal if
/// unit. S D C Z.
template <int V, class T>
void SetSingle(T* p);
template <int V, class T>
void SetVector(int n, T* x, int incx);
template <int V, class T>
void SetMatrix(int m, int n, T* A, int lda);
template <int V, class T>
void SetTriangularMatrix(bool upper, bool unit, int m, int n, T* A, int lda, T d);

/// x := conj(x), n elements. Nothing happens to real elements. S D C Z.
template <class T>
void ConjugateVector(int n, T* x, int incx);

/// Conjugates a triangle of A, m by n, with or without its diagonal. S D C Z.
template <bool upper, bool withDiagonal, class T>
void ConjugateMatrixTriangular(int m, int n, T* A, int lda);

/// C := alpha A + beta B, m by n, with real alpha and beta. transa "T": A and C are stored transposed; transb "T": B
/// is. Nothing is conjugated. S D C Z.
template <class T>
void MADD(char transa, char transb, int m, int n, Real<T> alpha, const T* A, int lda, Real<T> beta, const T* B, int ldb,
          T* C, int ldc);

/// dst := src, m by n, in the other precision, rounded to nearest. Narrowing sets *overflow, an int in device memory,
/// to 1 if a result is infinite or NaN; nothing clears it, and widening does not touch it. Between S and D, and C and
/// Z.
template <class Src, class Dst>
void PrecisionConvert(int m, int n, const Src* src, int lds, Dst* dst, int ldd, int* overflow);

/// As PrecisionConvert, for a triangle with its diagonal of a matrix of order n.
template <class Src, class Dst>
void PrecisionConvertTriangular(bool upper, int n, const Src* src, int lds, Dst* dst, int ldd, int* overflow);

/// *result := a norm of A, m by n, not empty: "M" the largest magnitude, "O" the largest column sum of magnitudes, "I"
/// the largest row sum, "F" the square of the Frobenius norm, whose root no kernel takes. Magnitudes of complex
/// elements do not care for overflow. work: langeWorkspace elements; it begins with the partial results of the blocks.
/// S D C Z.
template <class T>
void LANGE(char norm, int m, int n, const T* A, int lda, Real<T>* work, Real<T>* result);

/// Elements of the workspace of LANGE.
std::int64_t langeWorkspace(char norm, int m, int n);

/// *result := the one-norm of A, symmetric (real T) or Hermitian of order n > 0, of which the triangle uplo ("U" upper,
/// else lower) is read. work: lanheWorkspace elements. S D C Z.
template <class T>
void LANHE(char uplo, int n, const T* A, int lda, Real<T>* work, Real<T>* result);

/// Elements of the workspace of LANHE.
std::int64_t lanheWorkspace(int n);

} // namespace tarn::kernel
