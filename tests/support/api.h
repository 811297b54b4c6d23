// The exported LAPACK routines by element type, on the library's own element types.
#pragma once

#include "tarn_lapack.h"

#include <tarndev/Complex>

#include <string>

namespace test {

template <class T>
struct Api;

#define TARN_ROUTINES(T, X)                                                                                            \
    template <>                                                                                                        \
    struct Api<T>                                                                                                      \
    {                                                                                                                  \
        static constexpr auto getrf = tarn##X##getrf, deviceGetrf = tarnDevice##X##getrf;                              \
        static constexpr auto gesv = tarn##X##gesv, deviceGesv = tarnDevice##X##gesv;                                  \
        static constexpr auto geqrf = tarn##X##geqrf, deviceGeqrf = tarnDevice##X##geqrf;                              \
        static constexpr auto gels = tarn##X##gels, deviceGels = tarnDevice##X##gels;                                  \
        static constexpr auto gglse = tarn##X##gglse, deviceGglse = tarnDevice##X##gglse;                              \
        static constexpr auto gesvd = tarn##X##gesvd, deviceGesvd = tarnDevice##X##gesvd;                              \
    };

TARN_ROUTINES(float, S)
TARN_ROUTINES(tarn::Complex<float>, C)

/// An element address as the C interface names it.
inline float* native(float* p) { return p; }
inline double* native(double* p) { return p; }
inline tarnFloatComplex* native(tarn::Complex<float>* p) { return reinterpret_cast<tarnFloatComplex*>(p); }
inline tarnDoubleComplex* native(tarn::Complex<double>* p) { return reinterpret_cast<tarnDoubleComplex*>(p); }

/// An element as the C interface names it.
inline float native(float x) { return x; }
inline double native(double x) { return x; }
inline tarnFloatComplex native(tarn::Complex<float> x) { return {x.real(), x.imag()}; }
inline tarnDoubleComplex native(tarn::Complex<double> x) { return {x.real(), x.imag()}; }

/// The library up for the length of a scope.
struct Initialized
{
    Initialized() : status(tarnInitialize()) {}
    ~Initialized() { tarnShutdown(); }
    tarnStatus status;
};

} // namespace test
