#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// P A = L U for A m by n, m = n.
struct Getrf
{
    static Dimensions dimensions(int size, int) { return {size, size, 0, 0}; }
    static double flops(const Dimensions& d) { return double(d.m) * d.n * d.n - double(d.n) * d.n * d.n / 3; }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.m, d.n, 1)};
        p.overwritten = {0};
        p.pivots = std::min(d.m, d.n);
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnSgetrf, nullptr, tarnCgetrf, nullptr), d.m, d.n, x[0], d.m, x.pivots);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceSgetrf, nullptr, tarnDeviceCgetrf, nullptr), d.m, d.n, x[0], d.m, x.pivots);
        };
        p.reference = [=](const Arrays<T>& x) { reference::getrf<T>(d.m, d.n, x[0], d.m); };
        p.error = [](const Problem<T>& before, const Outcome<T>& after) {
            return error(before.operands[0], after.operand[0], after.pivots);
        };
        return p;
    }

    /// norm2((P A - L U) w) / (max(m, n) normF(A) eps), w a probe
    template <class T>
    static double error(const Matrix<T>& a, const Matrix<T>& factors, const std::vector<int>& pivots)
    {
        const Matrix<Wide<T>> w = probe<T>(a.cols);
        Matrix<Wide<T>> permuted = product('N', a, w);
        for (std::size_t i = 0; i < pivots.size(); ++i) {
            if (pivots[i] < 1 || pivots[i] > a.rows)
                return std::numeric_limits<double>::infinity();
            std::swap(permuted(int(i), 0), permuted(pivots[i] - 1, 0));
        }
        const double bound = std::max(a.rows, a.cols) * normF(a) * epsilon<T>;
        return ratio(distance(timesFactors(factors, w), permuted), bound);
    }

    /// L (U w) from the factors of an LU factorisation, m by n with m >= n.
    template <class T>
    static Matrix<Wide<T>> timesFactors(const Matrix<T>& factors, const Matrix<Wide<T>>& w)
    {
        Matrix<T> l = factors, u(factors.cols, factors.cols);
        for (int j = 0; j < factors.cols; ++j) {
            std::copy(l.column(j), l.column(j) + j + 1, u.column(j));
            std::fill(l.column(j), l.column(j) + j, T(0));
            l(j, j) = 1;
        }
        return product('N', l, product('N', u, w));
    }
};

} // namespace

Routine getrf() { return describe<Getrf, float, std::complex<float>>("getrf", reference::lapack, lapackBound); }

} // namespace tarn::bench
