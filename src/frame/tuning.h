// Block sizes: a base per element type and device generation, times a multiplier per routine and generation.
#pragma once

namespace tarn {

/// Base block size in elements for capability value `cap` (10 to 13: first generation; else later). It also aligns
/// leading dimensions. T: float, double, Complex<float>, Complex<double>, int.
template <class T>
int baseBlockSize(int cap);

/// Routines with a block size of their own; the six symmetric and Hermitian ones and trmm share one.
enum class Blocked
{
    getrf,
    trsm,
    level3, ///< trmm, symm, hemm, syrk, herk, syr2k, her2k
    qr,     ///< geqrf, gelqf, gerqf, ormqr, ormlq, ormrq, orgqr, orglq
    gebrd
};

/// Block size in columns of a routine for elements T on the current device of the thread.
template <class T>
int blockSize(Blocked routine);

} // namespace tarn
