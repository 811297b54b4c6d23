// What several threads get that call at a time, as those of a server do.
#pragma once

#include "problem.h"

#include <complex>

namespace tarn::bench {

/// Calls per second of all threads together, on host pointers.
struct Load
{
    double ours = 0, reference = 0;
};

/// Lets `threads` threads call without a pause, each with operands of its own: some seconds by us, then by the
/// reference library. Overwritten operands are made fresh by the thread that calls. Raises tool::Failure if a call
/// fails.
template <class T>
Load load(const Problem<T>& problem, int threads);

extern template Load load(const Problem<float>&, int);
extern template Load load(const Problem<double>&, int);
extern template Load load(const Problem<std::complex<float>>&, int);
extern template Load load(const Problem<std::complex<double>>&, int);

} // namespace tarn::bench
