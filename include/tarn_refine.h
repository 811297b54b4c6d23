/** @file
 * tarn_refine: linear systems in double precision by factors in single precision, a library over tarn_lapack. */
#ifndef TARN_REFINE_H
#define TARN_REFINE_H

#include "tarn_lapack.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @defgroup refine Double precision by refinement
 * In double precision: D and Z; a library of its own, libtarn_refine.
 *
 * Statuses beside those named here: @ref conventions.
 *
 * The LU factorisation, where the work is, runs on the device in single precision; residuals in double precision then
 * bring the solution to the backward error of a double-precision solve (Wilkinson's iterative refinement). What single
 * precision cannot do, the double-precision solver of the CPU does.
 * @{
 */

/** How a system was solved. */
typedef struct tarnRefinement
{
    int iter;     /**< refinements made; below zero, by the numbers of dsgesv, why the CPU solved in double precision */
    double rcond; /**< estimate of 1 / (norm1(op(A)) norm1(op(A)^-1)) from the factors; 0 for a singular matrix */
} tarnRefinement;

/** @name Why the CPU solved in double precision
 * Values of tarnRefinement.iter.
 * @{ */
#define tarnIterSmall (-1)         /**< faster there: a small matrix, or on the software device many right-hand sides */
#define tarnIterRange (-2)         /**< entries do not fit single precision */
#define tarnIterSingular (-3)      /**< a pivot of the factorisation in single precision is zero */
#define tarnIterNotConverged (-31) /**< refinement did not converge: the matrix is too ill-conditioned */
/** @} */

/** @name dsgesv and zcgesv
 * @{ */
/**
 * Solves op(A) X = B in double precision, with op(A) = A ("N"), A^T ("T") or A^H ("C").
 *
 * Refinement succeeds where norm_inf(b - op(A) x) <= sqrt(n) eps norm_inf(op(A)) norm_inf(x), eps = 2^-53, for every
 * column after at most 30 steps, which is the rule of dsgesv. A double-precision solve usually ends well below that
 * bound: refinement goes on to eps / 32 in place of sqrt(n) eps, as long as steps halve the residual. Where a step does
 * not halve it above the bound, refinement has failed, for 30 such steps could not succeed either.
 *
 * @param[in] trans  "N", "T" or "C": op(A)
 * @param[in] n      order of A
 * @param[in] nrhs   columns of B and X
 * @param[in] a      n by n; unchanged
 * @param[in] lda    leading dimension of a, lda >= max(1, n)
 * @param[in] b      n by nrhs; unchanged
 * @param[in] ldb    leading dimension of b, ldb >= max(1, n)
 * @param[out] x     n by nrhs; overlaps neither a nor b
 * @param[in] ldx    leading dimension of x, ldx >= max(1, n)
 * @param[out] how   iter, the refinements made, or why the CPU solved; rcond, an estimate of 1 / (norm1(op(A))
 *                   norm1(op(A)^-1)); may be null
 *
 * @retval tarnDataError      info i > 0: pivot i of the factorisation in double precision is exactly zero; x holds
 *                            nothing
 * @retval tarnArgumentError  info -1 trans, -2 n, -3 nrhs, -4 a is null, -5 lda, -6 b is null, -7 ldb, -8 x is null,
 *                            -9 ldx
 *
 * @par Work
 * 2/3 n^3 flops in single precision, and 4 n^2 nrhs in either precision for a refinement (times 4 for complex). Takes
 * 4 n^2 bytes (8 for complex) of device memory, and as much host memory.
 */
TARN_API tarnStatus tarnDsgesv(char trans, int n, int nrhs, const tarnDouble* a, int lda, const tarnDouble* b, int ldb,
                               tarnDouble* x, int ldx, tarnRefinement* how);
TARN_API tarnStatus tarnZcgesv(char trans, int n, int nrhs, const tarnDoubleComplex* a, int lda,
                               const tarnDoubleComplex* b, int ldb, tarnDoubleComplex* x, int ldx, tarnRefinement* how);
/** @} */

/** @} */

#ifdef __cplusplus
}
#endif

#endif
