#include "checks.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "parallel.h"

namespace tarn::soft {

/// A guard byte follows from its address, so that a zone may start anywhere.
static char guardByte(const char* address)
{
    constexpr unsigned char pattern[4] = {0xA5, 0xA5, 0xF5, 0xFF};
    return static_cast<char>(pattern[reinterpret_cast<std::uintptr_t>(address) % 4]);
}

void poison(char* memory, std::size_t bytes)
{
    constexpr std::size_t slice = std::size_t{1} << 20;
    forRanges(static_cast<std::int64_t>(bytes / slice + 1), 4, [=](std::int64_t begin, std::int64_t end) {
        const std::size_t last = std::min(bytes, static_cast<std::size_t>(end) * slice);
        std::size_t at = static_cast<std::size_t>(begin) * slice;
        for (; at + sizeof poisonWord <= last; at += sizeof poisonWord)
            std::memcpy(memory + at, &poisonWord, sizeof poisonWord);
        std::memcpy(memory + at, &poisonWord, last - at);
    });
}

void setGuard(char* memory, std::size_t bytes)
{
    for (char* byte = memory; byte != memory + bytes; ++byte)
        *byte = guardByte(byte);
}

std::size_t firstBrokenByte(const char* memory, std::size_t bytes)
{
    const char* byte = memory;
    while (byte != memory + bytes && *byte == guardByte(byte))
        ++byte;
    return static_cast<std::size_t>(byte - memory);
}

} // namespace tarn::soft
