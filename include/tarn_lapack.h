/** @file
 * tarn_lapack: dense linear algebra on an NVIDIA GPU behind LAPACK-shaped calls. */

/**
 * @defgroup conventions What holds for all routines
 * Layout of arrays, threads and streams, and the statuses that every routine can return.
 *
 * @details
 * Matrices are column-major with an explicit leading dimension; dimensions, leading dimensions and increments are
 * 32-bit signed integers counted in elements; pivots are one-based. Character options are single letters, upper or
 * lower case. Workspace is the library's own business.
 *
 * Each routine exists twice. `tarnSgesv` takes arrays in host memory, copies them to the device, and copies the results
 * back. `tarnDeviceSgesv` takes device addresses (`cudaMalloc`) and copies nothing but panels. The letter before the
 * routine's name is the element type: S `float`, D `double`, C complex `float`, Z complex `double`. The LAPACK routines
 * exist for S and C, the BLAS routines for all four. D and Z need a device of compute capability 1.3 or more.
 *
 * All routines are synchronous, run on the CUDA device that is current on the calling thread, and may be called from
 * any thread between tarnInitialize() and tarnShutdown(). Each returns a status and records it, with its detail,
 * for tarnGetLastStatus() and tarnGetErrorInfo(). Results are copied back to host memory when the status is
 * decided: a copy that fails then is not reported.
 *
 * Device forms run on the legacy default stream. They wait for work on ordinary streams, but not for streams made with
 * `cudaStreamNonBlocking`: synchronise those first. An error of a kernel that CUDA calls sticky, such as an illegal
 * address, makes every later call fail until the process ends.
 *
 * Every routine can return these statuses, and what its own description adds:
 *
 * - `tarnNotInitialized`: it was called before tarnInitialize(); the recorded info is left alone
 * - `tarnInsufficientComputeCapability`: a D or Z routine on a device without double precision
 * - `tarnArgumentError`: info -k, the k-th argument is wrong; no array was touched
 * - `tarnInsufficientMemory`: host or device memory ran out; arrays in host memory are unchanged
 * - `tarnBlasError`, `tarnRuntimeError`: info is the code of cuBLAS or CUDA; arrays in host memory are unchanged
 */
#ifndef TARN_LAPACK_H
#define TARN_LAPACK_H

