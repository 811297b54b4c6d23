// The types in which the calls of reference.h exist; included at the end of each source file that defines them.
#pragma once

#include "reference.h"

#include <complex>

namespace tarn::bench::reference {

#define TARN_INSTANTIATE_SYMMETRIC(h, T)                                                                               \
    template void symm<h>(char, char, int, int, T, const T*, int, const T*, int, T, T*, int);                          \
    template void syrk<h, T>(char, char, int, int, Scalar<h, T>, const T*, int, Scalar<h, T>, T*, int);                \
    template void syr2k<h, T>(char, char, int, int, T, const T*, int, const T*, int, Scalar<h, T>, T*, int);

#define TARN_INSTANTIATE_BLAS(T)                                                                                       \
    template void gemm(char, char, int, int, int, T, const T*, int, const T*, int, T, T*, int);                        \
    template void trsm(char, char, char, char, int, int, T, const T*, int, T*, int);                                   \
    template void trmm(char, char, char, char, int, int, T, const T*, int, T*, int);                                   \
    template void gemv(char, int, int, T, const T*, int, const T*, int, T, T*, int);                                   \
    template void symv(char, int, T, const T*, int, const T*, int, T, T*, int);                                        \
    TARN_INSTANTIATE_SYMMETRIC(false, T)

#define TARN_INSTANTIATE_LAPACK(T)                                                                                     \
    template void getrf(int, int, T*, int);                                                                            \
    template void gesv(int, int, T*, int, T*, int);                                                                    \
    template void geqrf(int, int, T*, int, T*);                                                                        \
    template void gels(int, int, int, T*, int, T*, int);                                                               \
    template void gglse(int, int, int, T*, int, T*, int, T*, T*, T*);                                                  \
    template void gesvd(char, char, int, int, T*, int, tool::Real<T>*, T*, int, T*, int);

TARN_INSTANTIATE_BLAS(float)
TARN_INSTANTIATE_BLAS(double)
TARN_INSTANTIATE_BLAS(std::complex<float>)
TARN_INSTANTIATE_BLAS(std::complex<double>)
TARN_INSTANTIATE_SYMMETRIC(true, std::complex<float>)
TARN_INSTANTIATE_SYMMETRIC(true, std::complex<double>)
TARN_INSTANTIATE_LAPACK(float)
TARN_INSTANTIATE_LAPACK(std::complex<float>)

#undef TARN_INSTANTIATE_SYMMETRIC
#undef TARN_INSTANTIATE_BLAS
#undef TARN_INSTANTIATE_LAPACK

} // namespace tarn::bench::reference
