#pragma once
/// The CPU BLAS behind the cuBLAS calls: the Fortran routines by element type. Integers are 32 bits wide, and each
/// character argument has a hidden length behind the other arguments. They are called as TARN_DIRECT(sgemm_).

#include <cstddef>

#include <direct_call.h>

#include "cublas_api.h"

extern "C" {

#define TARN_FORTRAN_COMMON(l, T)                                                                                      \
    void l##gemm_(const char*, const char*, const int*, const int*, const int*, const T*, const T*, const int*,        \
                  const T*, const int*, const T*, T*, const int*, std::size_t, std::size_t);                           \
    void l##trmm_(const char*, const char*, const char*, const char*, const int*, const int*, const T*, const T*,      \
                  const int*, T*, const int*, std::size_t, std::size_t, std::size_t, std::size_t);                     \
    void l##trsm_(const char*, const char*, const char*, const char*, const int*, const int*, const T*, const T*,      \
                  const int*, T*, const int*, std::size_t, std::size_t, std::size_t, std::size_t);                     \
    void l##gemv_(const char*, const int*, const int*, const T*, const T*, const int*, const T*, const int*, const T*, \
                  T*, const int*, std::size_t);                                                                        \
    void l##trmv_(const char*, const char*, const char*, const int*, const T*, const int*, T*, const int*,             \
                  std::size_t, std::size_t, std::size_t);                                                              \
    void l##axpy_(const int*, const T*, const T*, const int*, T*, const int*);                                         \
    void l##copy_(const int*, const T*, const int*, T*, const int*);                                                   \
    void l##swap_(const int*, T*, const int*, T*, const int*);

/// The symmetric and Hermitian routines; s is "sy" or "he", and R the type of the scalars that are real for "he".
#define TARN_FORTRAN_SYMMETRIC(l, s, T, R)                                                                             \
    void l##s##mm_(const char*, const char*, const int*, const int*, const T*, const T*, const int*, const T*,         \
                   const int*, const T*, T*, const int*, std::size_t, std::size_t);                                    \
    void l##s##rk_(const char*, const char*, const int*, const int*, const R*, const T*, const int*, const R*, T*,     \
                   const int*, std::size_t, std::size_t);                                                              \
    void l##s##r2k_(const char*, const char*, const int*, const int*, const T*, const T*, const int*, const T*,        \
                    const int*, const R*, T*, const int*, std::size_t, std::size_t);

#define TARN_FORTRAN_SYMMETRIC_MV(l, s, T)                                                                             \
    void l##s##mv_(const char*, const int*, const T*, const T*, const int*, const T*, const int*, const T*, T*,        \
                   const int*, std::size_t);

TARN_FORTRAN_COMMON(s, float)
TARN_FORTRAN_COMMON(d, double)
TARN_FORTRAN_COMMON(c, cuComplex)
TARN_FORTRAN_COMMON(z, cuDoubleComplex)
TARN_FORTRAN_SYMMETRIC(s, sy, float, float)
TARN_FORTRAN_SYMMETRIC(d, sy, double, double)
TARN_FORTRAN_SYMMETRIC(c, sy, cuComplex, cuComplex)
TARN_FORTRAN_SYMMETRIC(z, sy, cuDoubleComplex, cuDoubleComplex)
TARN_FORTRAN_SYMMETRIC(c, he, cuComplex, float)
TARN_FORTRAN_SYMMETRIC(z, he, cuDoubleComplex, double)
TARN_FORTRAN_SYMMETRIC_MV(s, sy, float)
TARN_FORTRAN_SYMMETRIC_MV(d, sy, double)
TARN_FORTRAN_SYMMETRIC_MV(c, he, cuComplex)
TARN_FORTRAN_SYMMETRIC_MV(z, he, cuDoubleComplex)
void sscal_(const int*, const float*, float*, const int*);
void csscal_(const int*, const float*, cuComplex*, const int*);
}

#undef TARN_FORTRAN_COMMON
#undef TARN_FORTRAN_SYMMETRIC
#undef TARN_FORTRAN_SYMMETRIC_MV
