// Sizes of memory blocks and matrices.
#pragma once

#include <cstdint>

/// Dimensions of a block in elements: rows per column, columns per slice, slices. A vector is n by 1 by 1.
struct Extent
{
    int rows = 0;
    int cols = 0;
    int slices = 0;
};

/// Number of elements.
inline std::int64_t count(Extent e) { return std::int64_t(e.rows) * e.cols * e.slices; }

/// Distances inside a strided block in elements: from column to column, and from slice to slice.
struct BlockPitch
{
    std::int64_t column = 0;
    std::int64_t slice = 0;
};
