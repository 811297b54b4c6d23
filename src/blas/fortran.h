// The CPU LAPACK and BLAS routines by their Fortran names: 32-bit integers, all arguments by reference, the lengths of
// character arguments hidden at the end.
#pragma once

#include <tarndev/Complex>

#include <cstddef>

extern "C" {

void sgetrf_(const int*, const int*, float*, const int*, int*, int*);
void cgetrf_(const int*, const int*, tarn::Complex<float>*, const int*, int*, int*);
void slaswp_(const int*, float*, const int*, const int*, const int*, const int*, const int*);
void claswp_(const int*, tarn::Complex<float>*, const int*, const int*, const int*, const int*, const int*);
void sgeqr2_(const int*, const int*, float*, const int*, float*, float*, int*);
void cgeqr2_(const int*, const int*, tarn::Complex<float>*, const int*, tarn::Complex<float>*, tarn::Complex<float>*,
             int*);
void sgelqf_(const int*, const int*, float*, const int*, float*, float*, const int*, int*);
void cgelqf_(const int*, const int*, tarn::Complex<float>*, const int*, tarn::Complex<float>*, tarn::Complex<float>*,
             const int*, int*);
void sgerqf_(const int*, const int*, float*, const int*, float*, float*, const int*, int*);
void cgerqf_(const int*, const int*, tarn::Complex<float>*, const int*, tarn::Complex<float>*, tarn::Complex<float>*,
             const int*, int*);
void sgebd2_(const int*, const int*, float*, const int*, float*, float*, float*, float*, float*, int*);
void cgebd2_(const int*, const int*, tarn::Complex<float>*, const int*, float*, float*, tarn::Complex<float>*,
             tarn::Complex<float>*, tarn::Complex<float>*, int*);
void sorgqr_(const int*, const int*, const int*, float*, const int*, const float*, float*, const int*, int*);
void cungqr_(const int*, const int*, const int*, tarn::Complex<float>*, const int*, const tarn::Complex<float>*,
             tarn::Complex<float>*, const int*, int*);
void sorglq_(const int*, const int*, const int*, float*, const int*, const float*, float*, const int*, int*);
void cunglq_(const int*, const int*, const int*, tarn::Complex<float>*, const int*, const tarn::Complex<float>*,
             tarn::Complex<float>*, const int*, int*);
void sormqr_(const char*, const char*, const int*, const int*, const int*, const float*, const int*, const float*,
             float*, const int*, float*, const int*, int*, std::size_t, std::size_t);
void cunmqr_(const char*, const char*, const int*, const int*, const int*, const tarn::Complex<float>*, const int*,
             const tarn::Complex<float>*, tarn::Complex<float>*, const int*, tarn::Complex<float>*, const int*, int*,
             std::size_t, std::size_t);
void sormlq_(const char*, const char*, const int*, const int*, const int*, const float*, const int*, const float*,
             float*, const int*, float*, const int*, int*, std::size_t, std::size_t);
void cunmlq_(const char*, const char*, const int*, const int*, const int*, const tarn::Complex<float>*, const int*,
             const tarn::Complex<float>*, tarn::Complex<float>*, const int*, tarn::Complex<float>*, const int*, int*,
             std::size_t, std::size_t);
void sormrq_(const char*, const char*, const int*, const int*, const int*, const float*, const int*, const float*,
             float*, const int*, float*, const int*, int*, std::size_t, std::size_t);
void cunmrq_(const char*, const char*, const int*, const int*, const int*, const tarn::Complex<float>*, const int*,
             const tarn::Complex<float>*, tarn::Complex<float>*, const int*, tarn::Complex<float>*, const int*, int*,
             std::size_t, std::size_t);
void slarfg_(const int*, float*, float*, const int*, float*);
void clarfg_(const int*, tarn::Complex<float>*, tarn::Complex<float>*, const int*, tarn::Complex<float>*);
void slarft_(const char*, const char*, const int*, const int*, const float*, const int*, const float*, float*,
             const int*, std::size_t, std::size_t);
void clarft_(const char*, const char*, const int*, const int*, const tarn::Complex<float>*, const int*,
             const tarn::Complex<float>*, tarn::Complex<float>*, const int*, std::size_t, std::size_t);
void slarfb_(const char*, const char*, const char*, const char*, const int*, const int*, const int*, const float*,
             const int*, const float*, const int*, float*, const int*, float*, const int*, std::size_t, std::size_t,
             std::size_t, std::size_t);
void clarfb_(const char*, const char*, const char*, const char*, const int*, const int*, const int*,
             const tarn::Complex<float>*, const int*, const tarn::Complex<float>*, const int*, tarn::Complex<float>*,
             const int*, tarn::Complex<float>*, const int*, std::size_t, std::size_t, std::size_t, std::size_t);
void clacgv_(const int*, tarn::Complex<float>*, const int*);
void slartg_(const float*, const float*, float*, float*, float*);
void slas2_(const float*, const float*, const float*, float*, float*);
void slasv2_(const float*, const float*, const float*, float*, float*, float*, float*, float*, float*);
void slasq1_(const int*, float*, float*, float*, int*);
void sgemv_(const char*, const int*, const int*, const float*, const float*, const int*, const float*, const int*,
            const float*, float*, const int*, std::size_t);
void cgemv_(const char*, const int*, const int*, const tarn::Complex<float>*, const tarn::Complex<float>*, const int*,
            const tarn::Complex<float>*, const int*, const tarn::Complex<float>*, tarn::Complex<float>*, const int*,
            std::size_t);
void sgemm_(const char*, const char*, const int*, const int*, const int*, const float*, const float*, const int*,
            const float*, const int*, const float*, float*, const int*, std::size_t, std::size_t);
void cgemm_(const char*, const char*, const int*, const int*, const int*, const tarn::Complex<float>*,
            const tarn::Complex<float>*, const int*, const tarn::Complex<float>*, const int*,
            const tarn::Complex<float>*, tarn::Complex<float>*, const int*, std::size_t, std::size_t);
void strmm_(const char*, const char*, const char*, const char*, const int*, const int*, const float*, const float*,
            const int*, float*, const int*, std::size_t, std::size_t, std::size_t, std::size_t);
void ctrmm_(const char*, const char*, const char*, const char*, const int*, const int*, const tarn::Complex<float>*,
            const tarn::Complex<float>*, const int*, tarn::Complex<float>*, const int*, std::size_t, std::size_t,
            std::size_t, std::size_t);
void strsm_(const char*, const char*, const char*, const char*, const int*, const int*, const float*, const float*,
            const int*, float*, const int*, std::size_t, std::size_t, std::size_t, std::size_t);
void ctrsm_(const char*, const char*, const char*, const char*, const int*, const int*, const tarn::Complex<float>*,
            const tarn::Complex<float>*, const int*, tarn::Complex<float>*, const int*, std::size_t, std::size_t,
            std::size_t, std::size_t);
void saxpy_(const int*, const float*, const float*, const int*, float*, const int*);
void caxpy_(const int*, const tarn::Complex<float>*, const tarn::Complex<float>*, const int*, tarn::Complex<float>*,
            const int*);
void scopy_(const int*, const float*, const int*, float*, const int*);
void ccopy_(const int*, const tarn::Complex<float>*, const int*, tarn::Complex<float>*, const int*);
void sscal_(const int*, const float*, float*, const int*);
void cscal_(const int*, const tarn::Complex<float>*, tarn::Complex<float>*, const int*);

} // extern "C"
