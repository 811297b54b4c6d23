#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// C := alpha A B^T + alpha B A^T + beta C (syr2k) or alpha A B^H + conj(alpha) B A^H + beta C (her2k), the lower
/// triangle of C stored; all n by n.
template <bool hermitian>
struct Syr2k
{
    static Dimensions dimensions(int size, int) { return {0, size, size, 0}; }
    static double flops(const Dimensions& d) { return 2.0 * d.n * d.n * d.k; }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        const T alpha = scalar<T>(1.5, 0.5);
        const auto beta = scalar<reference::Scalar<hermitian, T>>(-0.5, 0.25);
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.n, d.k, 1), randomMatrix<T>(d.n, d.k, 2), randomMatrix<T>(d.n, d.n, 3)};
        p.overwritten = {2};
        p.host = [=](const Arrays<T>& x) {
            const auto routine =
                select<hermitian, T>(tarnSsyr2k, tarnDsyr2k, tarnCsyr2k, tarnZsyr2k, tarnCher2k, tarnZher2k);
            return call(routine, 'L', 'N', d.n, d.k, alpha, x[0], d.n, x[1], d.n, beta, x[2], d.n);
        };
        p.device = [=](const Arrays<T>& x) {
            const auto routine = select<hermitian, T>(tarnDeviceSsyr2k, tarnDeviceDsyr2k, tarnDeviceCsyr2k,
                                                      tarnDeviceZsyr2k, tarnDeviceCher2k, tarnDeviceZher2k);
            return call(routine, 'L', 'N', d.n, d.k, alpha, x[0], d.n, x[1], d.n, beta, x[2], d.n);
        };
        p.reference = [=](const Arrays<T>& x) {
            reference::syr2k<hermitian, T>('L', 'N', d.n, d.k, alpha, x[0], d.n, x[1], d.n, beta, x[2], d.n);
        };
        p.error = [=](const Problem<T>& before, const Outcome<T>& after) {
            return error<T>(before.operands, alpha, beta, after.operand[2]);
        };
        return p;
    }

    /// norm2((C - Cref) w) / ((sqrt(k + 2) 2 |alpha| normF(A) normF(B) + 2 |beta| normF(C)) eps), w a probe
    template <class T>
    static double error(const std::vector<Matrix<T>>& x, T alpha, reference::Scalar<hermitian, T> beta,
                        const Matrix<T>& result)
    {
        const Matrix<T> c = mirrored(x[2], hermitian);
        const Matrix<Wide<T>> w = probe<T>(c.cols);
        const char op = hermitian ? 'C' : 'T';
        const Wide<T> first(alpha);
        Wide<T> second = first;
        if constexpr (hermitian)
            second = std::conj(first);
        Matrix<Wide<T>> expected = product('N', x[0], product(op, x[1], w), first);
        tool::multiplyAdd(expected, second, 'N', x[1], product(op, x[0], w));
        tool::multiplyAdd(expected, Wide<T>(beta), 'N', c, w);
        return updateError<T>(product('N', mirrored(result, hermitian), w), expected, x[0].cols,
                              2 * std::abs(alpha) * normF(x[0]) * normF(x[1]), std::abs(beta) * normF(c));
    }
};

} // namespace

Routine syr2k()
{
    return describe<Syr2k<false>, float, double, std::complex<float>, std::complex<double>>("syr2k", reference::blas,
                                                                                            blasBound);
}

Routine her2k()
{
    return describe<Syr2k<true>, std::complex<float>, std::complex<double>>("her2k", reference::blas, blasBound);
}

} // namespace tarn::bench
