// One routine that the drop-in answers.
#pragma once

#include "report.h"

#include <atomic>

namespace tarn::dropin {

/// A routine under its names, with what has been found under them so far.
struct Routine
{
    const char* name;       ///< sgemm
    const char* symbol;     ///< sgemm_
    const char* cblas;      ///< cblas_sgemm; nobody asks for that of a LAPACK routine
    const char* deviceName; ///< tarnSgemm
    std::atomic<void*> cpu{nullptr}, cpuCblas{nullptr}, device{nullptr};
    Tally tally{};
};

} // namespace tarn::dropin
