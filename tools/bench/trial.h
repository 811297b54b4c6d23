// How long a long call will take.
#pragma once

#include "problem.h"

#include <string>

namespace tarn::bench {

/// Seconds that a routine of the benchmark's table will take on host pointers: a trial at an eighth of the size, some
/// five-hundredth of the work, tells the rate. m >= n for gels and gesvd. 0, without a trial, where no progress is
/// shown.
double expectedSeconds(const std::string& routine, char type, const Dimensions& size);

} // namespace tarn::bench
