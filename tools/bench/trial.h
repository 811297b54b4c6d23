// How long a long call will take.
#pragma once

#include "problem.h"

#include <string>

namespace tarn::bench {

/// Seconds that a routine of the benchmark's table will take on host pointers; 0 for unknown. Trials at a sixteenth and
/// at an eighth of the size, together a hundredth of the work, tell the rate. m >= n for gels and gesvd. 0 without a
/// trial where no progress is shown.
double expectedSeconds(const std::string& routine, char type, const Dimensions& size);

/// Seconds of so many operations after trials at a sixteenth and at an eighth of the size: what grows with the
/// operations, and what grows with the size alone, as waits do, each have their share.
double extrapolated(double flops, const double (&trialFlops)[2], const double (&seconds)[2]);

} // namespace tarn::bench
