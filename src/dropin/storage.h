// What becomes of option letters when a matrix stored by rows is taken for its transpose, stored by columns.
#pragma once

#include "elements.h"

namespace tarn::dropin {

inline char otherSide(char side) { return side == 'L' ? 'R' : side == 'R' ? 'L' : noLetter; }

inline char otherTriangle(char uplo) { return uplo == 'U' ? 'L' : uplo == 'L' ? 'U' : noLetter; }

/// Of a symmetric update ("N" and "T"; for real matrices "C" is "T") or of a Hermitian one ("N" and "C").
inline char otherUpdate(char trans, bool isHermitian, bool isComplexElement)
{
    const char transposed = isHermitian ? 'C' : 'T';
    if (trans == 'N')
        return transposed;
    return trans == transposed || (trans == 'C' && !isComplexElement) ? 'N' : noLetter;
}

} // namespace tarn::dropin
