#include "checks.h"

#include <cstdint>

#include "memory_copy.h"

namespace tarn::soft {

/// A guard byte follows from its address, so that a zone may start anywhere.
static char guardByte(const char* address)
{
    constexpr unsigned char pattern[4] = {0xA5, 0xA5, 0xF5, 0xFF};
    return static_cast<char>(pattern[reinterpret_cast<std::uintptr_t>(address) % 4]);
}

void poison(char* memory, std::size_t bytes) { fillMemory(memory, 0xFF, bytes); }

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
