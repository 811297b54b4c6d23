// The text that describes a device.
#include "frame/routine.h"
#include "tarn_lapack.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <string>

using namespace tarn;

namespace {

/// A value in a unit with a prefix.
struct Scaled
{
    double number;
    char prefix; ///< blank for no prefix
};

/// v scaled by powers of `base` until its magnitude lies in [1, base), as far as there are prefixes.
Scaled scaled(double v, double base)
{
    constexpr char large[] = " KMGTPEH", small[] = " munpfae";
    constexpr int last = 7;
    const bool isSmall = v != 0 && std::abs(v) < 1;
    int unit = 0;
    if (isSmall)
        for (; unit < last && std::abs(v) < 1; ++unit)
            v *= base;
    else
        for (; unit < last && base <= std::abs(v); ++unit)
            v *= 1 / base;
    return {v, isSmall ? small[unit] : large[unit]};
}

std::string memoryText(std::size_t bytes)
{
    char text[128];
    const Scaled memory = scaled(double(bytes), 1024);
    std::snprintf(text, sizeof text, "%.0f %cB", memory.number, memory.prefix);
    return text;
}

} // namespace

tarnStatus tarnGetDeviceInfo(int dev, char* buf, int bufsize)
{
    return serviceFrame([&] {
        require(dev >= 0 && dev < supportedDeviceCount(), -1);
        require(buf != nullptr, -2);
        require(bufsize > 0, -3);
        const std::string text = deviceName(dev) + " (" + memoryText(deviceGlobalMemory(dev)) + ")";
        std::strncpy(buf, text.c_str(), std::size_t(bufsize));
        buf[bufsize - 1] = 0;
    });
}
