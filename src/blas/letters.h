// The character options of LAPACK and BLAS.
#pragma once

#include <string_view>
#include <tarndev/Complex>

namespace tarn {

/// Upper-case form of an ASCII letter, whatever the locale.
constexpr char upper(char letter) { return letter >= 'a' && letter <= 'z' ? char(letter - 'a' + 'A') : letter; }

/// True if the letter stands in `letters`.
constexpr bool isOneOf(char letter, std::string_view letters) { return letters.find(letter) != letters.npos; }

/// Transposition letter on the real path: "C" means "T".
constexpr char realTransChar(char trans) { return upper(trans) == 'C' ? 'T' : trans; }

/// Transposition letter on the complex path: "T" means "C".
constexpr char complexTransChar(char trans) { return upper(trans) == 'T' ? 'C' : trans; }

/// The one of the two that fits the element type.
template <class T>
constexpr char transChar(char trans)
{
    return isComplex<T> ? complexTransChar(trans) : realTransChar(trans);
}

} // namespace tarn
