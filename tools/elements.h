// Element types of the tool: float, double and their std::complex, and how each crosses the C interface.
#pragma once

#include "tarn_lapack.h"

#include <complex>
#include <limits>
#include <type_traits>

namespace tarn::tool {

template <class T>
struct ElementTraits
{
    using Real = T;
    using Wide = std::conditional_t<std::is_same_v<T, float>, double, long double>;
};

template <class R>
struct ElementTraits<std::complex<R>>
{
    using Real = R;
    using Wide = std::complex<typename ElementTraits<R>::Wide>;
};

template <class T>
using Real = typename ElementTraits<T>::Real;

/// The type in which residuals of T are computed: double for single precision, long double for double precision.
template <class T>
using Wide = typename ElementTraits<T>::Wide;

template <class T>
inline constexpr bool isComplex = !std::is_same_v<T, Real<T>>;

/// The unit of backward errors: 2^-23 or 2^-52.
template <class T>
inline constexpr double epsilon = std::numeric_limits<Real<T>>::epsilon();

/// The one of four (S, D, C, Z) things that belongs to T.
template <class T, class S, class D, class C, class Z>
constexpr auto select([[maybe_unused]] S s, [[maybe_unused]] D d, [[maybe_unused]] C c, [[maybe_unused]] Z z)
{
    if constexpr (std::is_same_v<T, float>)
        return s;
    else if constexpr (std::is_same_v<T, double>)
        return d;
    else if constexpr (std::is_same_v<T, std::complex<float>>)
        return c;
    else
        return z;
}

/// The one of six things that belongs to T: four of symmetric routines (S, D, C, Z) and two of Hermitian ones (HC, HZ).
template <bool hermitian, class T, class S, class D, class C, class Z, class HC, class HZ>
constexpr auto select([[maybe_unused]] S s, [[maybe_unused]] D d, [[maybe_unused]] C c, [[maybe_unused]] Z z,
                      [[maybe_unused]] HC hc, [[maybe_unused]] HZ hz)
{
    if constexpr (hermitian)
        return select<T>(nullptr, nullptr, hc, hz);
    else
        return select<T>(s, d, c, z);
}

/// The LAPACK letter of T: s, d, c or z.
template <class T>
inline constexpr char letter = select<T>('s', 'd', 'c', 'z');

// An argument as the C interface takes it; the complex types of the two sides share one layout.
template <class A>
constexpr A toC(A argument)
{
    return argument;
}
inline tarnFloatComplex toC(std::complex<float> z) { return {z.real(), z.imag()}; }
inline tarnDoubleComplex toC(std::complex<double> z) { return {z.real(), z.imag()}; }
inline tarnFloatComplex* toC(std::complex<float>* p) { return reinterpret_cast<tarnFloatComplex*>(p); }
inline tarnDoubleComplex* toC(std::complex<double>* p) { return reinterpret_cast<tarnDoubleComplex*>(p); }

/// Calls a routine of the C interface with std::complex scalars and arrays.
template <class Routine, class... Arguments>
tarnStatus call(Routine routine, Arguments... arguments)
{
    return routine(toC(arguments)...);
}

} // namespace tarn::tool
