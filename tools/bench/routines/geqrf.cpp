#include "../../timing.h"
#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// A = Q R for A m by n, m = n.
struct Geqrf
{
    static Dimensions dimensions(int size, int) { return {size, size, 0, 0}; }
    static double flops(const Dimensions& d) { return tool::geqrfFlops(d.m, d.n); }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.m, d.n, 1), Matrix<T>(std::min(d.m, d.n), 1)};
        p.overwritten = {0, 1};
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnSgeqrf, nullptr, tarnCgeqrf, nullptr), d.m, d.n, x[0], d.m, x[1]);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceSgeqrf, nullptr, tarnDeviceCgeqrf, nullptr), d.m, d.n, x[0], d.m, x[1]);
        };
        p.reference = [=](const Arrays<T>& x) { reference::geqrf<T>(d.m, d.n, x[0], d.m, x[1]); };
        p.error = [](const Problem<T>& before, const Outcome<T>& after) {
            return error(before.operands[0], after.operand[0], after.operand[1]);
        };
        return p;
    }

    /// norm2((A - Q R) w) / (m normF(A) eps), w a probe
    template <class T>
    static double error(const Matrix<T>& a, const Matrix<T>& factors, const Matrix<T>& tau)
    {
        Matrix<T> r = factors;
        for (int j = 0; j < r.cols; ++j)
            std::fill(r.column(j) + std::min(j + 1, r.rows), r.column(j) + r.rows, T(0));
        const Matrix<Wide<T>> w = probe<T>(a.cols);
        Matrix<Wide<T>> y = product('N', r, w);
        for (int i = tau.rows - 1; i >= 0; --i)
            reflect(factors, i, Wide<T>(tau(i, 0)), y);
        return ratio(distance(y, product('N', a, w)), a.rows * normF(a) * epsilon<T>);
    }

    /// y := (I - tau v v^H) y, v with 1 at i and what stands below the diagonal of column i
    template <class T>
    static void reflect(const Matrix<T>& factors, int i, Wide<T> tau, Matrix<Wide<T>>& y)
    {
        Matrix<T> v(factors.rows - i, 1);
        std::copy(factors.column(i) + i, factors.column(i) + factors.rows, v.column(0));
        v(0, 0) = 1;
        Matrix<Wide<T>> below(v.rows, 1);
        std::copy(y.column(0) + i, y.column(0) + y.rows, below.column(0));
        tool::multiplyAdd(below, -tau, 'N', v, product('C', v, below));
        std::copy_n(below.column(0), below.rows, y.column(0) + i);
    }
};

} // namespace

Routine geqrf() { return describe<Geqrf, float, std::complex<float>>("geqrf", reference::lapack, lapackBound); }

} // namespace tarn::bench
