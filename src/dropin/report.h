// What became of the calls, for TARN_BLAS_LOG.
#pragma once

#include "call.h"

#include <mutex>

namespace tarn::dropin {

/// Where a call went.
enum class Way
{
    device,
    cpu,
    fellBack ///< to the device, which failed, and then to the CPU
};

/// The calls of one routine.
struct Tally
{
    std::mutex mutex;        ///< guards what follows
    long long calls[3] = {}; ///< by Way
    double seconds[3] = {};  ///< by Way; of the failed attempt too
    double flops[3] = {};    ///< by Way
    double largestFlops = 0;
    Size largest = {}; ///< dimensions of the call with the most operations
};

/// Whether calls are counted: TARN_BLAS_LOG is set. Does not change once the drop-in is loaded.
extern bool reporting;

void count(Tally& tally, Way way, double seconds, double flops, Size size);

/// Appends a line of JSON to the file that TARN_BLAS_LOG names, if a call was counted.
void writeReport();

/// Forgets all counts.
void clearReport();

/// Seconds since some moment.
double now();

} // namespace tarn::dropin
