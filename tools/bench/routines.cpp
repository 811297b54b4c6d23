#include "routine.h"

namespace tarn::bench {

std::vector<Routine> routines()
{
    std::vector<Routine> all = {gemm(), symm(), hemm(), syrk(),  herk(), syr2k(), her2k(), trmm(), trsm(),
                                gemv(), symv(), hemv(), getrf(), gesv(), geqrf(), gels(),  gglse()};
    const std::vector<Routine> decompositions = gesvd();
    all.insert(all.end(), decompositions.begin(), decompositions.end());
    return all;
}

} // namespace tarn::bench
