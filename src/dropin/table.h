// The table of routines. A row is
//
//   ROW(name, function of the library, FAMILY, element type T, type S of the scalars that are real in Hermitian
//   updates)
//
// and stands for the Fortran name and, in the tables of the BLAS, for the CBLAS name.
#pragma once

#include "routine.h"

#define TARN_DROPIN_BLAS_OF(ROW, x, X, T)                                                                              \
    ROW(x##gemm, tarn##X##gemm, GEMM, T, T)                                                                            \
    ROW(x##trmm, tarn##X##trmm, TRIANGULAR, T, T)                                                                      \
    ROW(x##trsm, tarn##X##trsm, TRIANGULAR, T, T)                                                                      \
    ROW(x##symm, tarn##X##symm, SYMM, T, T)                                                                            \
    ROW(x##syrk, tarn##X##syrk, SYRK, T, T)                                                                            \
    ROW(x##syr2k, tarn##X##syr2k, SYR2K, T, T)                                                                         \
    ROW(x##gemv, tarn##X##gemv, GEMV, T, T)

#define TARN_DROPIN_REAL_BLAS_OF(ROW, x, X, T)                                                                         \
    TARN_DROPIN_BLAS_OF(ROW, x, X, T)                                                                                  \
    ROW(x##symv, tarn##X##symv, SYMV, T, T)

#define TARN_DROPIN_COMPLEX_BLAS_OF(ROW, x, X, T, S)                                                                   \
    TARN_DROPIN_BLAS_OF(ROW, x, X, T)                                                                                  \
    ROW(x##hemm, tarn##X##hemm, SYMM, T, T)                                                                            \
    ROW(x##herk, tarn##X##herk, SYRK, T, S)                                                                            \
    ROW(x##her2k, tarn##X##her2k, SYR2K, T, S)                                                                         \
    ROW(x##hemv, tarn##X##hemv, SYMV, T, T)

#define TARN_DROPIN_BLAS(ROW)                                                                                          \
    TARN_DROPIN_REAL_BLAS_OF(ROW, s, S, tarnFloat)                                                                     \
    TARN_DROPIN_REAL_BLAS_OF(ROW, d, D, tarnDouble)                                                                    \
    TARN_DROPIN_COMPLEX_BLAS_OF(ROW, c, C, tarnFloatComplex, tarnFloat)                                                \
    TARN_DROPIN_COMPLEX_BLAS_OF(ROW, z, Z, tarnDoubleComplex, tarnDouble)

#define TARN_DROPIN_LAPACK_OF(ROW, x, X, T, GESVD)                                                                     \
    ROW(x##getrf, tarn##X##getrf, GETRF, T, T)                                                                         \
    ROW(x##gesv, tarn##X##gesv, GESV, T, T)                                                                            \
    ROW(x##geqrf, tarn##X##geqrf, GEQRF, T, T)                                                                         \
    ROW(x##gels, tarn##X##gels, GELS, T, T)                                                                            \
    ROW(x##gglse, tarn##X##gglse, GGLSE, T, T)                                                                         \
    ROW(x##gesvd, tarn##X##gesvd, GESVD, T, tarnFloat)

#define TARN_DROPIN_LAPACK(ROW)                                                                                        \
    TARN_DROPIN_LAPACK_OF(ROW, s, S, tarnFloat, REAL_GESVD)                                                            \
    TARN_DROPIN_LAPACK_OF(ROW, c, C, tarnFloatComplex, COMPLEX_GESVD)

namespace tarn::dropin {

#define TARN_DROPIN_OBJECT(name, device, FAMILY, T, S)                                                                 \
    inline Routine name##Routine{#name, #name "_", "cblas_" #name, #device};
TARN_DROPIN_BLAS(TARN_DROPIN_OBJECT)
TARN_DROPIN_LAPACK(TARN_DROPIN_OBJECT)
#undef TARN_DROPIN_OBJECT

#define TARN_DROPIN_ADDRESS(name, device, FAMILY, T, S) &name##Routine,
inline Routine* const allRoutines[] = {TARN_DROPIN_BLAS(TARN_DROPIN_ADDRESS) TARN_DROPIN_LAPACK(TARN_DROPIN_ADDRESS)};
#undef TARN_DROPIN_ADDRESS

} // namespace tarn::dropin
