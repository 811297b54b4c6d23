#pragma once
/// Copying and filling memory. One core cannot draw the memory's full bandwidth, so large operands use several.

#include <cstddef>

namespace tarn::soft {

/// memcpy
void copyMemory(char* dst, const char* src, std::size_t bytes);

/// Copies `height` rows of `width` bytes whose starts lie a pitch apart, in bytes.
void copyRows(char* dst, std::size_t dstPitch, const char* src, std::size_t srcPitch, std::size_t width,
              std::size_t height);

/// memset
void fillMemory(char* dst, int value, std::size_t bytes);

} // namespace tarn::soft
