#include "../../least_squares.h"
#include "../../timing.h"
#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// A x = c in the sense of least squares, m equations on half as many unknowns, subject to k constraints, a quarter of
/// m.
struct Gglse
{
    static Dimensions dimensions(int size, int) { return {size, std::max(1, size / 2), size / 4, 0}; }
    static double flops(const Dimensions& d) { return tool::gglseFlops(d.m, d.n, d.k); }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.m, d.n, 1), randomMatrix<T>(d.k, d.n, 2), randomMatrix<T>(d.m, 1, 3),
                      randomMatrix<T>(d.k, 1, 4), Matrix<T>(d.n, 1)};
        p.overwritten = {0, 1, 2, 3, 4};
        const int ldb = p.operands[1].ld();
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnSgglse, nullptr, tarnCgglse, nullptr), d.m, d.n, d.k, x[0], d.m, x[1], ldb, x[2],
                        x[3], x[4]);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceSgglse, nullptr, tarnDeviceCgglse, nullptr), d.m, d.n, d.k, x[0], d.m, x[1],
                        ldb, x[2], x[3], x[4]);
        };
        p.reference = [=](const Arrays<T>& x) {
            reference::gglse<T>(d.m, d.n, d.k, x[0], d.m, x[1], ldb, x[2], x[3], x[4]);
        };
        p.error = [](const Problem<T>& before, const Outcome<T>& after) {
            return tool::constrainedBackwardError(before.operands[0], before.operands[2], before.operands[1],
                                                  before.operands[3], after.operand[4]);
        };
        return p;
    }
};

} // namespace

Routine gglse() { return describe<Gglse, float, std::complex<float>>("gglse", reference::lapack, leastSquaresBound); }

} // namespace tarn::bench
