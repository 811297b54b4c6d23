#include "../../least_squares.h"
#include "../../timing.h"
#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// A X = B by the QR factorisation of A, m by n with m = n, B m by nrhs.
struct Gels
{
    static Dimensions dimensions(int size, int nrhs) { return {size, size, 0, nrhs}; }
    static double flops(const Dimensions& d) { return tool::gelsFlops(d.m, d.n, d.nrhs); }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.m, d.n, 1), randomMatrix<T>(d.m, d.nrhs, 2)};
        p.overwritten = {0, 1};
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnSgels, nullptr, tarnCgels, nullptr), 'N', d.m, d.n, d.nrhs, x[0], d.m, x[1], d.m);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceSgels, nullptr, tarnDeviceCgels, nullptr), 'N', d.m, d.n, d.nrhs, x[0], d.m,
                        x[1], d.m);
        };
        p.reference = [=](const Arrays<T>& x) { reference::gels<T>(d.m, d.n, d.nrhs, x[0], d.m, x[1], d.m); };
        p.error = [](const Problem<T>& before, const Outcome<T>& after) {
            return tool::leastSquaresBackwardError(before.operands[0], before.operands[1], after.operand[1]);
        };
        return p;
    }
};

} // namespace

Routine gels() { return describe<Gels, float, std::complex<float>>("gels", reference::lapack, leastSquaresBound); }

} // namespace tarn::bench
