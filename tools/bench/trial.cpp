#include "trial.h"

#include "../progress.h"
#include "routine.h"

namespace tarn::bench {

double expectedSeconds(const std::string& routine, char type, const Dimensions& size)
{
    if (!tool::showsProgress())
        return 0;
    const auto part = [](int n) { return (n + 7) / 8; };
    const Dimensions small = {part(size.m), part(size.n), part(size.k), part(size.nrhs)};
    for (const Routine& known : routines())
        if (known.name == routine && known.flops(small) > 0)
            return known.once(type, small) * known.flops(size) / known.flops(small);
    return 0;
}

} // namespace tarn::bench
