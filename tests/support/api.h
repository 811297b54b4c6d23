// The exported LAPACK routines by element type, on the library's own element types.
#pragma once

#include "tarn_lapack.h"

#include <tarndev/Complex>

#include <string>

namespace test {

template <class T>
struct Api;

template <>
struct Api<float>
{
    static constexpr auto getrf = tarnSgetrf;
    static constexpr auto deviceGetrf = tarnDeviceSgetrf;
    static constexpr auto gesv = tarnSgesv;
    static constexpr auto deviceGesv = tarnDeviceSgesv;
};

template <>
struct Api<tarn::Complex<float>>
{
    static constexpr auto getrf = tarnCgetrf;
    static constexpr auto deviceGetrf = tarnDeviceCgetrf;
    static constexpr auto gesv = tarnCgesv;
    static constexpr auto deviceGesv = tarnDeviceCgesv;
};

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
