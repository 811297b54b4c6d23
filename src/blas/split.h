// The cut of the device recursions, which turn most of a triangular or symmetric operation into large gemm calls.
#pragma once

#include <array>
#include <cstdint>

namespace tarn::blas {

/// The two parts of a dimension: size[0] = p leading and size[1] = q trailing elements. A leaf is not cut.
struct Split
{
    int size[2];
    bool isLeaf;
};

/// Cuts d near its middle at a multiple of the block size nb: p = ((d - nb) / (2 nb)) nb + nb, q = d - p. No more than
/// nb elements are a leaf. For d = 1000 and nb = 192: p = 576, q = 424.
constexpr Split splitPoint(int d, int nb)
{
    if (d - nb <= 0)
        return {{d, 0}, true};
    const int p = (d - nb) / (2 * nb) * nb + nb;
    return {{p, d - p}, false};
}

/// Address of element (i, j), zero-based, of a matrix with leading dimension ld: the start of a block.
template <class T>
T* block(T* a, int i, int j, int ld)
{
    return a + i + std::int64_t(j) * ld;
}

/// The two parts of a rectangular operand, cut after p rows or after p columns.
template <class T>
std::array<T*, 2> halves(bool byRows, T* x, int ld, int p)
{
    return {x, byRows ? block(x, p, 0, ld) : block(x, 0, p, ld)};
}

/// The blocks of a square matrix A, cut at (p, p), of which one triangle is stored: diagonal[0] = A11, diagonal[1] =
/// A22, and the off-diagonal block inside the triangle, A12 (p by q) for uplo "U", A21 (q by p) for uplo "L".
template <class T>
struct TriangleBlocks
{
    T* diagonal[2];
    T* offDiagonal;

    TriangleBlocks(char uplo, T* a, int lda, int p)
        : diagonal{a, block(a, p, p, lda)}, offDiagonal(uplo == 'U' ? block(a, 0, p, lda) : block(a, p, 0, lda))
    {}
};

/// The half (0 or 1) of B that alone determines the same half of op(A) B (side "L") or B op(A) (side "R"), A
/// triangular: the trailing one if op(A) is upper triangular and stands on the left, or lower triangular and stands on
/// the right. The other half of the product depends on both halves of B.
constexpr int independentHalf(char side, char uplo, char transa)
{
    const bool upperTriangular = (uplo == 'U') == (transa == 'N');
    return upperTriangular == (side == 'L') ? 1 : 0;
}

/// Block row and block column (0 or 1) of the off-diagonal block inside the triangle: A21 for uplo "L", A12 for "U".
struct OffDiagonalPlace
{
    int row, col;
};

constexpr OffDiagonalPlace offDiagonalPlace(char uplo)
{
    return uplo == 'L' ? OffDiagonalPlace{1, 0} : OffDiagonalPlace{0, 1};
}

} // namespace tarn::blas
