// What tells the Hermitian routine of a pair from the symmetric one, so that a pair is one template.
#pragma once

#include <tarndev/Complex>

#include <type_traits>

namespace tarn::blas {

enum class Symmetry
{
    symmetric, ///< A = A^T
    hermitian  ///< A = A^H
};

/// The transposition under which the matrix is its own mirror image.
constexpr char mirrorTrans(Symmetry kind) { return kind == Symmetry::hermitian ? 'C' : 'T'; }

/// Type of the scalars that keep the result's symmetry: real for the Hermitian routines.
template <Symmetry kind, class T>
struct ScalarOf
{
    using type = T;
};

template <class T>
struct ScalarOf<Symmetry::hermitian, T>
{
    using type = Real<T>;
};

template <Symmetry kind, class T>
using Scalar = typename ScalarOf<kind, T>::type;

/// Such a scalar as an element.
template <class T, class S>
constexpr T asElement(S x)
{
    if constexpr (std::is_same_v<S, T>)
        return x;
    else
        return T(x, S(0));
}

} // namespace tarn::blas
