#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// C := alpha A B + beta C, the lower triangle of A stored, symmetric or Hermitian; all n by n.
template <bool hermitian>
struct Symm
{
    static Dimensions dimensions(int size, int) { return {size, size, 0, 0}; }
    static double flops(const Dimensions& d) { return 2.0 * d.m * d.m * d.n; }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        const T alpha = scalar<T>(1.5, 0.5), beta = scalar<T>(-0.5, 0.25);
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.m, d.m, 1), randomMatrix<T>(d.m, d.n, 2), randomMatrix<T>(d.m, d.n, 3)};
        p.overwritten = {2};
        p.host = [=](const Arrays<T>& x) {
            const auto routine = select<hermitian, T>(tarnSsymm, tarnDsymm, tarnCsymm, tarnZsymm, tarnChemm, tarnZhemm);
            return call(routine, 'L', 'L', d.m, d.n, alpha, x[0], d.m, x[1], d.m, beta, x[2], d.m);
        };
        p.device = [=](const Arrays<T>& x) {
            const auto routine = select<hermitian, T>(tarnDeviceSsymm, tarnDeviceDsymm, tarnDeviceCsymm,
                                                      tarnDeviceZsymm, tarnDeviceChemm, tarnDeviceZhemm);
            return call(routine, 'L', 'L', d.m, d.n, alpha, x[0], d.m, x[1], d.m, beta, x[2], d.m);
        };
        p.reference = [=](const Arrays<T>& x) {
            reference::symm<hermitian, T>('L', 'L', d.m, d.n, alpha, x[0], d.m, x[1], d.m, beta, x[2], d.m);
        };
        p.error = [=](const Problem<T>& before, const Outcome<T>& after) {
            return error(before.operands, alpha, beta, after.operand[2]);
        };
        return p;
    }

    /// norm2((C - Cref) w) / ((sqrt(m + 2) |alpha| normF(A) normF(B) + 2 |beta| normF(C)) eps), w a probe
    template <class T>
    static double error(const std::vector<Matrix<T>>& x, T alpha, T beta, const Matrix<T>& result)
    {
        const Matrix<T> a = mirrored(x[0], hermitian);
        const Matrix<Wide<T>> w = probe<T>(result.cols);
        Matrix<Wide<T>> expected = product('N', a, product('N', x[1], w), Wide<T>(alpha));
        tool::multiplyAdd(expected, Wide<T>(beta), 'N', x[2], w);
        return updateError<T>(product('N', result, w), expected, a.cols, std::abs(alpha) * normF(a) * normF(x[1]),
                              std::abs(beta) * normF(x[2]));
    }
};

} // namespace

Routine symm()
{
    return describe<Symm<false>, float, double, std::complex<float>, std::complex<double>>("symm", reference::blas,
                                                                                           blasBound);
}

Routine hemm()
{
    return describe<Symm<true>, std::complex<float>, std::complex<double>>("hemm", reference::blas, blasBound);
}

} // namespace tarn::bench
