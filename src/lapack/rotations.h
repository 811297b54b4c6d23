// A plane rotation of two elements of a line, on its way along that line.
#pragma once

#include <lapack/cu/basic>

namespace tarn::kernel {

/// Products rounded by themselves in single precision, never fused with the addition that follows: the bits of a result
/// are those of LAPACK's slasr, on every device.
__device__ __forceinline__ float roundedProduct(float a, float b) { return __fmul_rn(a, b); }
__device__ __forceinline__ double roundedProduct(double a, double b) { return a * b; }

template <class R>
__device__ __forceinline__ Complex<R> roundedProduct(R a, Complex<R> b)
{
    return Complex<R>(roundedProduct(a, b.real()), roundedProduct(a, b.imag()));
}

/// Rotates the element that is done with then, and the one that goes on into the next rotation: elements j and j + 1 of
/// a line on the way forward, j + 1 and j on the way back.
template <bool forward, class T>
__device__ __forceinline__ void rotatePlane(T& done, T& goesOn, Real<T> c, Real<T> s)
{
    const T a = done, b = goesOn;
    if (forward) {
        done = sum(roundedProduct(s, b), roundedProduct(c, a));
        goesOn = difference(roundedProduct(c, b), roundedProduct(s, a));
    } else {
        done = difference(roundedProduct(c, a), roundedProduct(s, b));
        goesOn = sum(roundedProduct(s, a), roundedProduct(c, b));
    }
}

} // namespace tarn::kernel
