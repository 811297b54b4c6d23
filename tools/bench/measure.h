// Times a problem on host pointers, on device pointers, and by the reference library.
#pragma once

#include "problem.h"

#include <complex>

namespace tarn::bench {

/// Median seconds of each way to make the call, and the backward errors of ours in units of eps.
struct Timing
{
    double host = 0, device = 0, reference = 0;
    double hostError = 0, deviceError = 0;
};

/**
 * One warm-up call each, from which the errors come, then `repeats` timed calls each, taken in turns so that a
 * disturbance of the machine meets all three. Overwritten operands are fresh for every call; making them so is not
 * timed. repeats 0: as many as fit about a second a row, at least 3. Raises tool::Failure.
 */
template <class T>
Timing measure(const Problem<T>& problem, int repeats);

/// How many timed calls each `repeats` means if one call of each takes `once` seconds together.
int timedCalls(double once, int repeats);

/// Seconds of the best of three calls on host pointers after one to warm up, 0 if one fails.
template <class T>
double hostSeconds(const Problem<T>& problem);

extern template Timing measure(const Problem<float>&, int);
extern template Timing measure(const Problem<double>&, int);
extern template Timing measure(const Problem<std::complex<float>>&, int);
extern template Timing measure(const Problem<std::complex<double>>&, int);
extern template double hostSeconds(const Problem<float>&);
extern template double hostSeconds(const Problem<double>&);
extern template double hostSeconds(const Problem<std::complex<float>>&);
extern template double hostSeconds(const Problem<std::complex<double>>&);

} // namespace tarn::bench
