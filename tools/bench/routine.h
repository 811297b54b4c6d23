// The table of routines that the benchmark knows.
#pragma once

#include "load.h"
#include "measure.h"

#include <string>
#include <vector>

namespace tarn::bench {

/// Errors in units of eps up to which a result is sound.
constexpr double blasBound = 3, lapackBound = 30, leastSquaresBound = 10;

/// A routine in all its element types.
struct Routine
{
    const char* name;
    std::string types;     ///< letters of s, d, c, z
    const char* reference; ///< library that it is measured against
    double bound;          ///< its errors up to this are sound
    Dimensions (*dimensions)(int size, int nrhs);
    double (*flops)(const Dimensions&); ///< for real elements; complex ones take four times as many
    Timing (*time)(char type, const Dimensions&, int repeats);
    Load (*load)(char type, const Dimensions&, int threads);
    double (*once)(char type, const Dimensions&); ///< seconds of a call on host pointers, 0 if it fails
    int largest = 1 << 20;                        ///< sizes above it take too long for a survey of all routines
};

/**
 * The table's entry for Definition, which has
 *
 *   static Dimensions dimensions(int size, int nrhs);
 *   static double flops(const Dimensions&);
 *   template <class T> static Problem<T> problem(const Dimensions&);
 */
template <class Definition, class... Types>
Routine describe(const char* name, const char* reference, double bound)
{
    const auto time = [](char type, const Dimensions& d, int repeats) {
        Timing result;
        ((type == letter<Types> ? void(result = measure(Definition::template problem<Types>(d), repeats)) : void()),
         ...);
        return result;
    };
    const auto underLoad = [](char type, const Dimensions& d, int threads) {
        Load result;
        ((type == letter<Types> ? void(result = load(Definition::template problem<Types>(d), threads)) : void()), ...);
        return result;
    };
    const auto once = [](char type, const Dimensions& d) {
        double seconds = 0;
        ((type == letter<Types> ? void(seconds = hostSeconds(Definition::template problem<Types>(d))) : void()), ...);
        return seconds;
    };
    return {name, {letter<Types>...}, reference, bound, &Definition::dimensions, &Definition::flops,
            time, underLoad,          once};
}

Routine gemm();
Routine symm();
Routine hemm();
Routine syrk();
Routine herk();
Routine syr2k();
Routine her2k();
Routine trmm();
Routine trsm();
Routine gemv();
Routine symv();
Routine hemv();
Routine getrf();
Routine gesv();
Routine geqrf();
Routine gels();
Routine gglse();
std::vector<Routine> gesvd(); ///< of several pairs of jobs

/// All of them, in the order in which they are printed.
std::vector<Routine> routines();

} // namespace tarn::bench
