#include "../../timing.h"
#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// A X = B for A n by n and B n by nrhs.
struct Gesv
{
    static Dimensions dimensions(int size, int nrhs) { return {0, size, 0, nrhs}; }
    static double flops(const Dimensions& d) { return tool::gesvFlops(d.n, d.nrhs); }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.n, d.n, 1), randomMatrix<T>(d.n, d.nrhs, 2)};
        p.overwritten = {0, 1};
        p.pivots = d.n;
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnSgesv, nullptr, tarnCgesv, nullptr), d.n, d.nrhs, x[0], d.n, x.pivots, x[1], d.n);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceSgesv, nullptr, tarnDeviceCgesv, nullptr), d.n, d.nrhs, x[0], d.n, x.pivots,
                        x[1], d.n);
        };
        p.reference = [=](const Arrays<T>& x) { reference::gesv<T>(d.n, d.nrhs, x[0], d.n, x[1], d.n); };
        p.error = [](const Problem<T>& before, const Outcome<T>& after) {
            return tool::solveBackwardError(before.operands[0], before.operands[1], after.operand[1]);
        };
        return p;
    }
};

} // namespace

Routine gesv() { return describe<Gesv, float, std::complex<float>>("gesv", reference::lapack, lapackBound); }

} // namespace tarn::bench