#include "tarn_core.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup elements Elements and versions
 * The types of arguments and of version numbers.
 * @{
 */

typedef int32_t
    tarnVersion; /**< a version as a number; the library counts 14.0.0 as 14000, CUDA counts 13.0 as 13000 */

typedef float tarnFloat;   /**< element of the S routines */
typedef double tarnDouble; /**< element of the D routines */

/** Element of the C routines: the layout of C's `float _Complex` and of `std::complex<float>`. */
typedef struct tarnFloatComplex
{
    float real; /**< real part */
    float imag; /**< imaginary part */
} tarnFloatComplex;

/** Element of the Z routines: the layout of C's `double _Complex` and of `std::complex<double>`. */
typedef struct tarnDoubleComplex
{
    double real; /**< real part */
    double imag; /**< imaginary part */
} tarnDoubleComplex;

/** @name In device memory
 * @{ */
/** An element in device memory: a pointer to it is a device address, which the host must not follow. */
typedef tarnFloat tarnDeviceFloat;
typedef tarnDouble tarnDeviceDouble;
typedef tarnFloatComplex tarnDeviceFloatComplex;
typedef tarnDoubleComplex tarnDeviceDoubleComplex;
typedef int32_t tarnDeviceInt;
/** @} */

/**
 * @}
 * @defgroup lifecycle Initialise and shut down
 * Also what the library keeps between calls.
 * @{
 */

/**
 * Brings the library up for the calling thread: checks the CUDA runtime, driver and cuBLAS versions and that a device
 * is there, and starts cuBLAS. Further calls, from this or other threads, only register the thread.
 *
 * @retval tarnNoError              the library is up
 * @retval tarnInsufficientRuntime  CUDA or cuBLAS is older than 4.1, or the driver older than the runtime
 * @retval tarnNoHardware           no device is there
 * @retval tarnInsufficientMemory   host or device memory ran out
 * @retval tarnBlasError            info: the cuBLAS code
 * @retval tarnRuntimeError         info: the CUDA code
 */
TARN_API tarnStatus tarnInitialize(void);

/**
 * Takes the calling thread out; the last registered thread takes the library down and frees its device workspace.
 * No routine may be running in another thread then. Does nothing before tarnInitialize().
 */
TARN_API void tarnShutdown(void);

/** Gives idle device workspace, which the library keeps between calls, back to CUDA. */
TARN_API void tarnFreeBuffers(void);

/**
 * @}
 * @defgroup messages Versions and messages
 * These work before tarnInitialize().
 * @{
 */

/**
 * Version of this library.
 *
 * @return 14000
 */
TARN_API tarnVersion tarnGetVersion(void);

/**
 * Oldest CUDA that is served.
 *
 * @return 4010
 */
TARN_API tarnVersion tarnGetCudaMinimumVersion(void);

/**
 * CUDA runtime in use.
 *
 * @return its version, 0 if it cannot tell
 */
TARN_API tarnVersion tarnGetCudaRuntimeVersion(void);

/**
 * CUDA driver in use.
 *
 * @return its version, 0 if it cannot tell
 */
TARN_API tarnVersion tarnGetCudaDriverVersion(void);

/**
 * Oldest cuBLAS that is served.
 *
 * @return 4010
 */
TARN_API tarnVersion tarnGetCublasMinimumVersion(void);

/**
 * cuBLAS in use.
 *
 * @return its version, 0 if it cannot tell
 */
TARN_API tarnVersion tarnGetCublasRuntimeVersion(void);

/**
 * Text of a status. Records nothing.
 *
 * @param[in] e  the status
 * @return the text, in constant storage; "Invalid tarnStatus" for a value that is none
 */
TARN_API const char* tarnGetStatusString(tarnStatus e);

/**
 * Writes a message for a status and its info.
 *
 * @param[in] e        the status
 * @param[in] i        its info
 * @param[out] buf     the message, cut to bufsize bytes and always terminated
 * @param[in] bufsize  bytes of buf
 *
 * @retval tarnNoError        the message is there
 * @retval tarnArgumentError  info -1: e is no status, -3: buf is null, -4: bufsize is not positive
 * @retval tarnRuntimeError   info: a CUDA code that an earlier call has left behind
 */
TARN_API tarnStatus tarnGetErrorInfoString(tarnStatus e, tarnInfo i, char* buf, int bufsize);

/**
 * @}
 * @defgroup devices Devices
 * All but tarnGetExecutingDevice() work before tarnInitialize().
 * @{
 */

/**
 * Number of CUDA devices.
 *
 * @param[out] dev  the number, at most 16; 0 on a machine without a device or driver
 *
 * @retval tarnNoError        the number is there
 * @retval tarnArgumentError  info -1: dev is null
 * @retval tarnRuntimeError   info: the CUDA code
 */
TARN_API tarnStatus tarnGetDeviceCount(int* dev);

/**
 * Makes a device current on the calling thread, for CUDA and so for this library.
 *
 * @param[in] dev  the device, from 0
 *
 * @retval tarnNoError        the device is current
 * @retval tarnArgumentError  info -1: there is no such device
 * @retval tarnRuntimeError   info: the CUDA code
 */
TARN_API tarnStatus tarnSelectDevice(int dev);

/**
 * The device on which routines of the calling thread run.
 *
 * @param[out] dev  the device, from 0
 *
 * @retval tarnNoError         the device is there
 * @retval tarnNotInitialized  it was called before tarnInitialize()
 * @retval tarnArgumentError   info -1: dev is null
 * @retval tarnRuntimeError    info: the CUDA code
 */
TARN_API tarnStatus tarnGetExecutingDevice(int* dev);

/**
 * Writes the name of a device and its memory, such as "tarn software device (8 GB)". Memory is rounded to a whole
 * number of the largest unit that it reaches, by powers of 1024.
 *
 * @param[in] dev      the device, from 0
 * @param[out] buf     the text, cut to bufsize bytes and always terminated
 * @param[in] bufsize  bytes of buf
 *
 * @retval tarnNoError        the text is there
 * @retval tarnArgumentError  info -1: there is no such device, -2: buf is null, -3: bufsize is not positive
 * @retval tarnRuntimeError   info: the CUDA code
 */
TARN_API tarnStatus tarnGetDeviceInfo(int dev, char* buf, int bufsize);

/**
 * @}
 * @defgroup lu LU factorisation and linear systems
 * In single precision: S and C. Their statuses beside those named here: @ref conventions.
 * @{
 */

/** @name getrf
 * @{ */
/**
 * LU factorisation A = P L U with partial pivoting, by blocked right-looking elimination with look-ahead.
 *
 * @param[in] m      rows of A
 * @param[in] n      columns of A
 * @param[in,out] a  m by n; out: L below the diagonal (unit diagonal not stored), U on and above it
 * @param[in] lda    leading dimension of a, lda >= max(1, m)
 * @param[out] ipiv  min(m, n) pivots; row i was interchanged with row ipiv[i - 1], in the order i = 1, 2, ...
 *
 * @retval tarnDataError      info i > 0: U(i, i) is the first exactly zero pivot; factors and pivots are complete all
 * the same
 * @retval tarnArgumentError  info -1 m, -2 n, -3 a is null, -4 lda, -5 ipiv is null
 *
 * @par Work
 * 2/3 n^3 flops for m = n (times 4 for complex); in general m n^2 - n^3 / 3 for m >= n.
 */
TARN_API tarnStatus tarnSgetrf(int m, int n, tarnFloat* a, int lda, int* ipiv);
TARN_API tarnStatus tarnCgetrf(int m, int n, tarnFloatComplex* a, int lda, int* ipiv);
TARN_API tarnStatus tarnDeviceSgetrf(int m, int n, tarnDeviceFloat* a, int lda, tarnDeviceInt* ipiv);
TARN_API tarnStatus tarnDeviceCgetrf(int m, int n, tarnDeviceFloatComplex* a, int lda, tarnDeviceInt* ipiv);
/** @} */

/** @name gesv
 * @{ */
/**
 * Solves A X = B by LU factorisation with partial pivoting.
 *
 * @param[in] n      order of A
 * @param[in] nrhs   columns of B
 * @param[in,out] a  n by n; out: L and U as of getrf
 * @param[in] lda    leading dimension of a, lda >= max(1, n)
 * @param[out] ipiv  n pivots as of getrf
 * @param[in,out] b  n by nrhs; out: X
 * @param[in] ldb    leading dimension of b, ldb >= max(1, n)
 *
 * @retval tarnDataError      info i > 0: U(i, i) is the first exactly zero pivot; a and ipiv hold the factors, b is
 *                            unchanged
 * @retval tarnArgumentError  info -1 n, -2 nrhs, -3 a is null, -4 lda, -5 ipiv is null, -6 b is null, -7 ldb
 *
 * @par Work
 * 2/3 n^3 + 2 n^2 nrhs flops (times 4 for complex).
 */
TARN_API tarnStatus tarnSgesv(int n, int nrhs, tarnFloat* a, int lda, int* ipiv, tarnFloat* b, int ldb);
TARN_API tarnStatus tarnCgesv(int n, int nrhs, tarnFloatComplex* a, int lda, int* ipiv, tarnFloatComplex* b, int ldb);
TARN_API tarnStatus tarnDeviceSgesv(int n, int nrhs, tarnDeviceFloat* a, int lda, tarnDeviceInt* ipiv,
                                    tarnDeviceFloat* b, int ldb);
TARN_API tarnStatus tarnDeviceCgesv(int n, int nrhs, tarnDeviceFloatComplex* a, int lda, tarnDeviceInt* ipiv,
                                    tarnDeviceFloatComplex* b, int ldb);
/** @} */

/**
 * @}
 * @defgroup qr Orthogonal factorisations and least squares
 * In single precision: S and C. Their statuses beside those named here: @ref conventions.
 * @{
 */

/** @name geqrf
 * @{ */
/**
 * QR factorisation A = Q R by Householder reflections, blocked with look-ahead.
 *
 * Q = H(1) H(2) ... H(k), k = min(m, n), with H(i) = I - tau[i - 1] v v^H. A rank-deficient A is no error.
 *
 * @param[in] m      rows of A
 * @param[in] n      columns of A
 * @param[in,out] a  m by n; out: R on and above the diagonal, below it in column i the vector v of H(i), whose element
 *                   v(i) = 1 is not stored
 * @param[in] lda    leading dimension of a, lda >= max(1, m)
 * @param[out] tau   k scalars
 *
 * @retval tarnArgumentError  info -1 m, -2 n, -3 a is null, -4 lda, -5 tau is null
 *
 * @par Work
 * 2 m n^2 - 2/3 n^3 flops for m >= n (times 4 for complex).
 */
TARN_API tarnStatus tarnSgeqrf(int m, int n, tarnFloat* a, int lda, tarnFloat* tau);
TARN_API tarnStatus tarnCgeqrf(int m, int n, tarnFloatComplex* a, int lda, tarnFloatComplex* tau);
TARN_API tarnStatus tarnDeviceSgeqrf(int m, int n, tarnDeviceFloat* a, int lda, tarnDeviceFloat* tau);
TARN_API tarnStatus tarnDeviceCgeqrf(int m, int n, tarnDeviceFloatComplex* a, int lda, tarnDeviceFloatComplex* tau);
/** @} */

/** @name gels
 * @{ */
/**
 * Solves op(A) X = B for an A of full rank by its QR or LQ factorisation, in the sense of least squares or of least
 * norm.
 *
 * With more equations than unknowns the solution is that of least squares, with fewer that of least norm. op(A) = A
 * ("N") or A^H ("C"; "T" means the same for real and complex A). With m, n or nrhs 0 B becomes zero.
 *
 * @param[in] trans  "N", "C" or "T": op
 * @param[in] m      rows of A
 * @param[in] n      columns of A
 * @param[in] nrhs   columns of B, at most 1,048,560
 * @param[in,out] a  m by n; out: the QR factorisation as of geqrf for m >= n, else the LQ factorisation: L on and below
 *                   the diagonal, the vectors of the reflectors as rows to its right
 * @param[in] lda    leading dimension of a, lda >= max(1, m)
 * @param[in,out] b  max(m, n) by nrhs; in: the right-hand sides in the first rows; out: X in the first rows. Where
 * there are more equations than unknowns, the 2-norm of the rows below X in a column is the norm of its residual
 * @param[in] ldb    leading dimension of b, ldb >= max(1, m, n)
 *
 * @retval tarnDataError      info i > 0: element i of the diagonal of R or L is exactly zero, A has not full rank; a
 * holds the factorisation, b no solution
 * @retval tarnArgumentError  info -1 trans, -2 m, -3 n, -4 nrhs, -5 a is null, -6 lda, -7 b is null, -8 ldb
 *
 * @par Work
 * 2 m n^2 - 2/3 n^3 + (4 m n - n^2) nrhs flops for m >= n (times 4 for complex).
 */
TARN_API tarnStatus tarnSgels(char trans, int m, int n, int nrhs, tarnFloat* a, int lda, tarnFloat* b, int ldb);
TARN_API tarnStatus tarnCgels(char trans, int m, int n, int nrhs, tarnFloatComplex* a, int lda, tarnFloatComplex* b,
                              int ldb);
TARN_API tarnStatus tarnDeviceSgels(char trans, int m, int n, int nrhs, tarnDeviceFloat* a, int lda, tarnDeviceFloat* b,
                                    int ldb);
TARN_API tarnStatus tarnDeviceCgels(char trans, int m, int n, int nrhs, tarnDeviceFloatComplex* a, int lda,
                                    tarnDeviceFloatComplex* b, int ldb);
/** @} */

/** @name gglse
 * @{ */
/**
 * Minimises norm2(c - A x) subject to B x = d, by the generalised RQ factorisation of B and A.
 *
 * B is to have full row rank p, and A and B together full column rank n.
 *
 * @param[in] m      rows of A
 * @param[in] n      columns of A and B
 * @param[in] p      rows of B, p <= n <= m + p
 * @param[in,out] a  m by n; out: factors
 * @param[in] lda    leading dimension of a, lda >= max(1, m)
 * @param[in,out] b  p by n; out: factors; may be null for p = 0
 * @param[in] ldb    leading dimension of b, ldb >= max(1, p)
 * @param[in,out] c  m elements; out: the sum of squares of its last m - n + p elements is that of the residual
 * @param[in,out] d  p elements; destroyed; may be null for p = 0
 * @param[out] x     n elements
 *
 * @retval tarnDataError      info 1: B has not full row rank; info 2: A and B together have not full column rank (by an
 *                            exact zero on the diagonal of a triangular factor). x is no solution then, but zero where
 * it was not reached
 * @retval tarnArgumentError  info -1 m, -2 n, -3 p, -4 a is null, -5 lda, -6 b is null, -7 ldb, -8 c is null, -9 d is
 *                            null, -10 x is null
 *
 * @par Work
 * 2 n p^2 - 2/3 p^3 for p <= n, 4 m n p - 2 m p^2, and the flops of geqrf of A (times 4 for complex).
 */
TARN_API tarnStatus tarnSgglse(int m, int n, int p, tarnFloat* a, int lda, tarnFloat* b, int ldb, tarnFloat* c,
                               tarnFloat* d, tarnFloat* x);
TARN_API tarnStatus tarnCgglse(int m, int n, int p, tarnFloatComplex* a, int lda, tarnFloatComplex* b, int ldb,
                               tarnFloatComplex* c, tarnFloatComplex* d, tarnFloatComplex* x);
TARN_API tarnStatus tarnDeviceSgglse(int m, int n, int p, tarnDeviceFloat* a, int lda, tarnDeviceFloat* b, int ldb,
                                     tarnDeviceFloat* c, tarnDeviceFloat* d, tarnDeviceFloat* x);
TARN_API tarnStatus tarnDeviceCgglse(int m, int n, int p, tarnDeviceFloatComplex* a, int lda, tarnDeviceFloatComplex* b,
                                     int ldb, tarnDeviceFloatComplex* c, tarnDeviceFloatComplex* d,
                                     tarnDeviceFloatComplex* x);
/** @} */

/**
 * @}
 * @defgroup svd Singular value decomposition
 * In single precision: S and C. Their statuses beside those named here: @ref conventions.
 * @{
 */

/** @name gesvd
 * @{ */
/**
 * Singular value decomposition A = U S V^H, by reduction to bidiagonal form and implicit zero-shift QR; k = min(m, n).
 *
 * A is not scaled. With vectors, singular values below some 6 k^2 1.2e-38 count as zero (for k = 400 entries of 1e-34
 * keep no digit): scale such a matrix first. Values only are right there too.
 *
 * @param[in] jobu   "A": all m columns of U go to u; "S": the first k; "O": the first k replace A; "N": none
 * @param[in] jobvt  "A": all n rows of V^H go to vt; "S": the first k; "O": the first k replace A; "N": none; not "O"
 *                   twice
 * @param[in] m      rows of A
 * @param[in] n      columns of A, at most 1,048,560
 * @param[in,out] a  m by n; destroyed unless a job is "O"
 * @param[in] lda    leading dimension of a, lda >= max(1, m)
 * @param[out] s     k singular values, descending, real
 * @param[out] u     m by m or m by k; not used for "O" and "N", and may be null then
 * @param[in] ldu    leading dimension of u, ldu >= 1, and m for "A" and "S"
 * @param[out] vt    n by n or k by n; not used for "O" and "N", and may be null then
 * @param[in] ldvt   leading dimension of vt, ldvt >= 1, and n for "A", k for "S"
 *
 * @retval tarnDataError      info i > 0: the iteration did not converge, i off-diagonal elements of the bidiagonal
 * matrix are not zero (with both jobs "N": info of the CPU LAPACK's lasq1). s, u and vt hold the state reached; vectors
 * that only the last steps would have written are zero
 * @retval tarnArgumentError  info -1 jobu, -2 jobvt, -3 m, -4 n, -5 a is null, -6 lda, -7 s is null, -8 u is null, -9
 * ldu, -10 vt is null, -11 ldvt
 *
 * @par Work
 * For m >= n, where the iteration's part is an estimate: 4 m n^2 - 4/3 n^3 flops for the values, 14 m n^2 + 8 n^3 with
 * both jobs "S", 4 m^2 n + 8 m n^2 + 9 n^3 with both "A" (times 4 for complex).
 */
TARN_API tarnStatus tarnSgesvd(char jobu, char jobvt, int m, int n, tarnFloat* a, int lda, tarnFloat* s, tarnFloat* u,
                               int ldu, tarnFloat* vt, int ldvt);
TARN_API tarnStatus tarnCgesvd(char jobu, char jobvt, int m, int n, tarnFloatComplex* a, int lda, tarnFloat* s,
                               tarnFloatComplex* u, int ldu, tarnFloatComplex* vt, int ldvt);
TARN_API tarnStatus tarnDeviceSgesvd(char jobu, char jobvt, int m, int n, tarnDeviceFloat* a, int lda,
                                     tarnDeviceFloat* s, tarnDeviceFloat* u, int ldu, tarnDeviceFloat* vt, int ldvt);
TARN_API tarnStatus tarnDeviceCgesvd(char jobu, char jobvt, int m, int n, tarnDeviceFloatComplex* a, int lda,
                                     tarnDeviceFloat* s, tarnDeviceFloatComplex* u, int ldu, tarnDeviceFloatComplex* vt,
                                     int ldvt);
/** @} */

/**
 * @}
 * @defgroup blas3 BLAS level 3
 * In all four precisions. Their statuses beside those named here: @ref conventions.
 * @{
 */

/** @name gemm
 * @{ */
/**
 * Matrix product C := alpha op(A) op(B) + beta C, with op(X) = X ("N"), X^T ("T") or X^H ("C").
 *
 * @param[in] transa  "N", "T" or "C": op of A
 * @param[in] transb  "N", "T" or "C": op of B
 * @param[in] m       rows of op(A) and C
 * @param[in] n       columns of op(B) and C
 * @param[in] k       columns of op(A) and rows of op(B)
 * @param[in] alpha   factor of the product
 * @param[in] a       A as stored: m by k for "N", else k by m
 * @param[in] lda     leading dimension of a, lda >= rows of A as stored
 * @param[in] b       B as stored: k by n for "N", else n by k
 * @param[in] ldb     leading dimension of b, ldb >= rows of B as stored
 * @param[in] beta    factor of C
 * @param[in,out] c   m by n; not read where beta is 0
 * @param[in] ldc     leading dimension of c, ldc >= m
 *
 * @retval tarnArgumentError  host form: info -1 transa, -2 transb, -3 m, -4 n, -5 k, -7 a, -8 lda, -9 b, -10 ldb, -12
 * c, -13 ldc; null arrays count only if m, n and k are all non-zero. The device form leaves its arguments to cuBLAS
 *
 * @par Work
 * 2 m n k flops (times 4 for complex).
 */
TARN_API tarnStatus tarnSgemm(char transa, char transb, int m, int n, int k, tarnFloat alpha, tarnFloat* a, int lda,
                              tarnFloat* b, int ldb, tarnFloat beta, tarnFloat* c, int ldc);
TARN_API tarnStatus tarnDgemm(char transa, char transb, int m, int n, int k, tarnDouble alpha, tarnDouble* a, int lda,
                              tarnDouble* b, int ldb, tarnDouble beta, tarnDouble* c, int ldc);
TARN_API tarnStatus tarnCgemm(char transa, char transb, int m, int n, int k, tarnFloatComplex alpha,
                              tarnFloatComplex* a, int lda, tarnFloatComplex* b, int ldb, tarnFloatComplex beta,
                              tarnFloatComplex* c, int ldc);
TARN_API tarnStatus tarnZgemm(char transa, char transb, int m, int n, int k, tarnDoubleComplex alpha,
                              tarnDoubleComplex* a, int lda, tarnDoubleComplex* b, int ldb, tarnDoubleComplex beta,
                              tarnDoubleComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceSgemm(char transa, char transb, int m, int n, int k, tarnFloat alpha, tarnDeviceFloat* a,
                                    int lda, tarnDeviceFloat* b, int ldb, tarnFloat beta, tarnDeviceFloat* c, int ldc);
TARN_API tarnStatus tarnDeviceDgemm(char transa, char transb, int m, int n, int k, tarnDouble alpha,
                                    tarnDeviceDouble* a, int lda, tarnDeviceDouble* b, int ldb, tarnDouble beta,
                                    tarnDeviceDouble* c, int ldc);
TARN_API tarnStatus tarnDeviceCgemm(char transa, char transb, int m, int n, int k, tarnFloatComplex alpha,
                                    tarnDeviceFloatComplex* a, int lda, tarnDeviceFloatComplex* b, int ldb,
                                    tarnFloatComplex beta, tarnDeviceFloatComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceZgemm(char transa, char transb, int m, int n, int k, tarnDoubleComplex alpha,
                                    tarnDeviceDoubleComplex* a, int lda, tarnDeviceDoubleComplex* b, int ldb,
                                    tarnDoubleComplex beta, tarnDeviceDoubleComplex* c, int ldc);
/** @} */

/** @name trsm
 * @{ */
/**
 * Solves op(A) X = alpha B (side "L") or X op(A) = alpha B (side "R") for a triangular A; X replaces B.
 *
 * A singular A is not noticed. With alpha 0 X is zero; with m and n from 512 on A is read all the same, and a NaN in it
 * shows.
 *
 * @param[in] side    "L": A is m by m, "R": A is n by n
 * @param[in] uplo    "U" or "L": the triangle of A that is read
 * @param[in] transa  op(A) = A ("N"), A^T ("T") or A^H ("C")
 * @param[in] diag    "U": the diagonal of A counts as ones and is not read, "N": it is read
 * @param[in] m       rows of B
 * @param[in] n       columns of B
 * @param[in] alpha   factor of B
 * @param[in] a       A
 * @param[in] lda     leading dimension of a, lda >= order of A
 * @param[in,out] b   m by n; in: B; out: X
 * @param[in] ldb     leading dimension of b, ldb >= m
 *
 * @retval tarnArgumentError  info -1 side, -2 uplo, -3 transa, -4 diag, -5 m, -6 n, -8 a, -9 lda, -10 b, -11 ldb; null
 *                            arrays count only if m and n are non-zero
 *
 * @par Work
 * m^2 n (side "L") or m n^2 (side "R") flops (times 4 for complex).
 */
TARN_API tarnStatus tarnStrsm(char side, char uplo, char transa, char diag, int m, int n, tarnFloat alpha, tarnFloat* a,
                              int lda, tarnFloat* b, int ldb);
TARN_API tarnStatus tarnDtrsm(char side, char uplo, char transa, char diag, int m, int n, tarnDouble alpha,
                              tarnDouble* a, int lda, tarnDouble* b, int ldb);
TARN_API tarnStatus tarnCtrsm(char side, char uplo, char transa, char diag, int m, int n, tarnFloatComplex alpha,
                              tarnFloatComplex* a, int lda, tarnFloatComplex* b, int ldb);
TARN_API tarnStatus tarnZtrsm(char side, char uplo, char transa, char diag, int m, int n, tarnDoubleComplex alpha,
                              tarnDoubleComplex* a, int lda, tarnDoubleComplex* b, int ldb);
TARN_API tarnStatus tarnDeviceStrsm(char side, char uplo, char transa, char diag, int m, int n, tarnFloat alpha,
                                    tarnDeviceFloat* a, int lda, tarnDeviceFloat* b, int ldb);
TARN_API tarnStatus tarnDeviceDtrsm(char side, char uplo, char transa, char diag, int m, int n, tarnDouble alpha,
                                    tarnDeviceDouble* a, int lda, tarnDeviceDouble* b, int ldb);
TARN_API tarnStatus tarnDeviceCtrsm(char side, char uplo, char transa, char diag, int m, int n, tarnFloatComplex alpha,
                                    tarnDeviceFloatComplex* a, int lda, tarnDeviceFloatComplex* b, int ldb);
TARN_API tarnStatus tarnDeviceZtrsm(char side, char uplo, char transa, char diag, int m, int n, tarnDoubleComplex alpha,
                                    tarnDeviceDoubleComplex* a, int lda, tarnDeviceDoubleComplex* b, int ldb);
/** @} */

/** @name trmm
 * @{ */
/**
 * Product with a triangular matrix, B := alpha op(A) B (side "L") or alpha B op(A) (side "R").
 *
 * @param[in] side    "L": A is m by m, "R": A is n by n
 * @param[in] uplo    "U" or "L": the triangle of A that is read
 * @param[in] transa  op(A) = A ("N"), A^T ("T") or A^H ("C")
 * @param[in] diag    "U": the diagonal of A counts as ones and is not read, "N": it is read
 * @param[in] m       rows of B
 * @param[in] n       columns of B
 * @param[in] alpha   factor of the product
 * @param[in] a       A
 * @param[in] lda     leading dimension of a, lda >= max(1, order of A)
 * @param[in,out] b   m by n; in: B; out: the product
 * @param[in] ldb     leading dimension of b, ldb >= max(1, m)
 *
 * @retval tarnArgumentError  info -1 side, -2 uplo, -3 transa, -4 diag, -5 m, -6 n, -8 a, -9 lda, -10 b, -11 ldb; null
 *                            arrays count only if m and n are non-zero
 *
 * @par Work
 * m^2 n (side "L") or m n^2 (side "R") flops (times 4 for complex).
 */
TARN_API tarnStatus tarnStrmm(char side, char uplo, char transa, char diag, int m, int n, tarnFloat alpha, tarnFloat* a,
                              int lda, tarnFloat* b, int ldb);
TARN_API tarnStatus tarnDtrmm(char side, char uplo, char transa, char diag, int m, int n, tarnDouble alpha,
                              tarnDouble* a, int lda, tarnDouble* b, int ldb);
TARN_API tarnStatus tarnCtrmm(char side, char uplo, char transa, char diag, int m, int n, tarnFloatComplex alpha,
                              tarnFloatComplex* a, int lda, tarnFloatComplex* b, int ldb);
TARN_API tarnStatus tarnZtrmm(char side, char uplo, char transa, char diag, int m, int n, tarnDoubleComplex alpha,
                              tarnDoubleComplex* a, int lda, tarnDoubleComplex* b, int ldb);
TARN_API tarnStatus tarnDeviceStrmm(char side, char uplo, char transa, char diag, int m, int n, tarnFloat alpha,
                                    tarnDeviceFloat* a, int lda, tarnDeviceFloat* b, int ldb);
TARN_API tarnStatus tarnDeviceDtrmm(char side, char uplo, char transa, char diag, int m, int n, tarnDouble alpha,
                                    tarnDeviceDouble* a, int lda, tarnDeviceDouble* b, int ldb);
TARN_API tarnStatus tarnDeviceCtrmm(char side, char uplo, char transa, char diag, int m, int n, tarnFloatComplex alpha,
                                    tarnDeviceFloatComplex* a, int lda, tarnDeviceFloatComplex* b, int ldb);
TARN_API tarnStatus tarnDeviceZtrmm(char side, char uplo, char transa, char diag, int m, int n, tarnDoubleComplex alpha,
                                    tarnDeviceDoubleComplex* a, int lda, tarnDeviceDoubleComplex* b, int ldb);
/** @} */

/** @name symm and hemm
 * @{ */
/**
 * Product with a symmetric (symm) or Hermitian (hemm) matrix, C := alpha A B + beta C (side "L") or alpha B A + beta C
 * (side "R").
 *
 * @param[in] side   "L": A is m by m, "R": A is n by n
 * @param[in] uplo   "U" or "L": the triangle of A that is read; the diagonal of a Hermitian A counts as real
 * @param[in] m      rows of B and C
 * @param[in] n      columns of B and C
 * @param[in] alpha  factor of the product
 * @param[in] a      A
 * @param[in] lda    leading dimension of a, lda >= order of A
 * @param[in] b      m by n
 * @param[in] ldb    leading dimension of b, ldb >= m
 * @param[in] beta   factor of C
 * @param[in,out] c  m by n; not read where beta is 0
 * @param[in] ldc    leading dimension of c, ldc >= m
 *
 * @retval tarnArgumentError  info -1 side, -2 uplo, -3 m, -4 n, -6 a, -7 lda, -8 b, -9 ldb, -11 c, -12 ldc; null arrays
 *                            count only if m and n are non-zero
 *
 * @par Work
 * 2 m^2 n (side "L") or 2 m n^2 (side "R") flops (times 4 for complex).
 */
TARN_API tarnStatus tarnSsymm(char side, char uplo, int m, int n, tarnFloat alpha, tarnFloat* a, int lda, tarnFloat* b,
                              int ldb, tarnFloat beta, tarnFloat* c, int ldc);
TARN_API tarnStatus tarnDsymm(char side, char uplo, int m, int n, tarnDouble alpha, tarnDouble* a, int lda,
                              tarnDouble* b, int ldb, tarnDouble beta, tarnDouble* c, int ldc);
TARN_API tarnStatus tarnCsymm(char side, char uplo, int m, int n, tarnFloatComplex alpha, tarnFloatComplex* a, int lda,
                              tarnFloatComplex* b, int ldb, tarnFloatComplex beta, tarnFloatComplex* c, int ldc);
TARN_API tarnStatus tarnZsymm(char side, char uplo, int m, int n, tarnDoubleComplex alpha, tarnDoubleComplex* a,
                              int lda, tarnDoubleComplex* b, int ldb, tarnDoubleComplex beta, tarnDoubleComplex* c,
                              int ldc);
TARN_API tarnStatus tarnChemm(char side, char uplo, int m, int n, tarnFloatComplex alpha, tarnFloatComplex* a, int lda,
                              tarnFloatComplex* b, int ldb, tarnFloatComplex beta, tarnFloatComplex* c, int ldc);
TARN_API tarnStatus tarnZhemm(char side, char uplo, int m, int n, tarnDoubleComplex alpha, tarnDoubleComplex* a,
                              int lda, tarnDoubleComplex* b, int ldb, tarnDoubleComplex beta, tarnDoubleComplex* c,
                              int ldc);
TARN_API tarnStatus tarnDeviceSsymm(char side, char uplo, int m, int n, tarnFloat alpha, tarnDeviceFloat* a, int lda,
                                    tarnDeviceFloat* b, int ldb, tarnFloat beta, tarnDeviceFloat* c, int ldc);
TARN_API tarnStatus tarnDeviceDsymm(char side, char uplo, int m, int n, tarnDouble alpha, tarnDeviceDouble* a, int lda,
                                    tarnDeviceDouble* b, int ldb, tarnDouble beta, tarnDeviceDouble* c, int ldc);
TARN_API tarnStatus tarnDeviceCsymm(char side, char uplo, int m, int n, tarnFloatComplex alpha,
                                    tarnDeviceFloatComplex* a, int lda, tarnDeviceFloatComplex* b, int ldb,
                                    tarnFloatComplex beta, tarnDeviceFloatComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceZsymm(char side, char uplo, int m, int n, tarnDoubleComplex alpha,
                                    tarnDeviceDoubleComplex* a, int lda, tarnDeviceDoubleComplex* b, int ldb,
                                    tarnDoubleComplex beta, tarnDeviceDoubleComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceChemm(char side, char uplo, int m, int n, tarnFloatComplex alpha,
                                    tarnDeviceFloatComplex* a, int lda, tarnDeviceFloatComplex* b, int ldb,
                                    tarnFloatComplex beta, tarnDeviceFloatComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceZhemm(char side, char uplo, int m, int n, tarnDoubleComplex alpha,
                                    tarnDeviceDoubleComplex* a, int lda, tarnDeviceDoubleComplex* b, int ldb,
                                    tarnDoubleComplex beta, tarnDeviceDoubleComplex* c, int ldc);
/** @} */

/** @name syrk and herk
 * @{ */
/**
 * A rank k update of one triangle of a symmetric (syrk) or Hermitian (herk) C of order n.
 *
 * - syrk: C := alpha A A^T + beta C ("N") or alpha A^T A + beta C ("T")
 * - herk: C := alpha A A^H + beta C ("N") or alpha A^H A + beta C ("C"; "T" means the same), alpha and beta real
 *
 * @param[in] uplo   "U" or "L": the triangle of C that is read and written
 * @param[in] trans  "N" or "T", for herk "N", "T" or "C": which of the two
 * @param[in] n      order of C
 * @param[in] k      columns of A for "N", else rows
 * @param[in] alpha  factor of the product
 * @param[in] a      n by k for "N", else k by n
 * @param[in] lda    leading dimension of a, lda >= max(1, rows of A)
 * @param[in] beta   factor of C
 * @param[in,out] c  n by n; the triangle counts as zero where beta is 0. herk leaves its diagonal real, unless beta is
 * 1 and alpha or k is 0: then C stays as it is
 * @param[in] ldc    leading dimension of c, ldc >= max(1, n)
 *
 * @retval tarnArgumentError  info -1 uplo, -2 trans, -3 n, -4 k, -6 a, -7 lda, -9 c, -10 ldc; null arrays count only if
 * n and k are non-zero
 *
 * @par Work
 * n^2 k flops (times 4 for complex).
 */
TARN_API tarnStatus tarnSsyrk(char uplo, char trans, int n, int k, tarnFloat alpha, tarnFloat* a, int lda,
                              tarnFloat beta, tarnFloat* c, int ldc);
TARN_API tarnStatus tarnDsyrk(char uplo, char trans, int n, int k, tarnDouble alpha, tarnDouble* a, int lda,
                              tarnDouble beta, tarnDouble* c, int ldc);
TARN_API tarnStatus tarnCsyrk(char uplo, char trans, int n, int k, tarnFloatComplex alpha, tarnFloatComplex* a, int lda,
                              tarnFloatComplex beta, tarnFloatComplex* c, int ldc);
TARN_API tarnStatus tarnZsyrk(char uplo, char trans, int n, int k, tarnDoubleComplex alpha, tarnDoubleComplex* a,
                              int lda, tarnDoubleComplex beta, tarnDoubleComplex* c, int ldc);
TARN_API tarnStatus tarnCherk(char uplo, char trans, int n, int k, tarnFloat alpha, tarnFloatComplex* a, int lda,
                              tarnFloat beta, tarnFloatComplex* c, int ldc);
TARN_API tarnStatus tarnZherk(char uplo, char trans, int n, int k, tarnDouble alpha, tarnDoubleComplex* a, int lda,
                              tarnDouble beta, tarnDoubleComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceSsyrk(char uplo, char trans, int n, int k, tarnFloat alpha, tarnDeviceFloat* a, int lda,
                                    tarnFloat beta, tarnDeviceFloat* c, int ldc);
TARN_API tarnStatus tarnDeviceDsyrk(char uplo, char trans, int n, int k, tarnDouble alpha, tarnDeviceDouble* a, int lda,
                                    tarnDouble beta, tarnDeviceDouble* c, int ldc);
TARN_API tarnStatus tarnDeviceCsyrk(char uplo, char trans, int n, int k, tarnFloatComplex alpha,
                                    tarnDeviceFloatComplex* a, int lda, tarnFloatComplex beta,
                                    tarnDeviceFloatComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceZsyrk(char uplo, char trans, int n, int k, tarnDoubleComplex alpha,
                                    tarnDeviceDoubleComplex* a, int lda, tarnDoubleComplex beta,
                                    tarnDeviceDoubleComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceCherk(char uplo, char trans, int n, int k, tarnFloat alpha, tarnDeviceFloatComplex* a,
                                    int lda, tarnFloat beta, tarnDeviceFloatComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceZherk(char uplo, char trans, int n, int k, tarnDouble alpha, tarnDeviceDoubleComplex* a,
                                    int lda, tarnDouble beta, tarnDeviceDoubleComplex* c, int ldc);
/** @} */

/** @name syr2k and her2k
 * @{ */
/**
 * A rank 2k update of one triangle of a symmetric (syr2k) or Hermitian (her2k) C of order n.
 *
 * - syr2k: C := alpha A B^T + alpha B A^T + beta C ("N") or alpha A^T B + alpha B^T A + beta C ("T")
 * - her2k: C := alpha A B^H + conj(alpha) B A^H + beta C ("N") or alpha A^H B + conj(alpha) B^H A + beta C ("C"), beta
 *   real
 *
 * @param[in] uplo   "U" or "L": the triangle of C that is read and written
 * @param[in] trans  "N" or "T" for syr2k, "N" or "C" for her2k: which of the two
 * @param[in] n      order of C
 * @param[in] k      columns of A and B for "N", else rows
 * @param[in] alpha  factor of the products
 * @param[in] a      n by k for "N", else k by n
 * @param[in] lda    leading dimension of a, lda >= rows of A
 * @param[in] b      n by k for "N", else k by n
 * @param[in] ldb    leading dimension of b, ldb >= rows of B
 * @param[in] beta   factor of C
 * @param[in,out] c  n by n; the triangle counts as zero where beta is 0. her2k leaves its diagonal real, unless beta is
 * 1 and alpha or k is 0: then C stays as it is
 * @param[in] ldc    leading dimension of c, ldc >= n
 *
 * @retval tarnArgumentError  info -1 uplo, -2 trans, -3 n, -4 k, -6 a, -7 lda, -8 b, -9 ldb, -11 c, -12 ldc; null
 * arrays count only if n and k are non-zero
 *
 * @par Work
 * 2 n^2 k flops (times 4 for complex).
 */
TARN_API tarnStatus tarnSsyr2k(char uplo, char trans, int n, int k, tarnFloat alpha, tarnFloat* a, int lda,
                               tarnFloat* b, int ldb, tarnFloat beta, tarnFloat* c, int ldc);
TARN_API tarnStatus tarnDsyr2k(char uplo, char trans, int n, int k, tarnDouble alpha, tarnDouble* a, int lda,
                               tarnDouble* b, int ldb, tarnDouble beta, tarnDouble* c, int ldc);
TARN_API tarnStatus tarnCsyr2k(char uplo, char trans, int n, int k, tarnFloatComplex alpha, tarnFloatComplex* a,
                               int lda, tarnFloatComplex* b, int ldb, tarnFloatComplex beta, tarnFloatComplex* c,
                               int ldc);
TARN_API tarnStatus tarnZsyr2k(char uplo, char trans, int n, int k, tarnDoubleComplex alpha, tarnDoubleComplex* a,
                               int lda, tarnDoubleComplex* b, int ldb, tarnDoubleComplex beta, tarnDoubleComplex* c,
                               int ldc);
TARN_API tarnStatus tarnCher2k(char uplo, char trans, int n, int k, tarnFloatComplex alpha, tarnFloatComplex* a,
                               int lda, tarnFloatComplex* b, int ldb, tarnFloat beta, tarnFloatComplex* c, int ldc);
TARN_API tarnStatus tarnZher2k(char uplo, char trans, int n, int k, tarnDoubleComplex alpha, tarnDoubleComplex* a,
                               int lda, tarnDoubleComplex* b, int ldb, tarnDouble beta, tarnDoubleComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceSsyr2k(char uplo, char trans, int n, int k, tarnFloat alpha, tarnDeviceFloat* a, int lda,
                                     tarnDeviceFloat* b, int ldb, tarnFloat beta, tarnDeviceFloat* c, int ldc);
TARN_API tarnStatus tarnDeviceDsyr2k(char uplo, char trans, int n, int k, tarnDouble alpha, tarnDeviceDouble* a,
                                     int lda, tarnDeviceDouble* b, int ldb, tarnDouble beta, tarnDeviceDouble* c,
                                     int ldc);
TARN_API tarnStatus tarnDeviceCsyr2k(char uplo, char trans, int n, int k, tarnFloatComplex alpha,
                                     tarnDeviceFloatComplex* a, int lda, tarnDeviceFloatComplex* b, int ldb,
                                     tarnFloatComplex beta, tarnDeviceFloatComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceZsyr2k(char uplo, char trans, int n, int k, tarnDoubleComplex alpha,
                                     tarnDeviceDoubleComplex* a, int lda, tarnDeviceDoubleComplex* b, int ldb,
                                     tarnDoubleComplex beta, tarnDeviceDoubleComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceCher2k(char uplo, char trans, int n, int k, tarnFloatComplex alpha,
                                     tarnDeviceFloatComplex* a, int lda, tarnDeviceFloatComplex* b, int ldb,
                                     tarnFloat beta, tarnDeviceFloatComplex* c, int ldc);
TARN_API tarnStatus tarnDeviceZher2k(char uplo, char trans, int n, int k, tarnDoubleComplex alpha,
                                     tarnDeviceDoubleComplex* a, int lda, tarnDeviceDoubleComplex* b, int ldb,
                                     tarnDouble beta, tarnDeviceDoubleComplex* c, int ldc);
/** @} */

/**
 * @}
 * @defgroup blas2 BLAS level 2
 * In all four precisions. Their statuses beside those named here: @ref conventions.
 * @{
 */

/** @name gemv
 * @{ */
/**
 * Matrix-vector product y := alpha op(A) x + beta y, with op(A) = A ("N"), A^T ("T") or A^H ("C").
 *
 * With m or n 0 y is left alone, whatever beta is.
 *
 * @param[in] trans  "N", "T" or "C": op
 * @param[in] m      rows of A as stored
 * @param[in] n      columns of A as stored
 * @param[in] alpha  factor of the product
 * @param[in] a      m by n
 * @param[in] lda    leading dimension of a, lda >= max(1, m)
 * @param[in] x      n elements for "N", else m
 * @param[in] incx   their distance; a negative one counts from the far end of the array
 * @param[in] beta   factor of y
 * @param[in,out] y  m elements for "N", else n; not read where beta is 0
 * @param[in] incy   their distance, likewise
 *
 * @retval tarnArgumentError  info -1 trans, -2 m, -3 n, -5 a is null, -6 lda, -7 x is null, -10 y is null
 * @retval tarnBlasError      info 7, cuBLAS' invalid value: an increment is 0
 *
 * @par Work
 * 2 m n flops (times 4 for complex).
 */
TARN_API tarnStatus tarnSgemv(char trans, int m, int n, tarnFloat alpha, tarnFloat* a, int lda, tarnFloat* x, int incx,
                              tarnFloat beta, tarnFloat* y, int incy);
TARN_API tarnStatus tarnDgemv(char trans, int m, int n, tarnDouble alpha, tarnDouble* a, int lda, tarnDouble* x,
                              int incx, tarnDouble beta, tarnDouble* y, int incy);
TARN_API tarnStatus tarnCgemv(char trans, int m, int n, tarnFloatComplex alpha, tarnFloatComplex* a, int lda,
                              tarnFloatComplex* x, int incx, tarnFloatComplex beta, tarnFloatComplex* y, int incy);
TARN_API tarnStatus tarnZgemv(char trans, int m, int n, tarnDoubleComplex alpha, tarnDoubleComplex* a, int lda,
                              tarnDoubleComplex* x, int incx, tarnDoubleComplex beta, tarnDoubleComplex* y, int incy);
TARN_API tarnStatus tarnDeviceSgemv(char trans, int m, int n, tarnFloat alpha, tarnDeviceFloat* a, int lda,
                                    tarnDeviceFloat* x, int incx, tarnFloat beta, tarnDeviceFloat* y, int incy);
TARN_API tarnStatus tarnDeviceDgemv(char trans, int m, int n, tarnDouble alpha, tarnDeviceDouble* a, int lda,
                                    tarnDeviceDouble* x, int incx, tarnDouble beta, tarnDeviceDouble* y, int incy);
TARN_API tarnStatus tarnDeviceCgemv(char trans, int m, int n, tarnFloatComplex alpha, tarnDeviceFloatComplex* a,
                                    int lda, tarnDeviceFloatComplex* x, int incx, tarnFloatComplex beta,
                                    tarnDeviceFloatComplex* y, int incy);
TARN_API tarnStatus tarnDeviceZgemv(char trans, int m, int n, tarnDoubleComplex alpha, tarnDeviceDoubleComplex* a,
                                    int lda, tarnDeviceDoubleComplex* x, int incx, tarnDoubleComplex beta,
                                    tarnDeviceDoubleComplex* y, int incy);
/** @} */

/** @name symv and hemv
 * @{ */
/**
 * Matrix-vector product y := alpha A x + beta y with a symmetric (symv) or Hermitian (hemv) A of order n.
 *
 * From order 1200 on, on devices of capability 2.0 and more, sums are formed in an order that varies: the last bits of
 * y may differ from call to call. Older devices need n^2 / 32 elements of workspace instead.
 *
 * @param[in] uplo   "U" or "L": the triangle of A that is read; the diagonal of a Hermitian A counts as real
 * @param[in] n      order of A
 * @param[in] alpha  factor of the product
 * @param[in] a      n by n
 * @param[in] lda    leading dimension of a, lda >= max(1, n)
 * @param[in] x      n elements
 * @param[in] incx   their distance, from 1
 * @param[in] beta   factor of y
 * @param[in,out] y  n elements; not read where beta is 0
 * @param[in] incy   their distance, from 1
 *
 * @retval tarnArgumentError          info -1 uplo, -2 n, -4 a is null, -5 lda, -6 x is null, -9 y is null
 * @retval tarnFeatureNotImplemented  incx or incy is below 1
 *
 * @par Work
 * 2 n^2 flops (times 4 for complex).
 */
TARN_API tarnStatus tarnSsymv(char uplo, int n, tarnFloat alpha, tarnFloat* a, int lda, tarnFloat* x, int incx,
                              tarnFloat beta, tarnFloat* y, int incy);
TARN_API tarnStatus tarnDsymv(char uplo, int n, tarnDouble alpha, tarnDouble* a, int lda, tarnDouble* x, int incx,
                              tarnDouble beta, tarnDouble* y, int incy);
TARN_API tarnStatus tarnChemv(char uplo, int n, tarnFloatComplex alpha, tarnFloatComplex* a, int lda,
                              tarnFloatComplex* x, int incx, tarnFloatComplex beta, tarnFloatComplex* y, int incy);
TARN_API tarnStatus tarnZhemv(char uplo, int n, tarnDoubleComplex alpha, tarnDoubleComplex* a, int lda,
                              tarnDoubleComplex* x, int incx, tarnDoubleComplex beta, tarnDoubleComplex* y, int incy);
TARN_API tarnStatus tarnDeviceSsymv(char uplo, int n, tarnFloat alpha, tarnDeviceFloat* a, int lda, tarnDeviceFloat* x,
                                    int incx, tarnFloat beta, tarnDeviceFloat* y, int incy);
TARN_API tarnStatus tarnDeviceDsymv(char uplo, int n, tarnDouble alpha, tarnDeviceDouble* a, int lda,
                                    tarnDeviceDouble* x, int incx, tarnDouble beta, tarnDeviceDouble* y, int incy);
TARN_API tarnStatus tarnDeviceChemv(char uplo, int n, tarnFloatComplex alpha, tarnDeviceFloatComplex* a, int lda,
                                    tarnDeviceFloatComplex* x, int incx, tarnFloatComplex beta,
                                    tarnDeviceFloatComplex* y, int incy);
TARN_API tarnStatus tarnDeviceZhemv(char uplo, int n, tarnDoubleComplex alpha, tarnDeviceDoubleComplex* a, int lda,
                                    tarnDeviceDoubleComplex* x, int incx, tarnDoubleComplex beta,
                                    tarnDeviceDoubleComplex* y, int incy);
/** @} */

/** @} */

#ifdef __cplusplus
}
#endif

#endif
