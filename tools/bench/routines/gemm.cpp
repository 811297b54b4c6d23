#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// C := alpha A B + beta C, all n by n.
struct Gemm
{
    static Dimensions dimensions(int size, int) { return {size, size, size, 0}; }
    static double flops(const Dimensions& d) { return 2.0 * d.m * d.n * d.k; }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        const T alpha = scalar<T>(1.5, 0.5), beta = scalar<T>(-0.5, 0.25);
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.m, d.k, 1), randomMatrix<T>(d.k, d.n, 2), randomMatrix<T>(d.m, d.n, 3)};
        p.overwritten = {2};
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnSgemm, tarnDgemm, tarnCgemm, tarnZgemm), 'N', 'N', d.m, d.n, d.k, alpha, x[0],
                        d.m, x[1], d.k, beta, x[2], d.m);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceSgemm, tarnDeviceDgemm, tarnDeviceCgemm, tarnDeviceZgemm), 'N', 'N', d.m,
                        d.n, d.k, alpha, x[0], d.m, x[1], d.k, beta, x[2], d.m);
        };
        p.reference = [=](const Arrays<T>& x) {
            reference::gemm<T>('N', 'N', d.m, d.n, d.k, alpha, x[0], d.m, x[1], d.k, beta, x[2], d.m);
        };
        p.error = [=](const Problem<T>& before, const Outcome<T>& after) {
            return error(before.operands, alpha, beta, after.operand[2]);
        };
        return p;
    }

    /// norm2((C - Cref) w) / ((sqrt(k + 2) |alpha| normF(A) normF(B) + 2 |beta| normF(C)) eps), w a probe
    template <class T>
    static double error(const std::vector<Matrix<T>>& x, T alpha, T beta, const Matrix<T>& result)
    {
        const Matrix<Wide<T>> w = probe<T>(result.cols);
        Matrix<Wide<T>> expected = product('N', x[0], product('N', x[1], w), Wide<T>(alpha));
        tool::multiplyAdd(expected, Wide<T>(beta), 'N', x[2], w);
        return updateError<T>(product('N', result, w), expected, x[0].cols, std::abs(alpha) * normF(x[0]) * normF(x[1]),
                              std::abs(beta) * normF(x[2]));
    }
};

} // namespace

Routine gemm()
{
    return describe<Gemm, float, double, std::complex<float>, std::complex<double>>("gemm", reference::blas, blasBound);
}

} // namespace tarn::bench
