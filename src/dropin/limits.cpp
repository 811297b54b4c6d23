#include "limits.h"

#include <cstdio>
#include <cstdlib>

namespace tarn::dropin {

namespace {

constexpr double never = std::numeric_limits<double>::infinity();

/// The number, "inf" included, that the variable holds, or else `otherwise`.
double fromEnvironment(const char* variable, double otherwise)
{
    const char* text = std::getenv(variable);
    if (!text || !*text)
        return otherwise;
    char* end = nullptr;
    const double number = std::strtod(text, &end);
    if (*end == '\0' && number >= 0)
        return number;
    std::fprintf(stderr, "tarn_blas: %s=%s is no number that counts; the default holds\n", variable, text);
    return otherwise;
}

} // namespace

Limit limits[kinds] = {{never, 0}, {never, 0}, {never, 0}, {never, 0}, {never, 0}, {never, 0}, {never, 0}};

void readLimits()
{
    for (int kind = 0; kind < kinds; ++kind) {
        limits[kind].flops = fromEnvironment("TARN_BLAS_MIN_FLOPS", defaultLimits[kind].flops);
        limits[kind].flopsPerByte = fromEnvironment("TARN_BLAS_MIN_FLOPS_PER_BYTE", defaultLimits[kind].flopsPerByte);
    }
}

} // namespace tarn::dropin
