// Version numbers as text.
#pragma once

#include "tarn_lapack.h"

#include <fmt/format.h>

#include <string>

namespace tarn::tool {

/// "14.0.0" for 14000: thousands, hundreds, the rest.
inline std::string libraryVersion()
{
    const int v = tarnGetVersion();
    return fmt::format("{}.{}.{}", v / 1000, v / 100 % 10, v % 100);
}

/// "13.0" for 13000, CUDA's way to count; "unknown" for 0.
inline std::string cudaVersion(int v) { return v == 0 ? "unknown" : fmt::format("{}.{}", v / 1000, v / 10 % 100); }

/// "13.1.2" for 130102, cuBLAS's way to count from release 11 on, and CUDA's before; "unknown" for 0.
inline std::string cublasVersion(int v)
{
    if (v < 100000)
        return cudaVersion(v);
    return fmt::format("{}.{}.{}", v / 10000, v / 100 % 100, v % 100);
}

} // namespace tarn::tool
