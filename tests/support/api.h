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
    static constexpr auto geqrf = tarnSgeqrf;
    static constexpr auto deviceGeqrf = tarnDeviceSgeqrf;
    static constexpr auto gels = tarnSgels;
    static constexpr auto deviceGels = tarnDeviceSgels;
    static constexpr auto gglse = tarnSgglse;
    static constexpr auto deviceGglse = tarnDeviceSgglse;
    static constexpr auto gesvd = tarnSgesvd;
    static constexpr auto deviceGesvd = tarnDeviceSgesvd;
};

template <>
struct Api<tarn::Complex<float>>
{
    static constexpr auto getrf = tarnCgetrf;
    static constexpr auto deviceGetrf = tarnDeviceCgetrf;
    static constexpr auto gesv = tarnCgesv;
    static constexpr auto deviceGesv = tarnDeviceCgesv;
    static constexpr auto geqrf = tarnCgeqrf;
    static constexpr auto deviceGeqrf = tarnDeviceCgeqrf;
    static constexpr auto gels = tarnCgels;
    static constexpr auto deviceGels = tarnDeviceCgels;
    static constexpr auto gglse = tarnCgglse;
    static constexpr auto deviceGglse = tarnDeviceCgglse;
    static constexpr auto gesvd = tarnCgesvd;
    static constexpr auto deviceGesvd = tarnDeviceCgesvd;
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
