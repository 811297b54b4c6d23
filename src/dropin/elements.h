// The element types of the public interface, and what the families of routines ask of them.
#pragma once

#include "tarn_lapack.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace tarn::dropin {

template <class T>
struct ElementTraits
{
    using Real = T;
    static constexpr bool isComplex = false;
};
template <>
struct ElementTraits<tarnFloatComplex>
{
    using Real = float;
    static constexpr bool isComplex = true;
};
template <>
struct ElementTraits<tarnDoubleComplex>
{
    using Real = double;
    static constexpr bool isComplex = true;
};

template <class T>
using Real = typename ElementTraits<T>::Real;
template <class T>
constexpr bool isComplex = ElementTraits<T>::isComplex;

/// Real operations in a multiplication or addition of two elements, as the field counts them.
template <class T>
constexpr double operations = isComplex<T> ? 4 : 1;

template <class T>
bool isZero(T x)
{
    if constexpr (isComplex<T>)
        return x.real == 0 && x.imag == 0;
    else
        return x == 0;
}

template <class T>
T conjugate(T x)
{
    if constexpr (isComplex<T>)
        x.imag = -x.imag;
    return x;
}

/// A letter of a Fortran call, in upper case.
inline char letter(const char* text) { return *text >= 'a' && *text <= 'z' ? char(*text - 'a' + 'A') : *text; }

/// Stands for a letter that no routine takes.
constexpr char noLetter = '?';

inline bool isOneOf(char c, const char* letters) { return c != '\0' && std::strchr(letters, c) != nullptr; }

/// ld is a leading dimension for that many rows.
inline bool fits(int ld, int rows) { return ld >= std::max(1, rows); }

/// The largest real or imaginary part of an m by n matrix in absolute value; NaN if one is NaN.
template <class T>
Real<T> largest(int m, int n, const T* a, int lda)
{
    constexpr std::size_t parts = isComplex<T> ? 2 : 1;
    Real<T> most = 0;
    bool hasNaN = false;
    for (int j = 0; j < n; ++j) {
        const auto* column = reinterpret_cast<const Real<T>*>(a + std::size_t(j) * std::size_t(lda));
        for (std::size_t i = 0; i < parts * std::size_t(m); ++i) {
            most = std::max(most, std::abs(column[i]));
            hasNaN |= column[i] != column[i];
        }
    }
    return hasNaN ? std::nanf("") : most;
}

} // namespace tarn::dropin
