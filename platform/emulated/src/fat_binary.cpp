#include "fat_binary.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include <zstd.h>

namespace tarn::soft {

namespace {

/// Layout of a fat binary as far as it is read here, little-endian: a header and images one after the other.
struct Header
{
    std::uint32_t magic;
    std::uint16_t version, headerBytes;
    std::uint64_t imageBytes; ///< of all images with their headers
};

struct Image
{
    static constexpr std::uint16_t ptx = 1;

    std::uint16_t kind, version;
    std::uint32_t headerBytes;
    std::uint64_t payloadBytes; ///< padded
    std::uint32_t packedBytes;
    char other[8];
    std::uint32_t architecture; ///< such as 90
    char more[24];
    std::uint64_t fullBytes; ///< once unpacked; there with images that are packed
};

constexpr std::uint32_t fatBinaryMagic = 0xba55ed50;
constexpr std::uint32_t zstdMagic = 0xfd2fb528;

template <class T>
T read(const char* from)
{
    T value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

/// The text of a PTX image, which ends at a zero.
std::string textOf(const Image& image, const char* payload)
{
    if (read<std::uint32_t>(payload) != zstdMagic)
        return std::string(payload, strnlen(payload, image.payloadBytes));
    std::string text(image.fullBytes, '\0');
    if (ZSTD_decompress(text.data(), text.size(), payload, image.packedBytes) != text.size())
        throw std::runtime_error("the PTX of a fat binary cannot be unpacked");
    return text.c_str();
}

} // namespace

std::string ptxOfFatBinary(const void* fatBinary)
{
    const char* at = static_cast<const char*>(fatBinary);
    const auto header = read<Header>(at);
    if (header.magic != fatBinaryMagic)
        throw std::runtime_error("not a fat binary");
    at += header.headerBytes;
    const char *const wanted = std::getenv("TARN_EMULATED_ARCH"), *newest = nullptr;
    for (const char* const end = at + header.imageBytes; at < end;) {
        const auto image = read<Image>(at);
        const bool fits = image.kind == Image::ptx && (!wanted || std::atoi(wanted) == int(image.architecture));
        if (fits && (!newest || read<Image>(newest).architecture < image.architecture))
            newest = at;
        at += image.headerBytes + image.payloadBytes;
    }
    if (!newest)
        throw std::runtime_error("a fat binary without PTX");
    const auto image = read<Image>(newest);
    return textOf(image, newest + image.headerBytes);
}

} // namespace tarn::soft
