// By a model, not measured: a GPU of 30 TFLOP/s behind a bus that moves pageable memory at 12 GB/s, 50 us for a call,
// beside a CPU of 1 TFLOP/s in products and a third of that in factorisations. A product then gains from 83 flops a
// byte on, which a square one has from order 700; one that moves as many bytes as it computes never does. The limits
// keep a distance from that point, where a wrong guess costs little.
#include "limits.h"

namespace tarn::dropin {

const Limit defaultLimits[kinds] = {
    {1e9, 100}, // level 2: half a flop a byte, so never
    {5e8, 100}, // level 3: square products from order 800 on
    {1e9, 60},  // LU: from order 1150 on
    {1e9, 60},  // QR and least squares: from order 900 on
    {2e9, 60},  // with constraints
    {4e9, 0},   // singular values: from order 1150 on
    {1e9, 0},   // singular vectors: from order 360 on
};

} // namespace tarn::dropin
