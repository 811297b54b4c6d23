// From which size on a call goes to the device.
#pragma once

#include "call.h"

#include <limits>

namespace tarn::dropin {

/// A call goes to the device if it reaches both.
struct Limit
{
    double flops;        ///< operations of the call
    double flopsPerByte; ///< operations for each byte that is moved to the device and back
};

/// The limits of each kind, in the order of Kind, for the device that this build serves (limits/software.cpp and
/// limits/cuda.cpp).
extern const Limit defaultLimits[kinds];

/// The limits in force. Infinite until the environment has been read, so that a call from another library's
/// constructors stays on the CPU.
extern Limit limits[kinds];

/// Takes the limits from TARN_BLAS_MIN_FLOPS and TARN_BLAS_MIN_FLOPS_PER_BYTE where these are set, for all kinds alike,
/// and else from the defaults.
void readLimits();

inline const Limit& limitOf(Kind kind) { return limits[int(kind)]; }

} // namespace tarn::dropin
