#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// C := alpha A A^T + beta C (syrk) or alpha A A^H + beta C (herk), the lower triangle of C stored; all n by n.
template <bool hermitian>
struct Syrk
{
    static Dimensions dimensions(int size, int) { return {0, size, size, 0}; }
    static double flops(const Dimensions& d) { return double(d.n) * d.n * d.k; }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        const auto alpha = scalar<reference::Scalar<hermitian, T>>(1.5, 0.5),
                   beta = scalar<reference::Scalar<hermitian, T>>(-0.5, 0.25);
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.n, d.k, 1), randomMatrix<T>(d.n, d.n, 2)};
        p.overwritten = {1};
        p.host = [=](const Arrays<T>& x) {
            const auto routine = select<hermitian, T>(tarnSsyrk, tarnDsyrk, tarnCsyrk, tarnZsyrk, tarnCherk, tarnZherk);
            return call(routine, 'L', 'N', d.n, d.k, alpha, x[0], d.n, beta, x[1], d.n);
        };
        p.device = [=](const Arrays<T>& x) {
            const auto routine = select<hermitian, T>(tarnDeviceSsyrk, tarnDeviceDsyrk, tarnDeviceCsyrk,
                                                      tarnDeviceZsyrk, tarnDeviceCherk, tarnDeviceZherk);
            return call(routine, 'L', 'N', d.n, d.k, alpha, x[0], d.n, beta, x[1], d.n);
        };
        p.reference = [=](const Arrays<T>& x) {
            reference::syrk<hermitian, T>('L', 'N', d.n, d.k, alpha, x[0], d.n, beta, x[1], d.n);
        };
        p.error = [=](const Problem<T>& before, const Outcome<T>& after) {
            return error<T>(before.operands, alpha, beta, after.operand[1]);
        };
        return p;
    }

    /// norm2((C - Cref) w) / ((sqrt(k + 2) |alpha| normF(A)^2 + 2 |beta| normF(C)) eps), w a probe
    template <class T>
    static double error(const std::vector<Matrix<T>>& x, reference::Scalar<hermitian, T> alpha,
                        reference::Scalar<hermitian, T> beta, const Matrix<T>& result)
    {
        const Matrix<T> c = mirrored(x[1], hermitian);
        const Matrix<Wide<T>> w = probe<T>(c.cols);
        const auto inner = product(hermitian ? 'C' : 'T', x[0], w);
        Matrix<Wide<T>> expected = product('N', x[0], inner, Wide<T>(alpha));
        tool::multiplyAdd(expected, Wide<T>(beta), 'N', c, w);
        const double normA = normF(x[0]);
        return updateError<T>(product('N', mirrored(result, hermitian), w), expected, x[0].cols,
                              std::abs(alpha) * normA * normA, std::abs(beta) * normF(c));
    }
};

} // namespace

Routine syrk()
{
    return describe<Syrk<false>, float, double, std::complex<float>, std::complex<double>>("syrk", reference::blas,
                                                                                           blasBound);
}

Routine herk()
{
    return describe<Syrk<true>, std::complex<float>, std::complex<double>>("herk", reference::blas, blasBound);
}

} // namespace tarn::bench
