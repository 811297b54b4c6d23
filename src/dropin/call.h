// What the families of routines have in common.
//
// A family is a structure whose members are the arguments of one call, by value and for matrices stored by columns:
//
//   Device            the type of the library's function that computes it
//   kind()            which limits count for it
//   flops(), bytes()  its operation count, and the bytes that it moves to the device and back
//   size()            its dimensions, for the report
//   wellFormed()      LAPACK would find nothing wrong with the arguments, and something to do. Any other call is for
//                     the CPU library: it knows best what info to give, whom to tell, and what an empty call means
//   run(device)       computes it on the device
//   byColumns()       BLAS only: turns a call on matrices stored by rows into the same call for storage by columns
//   setOptimalWork(cpu)  LAPACK only, if it has workspace: what the routine leaves in work(1)
#pragma once

#include "elements.h"

#include <array>

namespace tarn::dropin {

/// Routines that gain from the device in the same measure.
enum class Kind
{
    level2,
    level3,
    lu,             ///< getrf, gesv
    qr,             ///< geqrf, gels
    constrained,    ///< gglse
    singularValues, ///< gesvd without vectors
    singularVectors ///< gesvd
};
constexpr int kinds = 7;

enum class Outcome
{
    answered, ///< all results are there
    declined, ///< not for the device, as a look at the arrays told; they are as they were
    failed    ///< the device failed; the arrays are as they were
};

using Size = std::array<int, 3>;

/// tarnGetErrorInfo of the library.
tarnInfo errorInfo();

/// The outcome of a BLAS routine.
inline Outcome outcome(tarnStatus status) { return status == tarnNoError ? Outcome::answered : Outcome::failed; }

/// The outcome of a LAPACK routine, with its info.
inline Outcome outcome(tarnStatus status, int* info)
{
    if (status != tarnNoError && status != tarnDataError)
        return Outcome::failed;
    *info = status == tarnDataError ? errorInfo() : 0;
    return Outcome::answered;
}

} // namespace tarn::dropin
