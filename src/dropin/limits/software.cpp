// Measured on two cores in single precision (docs/performance.md). The software device computes with the CPU BLAS on
// the same cores: products, triangular solves and LU cannot gain from it. The QR factorisation and what stands on it
// do, since the library overlaps its panels with updates and takes wider blocks, and singular vectors gain most.
#include "limits.h"

namespace tarn::dropin {

constexpr double never = std::numeric_limits<double>::infinity();

const Limit defaultLimits[kinds] = {
    {never, 0}, // level 2
    {never, 0}, // level 3
    {never, 0}, // LU
    {7e8, 0},   // QR and least squares: from order 800 on
    {5e9, 0},   // with constraints: from 1800 equations in 900 unknowns on
    {never, 0}, // singular values
    {4e8, 0},   // singular vectors: from order 256 on
};

} // namespace tarn::dropin
