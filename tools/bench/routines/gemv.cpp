#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// y := alpha A^T x + beta y, A n by n: the product that the library has a kernel for.
struct Gemv
{
    static Dimensions dimensions(int size, int) { return {size, size, 0, 0}; }
    static double flops(const Dimensions& d) { return 2.0 * d.m * d.n; }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        const T alpha = scalar<T>(1.5, 0.5), beta = scalar<T>(-0.5, 0.25);
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.m, d.n, 1), randomMatrix<T>(d.n, 1, 2), randomMatrix<T>(d.m, 1, 3)};
        p.overwritten = {2};
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnSgemv, tarnDgemv, tarnCgemv, tarnZgemv), 'T', d.m, d.n, alpha, x[0], d.m, x[1], 1,
                        beta, x[2], 1);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceSgemv, tarnDeviceDgemv, tarnDeviceCgemv, tarnDeviceZgemv), 'T', d.m, d.n,
                        alpha, x[0], d.m, x[1], 1, beta, x[2], 1);
        };
        p.reference = [=](const Arrays<T>& x) {
            reference::gemv<T>('T', d.m, d.n, alpha, x[0], d.m, x[1], 1, beta, x[2], 1);
        };
        p.error = [=](const Problem<T>& before, const Outcome<T>& after) {
            return error(before.operands, alpha, beta, after.operand[2]);
        };
        return p;
    }

    /// norm2(y - yref) / ((sqrt(n + 2) |alpha| normF(A) norm2(x) + 2 |beta| norm2(y)) eps)
    template <class T>
    static double error(const std::vector<Matrix<T>>& x, T alpha, T beta, const Matrix<T>& result)
    {
        Matrix<Wide<T>> expected = product('T', x[0], tool::convert<Wide<T>>(x[1]), Wide<T>(alpha));
        const Wide<T> factor(beta);
        for (int i = 0; i < expected.rows; ++i)
            expected(i, 0) += factor * Wide<T>(x[2](i, 0));
        return updateError<T>(tool::convert<Wide<T>>(result), expected, x[0].cols,
                              std::abs(alpha) * normF(x[0]) * normF(x[1]), std::abs(beta) * normF(x[2]));
    }
};

} // namespace

Routine gemv()
{
    return describe<Gemv, float, double, std::complex<float>, std::complex<double>>("gemv", reference::blas, blasBound);
}

} // namespace tarn::bench
