#include "dropin.h"

#include "../dropin_library.h"
#include "../failure.h"
#include "../lapack.h"
#include "../timing.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

#include <dlfcn.h>

namespace tarn::bench {

namespace {

constexpr int order = 2, calls = 200'000, rounds = 15;

/// The least nanoseconds of a call over the rounds.
struct Times
{
    double direct = std::numeric_limits<double>::infinity(), dropin = direct;
};

/// Times call(routine) with the CPU library's routine and with that of the drop-in library in turns.
template <class Routine, class Call>
Times time(void* library, const char* name, Routine* direct, const Call& call)
{
    auto* const dropin = reinterpret_cast<Routine*>(dlsym(library, name));
    if (!dropin)
        throw tool::Failure(fmt::format("the drop-in library has no {}", name));
    const auto nanoseconds = [&](Routine* routine) {
        return 1e9 / calls * tool::secondsOf([&] {
                   for (int i = 0; i < calls; ++i)
                       call(routine);
               });
    };
    Times times;
    for (int round = 0; round < rounds; ++round) {
        times.direct = std::min(times.direct, nanoseconds(direct));
        times.dropin = std::min(times.dropin, nanoseconds(dropin));
    }
    return times;
}

void print(const char* name, const Times& times)
{
    fmt::print("{:<8}{:>10.1f}{:>12.1f}{:>12.1f}\n", name, times.direct, times.dropin, times.dropin - times.direct);
}

} // namespace

int benchDropin()
{
    void* const library = dlopen(tool::dropinLibrary().c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!library)
        throw tool::Failure(dlerror());
    const int n = order, one = 1;
    const float unit = 1, zero = 0;
    const float a[order * order] = {1, 0, 0, 1}; // its own LU factors
    float lu[order * order] = {1, 0, 0, 1}, c[order * order];
    int pivots[order], info = 0;

    fmt::print("{:<8}{:>10}{:>12}{:>12}   nanoseconds a call, order {}\n", "routine", "directly", "by drop-in", "more",
               order);
    print("sgemm", time(library, "sgemm_", &tool::sgemm_, [&](tool::FortranGemm<float>* gemm) {
              gemm("N", "N", &n, &n, &n, &unit, a, &n, a, &n, &zero, c, &n, 1, 1);
          }));
    print("sgemv", time(library, "sgemv_", &tool::sgemv_, [&](tool::FortranGemv<float>* gemv) {
              gemv("N", &n, &n, &unit, a, &n, a, &one, &zero, c, &one, 1);
          }));
    print("sgetrf", time(library, "sgetrf_", &tool::sgetrf_,
                         [&](tool::FortranGetrf<float>* getrf) { getrf(&n, &n, lu, &n, pivots, &info); }));
    return 0;
}

} // namespace tarn::bench
