#pragma once
/// What a checked build does to memory so that faults show: NaN patterns and guard zones.

#include <cstddef>
#include <cstdint>

namespace tarn::soft {

#ifdef TARN_SOFTDEV_CHECKED
constexpr bool checked = true;
#else
constexpr bool checked = false;
#endif

/// Bytes of the gap on each side of an allocation, a guard zone in a checked build. It keeps the end of one allocation
/// from being the start of the next in every build.
constexpr std::size_t guardBytes = 256;

/// What stands in every 4 bytes of memory that nobody has written: a NaN in single and double precision, and no other
/// that anything produces.
constexpr std::uint32_t poisonWord = 0xfffdc3d7;

/// Fills memory with it.
void poison(char* memory, std::size_t bytes);

/// Fills a guard zone with a pattern of its own, which reads as NaN too.
void setGuard(char* memory, std::size_t bytes);

/// Offset of the first byte of a guard zone that was overwritten; `bytes` if none was.
std::size_t firstBrokenByte(const char* memory, std::size_t bytes);

} // namespace tarn::soft
