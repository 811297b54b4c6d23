#include "routine.h"

namespace tarn::bench {

std::vector<Routine> routines()
{
    return {gemm(), symm(), hemm(), syrk(), herk(), syr2k(), her2k(),
            trmm(), trsm(), gemv(), symv(), hemv(), getrf(), gesv()};
}

} // namespace tarn::bench
