#include "trial.h"

#include "../progress.h"
#include "routine.h"

#include <algorithm>

namespace tarn::bench {

namespace {

/// How much faster than in the larger trial the operations may become at most.
constexpr double rateGrowth = 8;

/// A routine's call at a part of a size.
struct Trial
{
    Trial(const Routine& routine, char type, const Dimensions& size, int parts)
    {
        const auto part = [parts](int n) { return (n + parts - 1) / parts; };
        const Dimensions d = {part(size.m), part(size.n), part(size.k), part(size.nrhs)};
        flops = routine.flops(d);
        seconds = flops > 0 ? routine.once(type, d) : 0;
    }

    double flops, seconds;
};

} // namespace

double extrapolated(double flops, const double (&trialFlops)[2], const double (&seconds)[2])
{
    // a flops + b size, where the size doubles from one trial to the next and is eight times that in the end.
    const double rate = trialFlops[1] / seconds[1];
    const double perFlop = std::clamp((seconds[1] - 2 * seconds[0]) / (trialFlops[1] - 2 * trialFlops[0]),
                                      1 / (rateGrowth * rate), 1 / rate);
    return perFlop * flops + 8 * (seconds[1] - perFlop * trialFlops[1]);
}

double expectedSeconds(const std::string& name, char type, const Dimensions& size)
{
    if (!tool::showsProgress())
        return 0;
    const std::vector<Routine> known = routines();
    const auto routine = std::find_if(known.begin(), known.end(), [&](const Routine& r) { return r.name == name; });
    if (routine == known.end())
        return 0;
    const Trial small(*routine, type, size, 16), large(*routine, type, size, 8);
    if (small.seconds == 0 || large.seconds == 0 || large.flops <= 2 * small.flops)
        return 0;
    return extrapolated(routine->flops(size), {small.flops, large.flops}, {small.seconds, large.seconds});
}

} // namespace tarn::bench
