// From the element types of the C interface to those of the library: same bits, other names.
#pragma once

#include "tarn_lapack.h"

#include <tarndev/Complex>

namespace tarn {

inline float element(float x) { return x; }
inline double element(double x) { return x; }
inline Complex<float> element(tarnFloatComplex x) { return {x.real, x.imag}; }
inline Complex<double> element(tarnDoubleComplex x) { return {x.real, x.imag}; }

/// The library's type for an element type of the C interface.
template <class T>
using Element = decltype(element(T()));

inline float* elements(float* a) { return a; }
inline double* elements(double* a) { return a; }
inline Complex<float>* elements(tarnFloatComplex* a) { return reinterpret_cast<Complex<float>*>(a); }
inline Complex<double>* elements(tarnDoubleComplex* a) { return reinterpret_cast<Complex<double>*>(a); }

} // namespace tarn
