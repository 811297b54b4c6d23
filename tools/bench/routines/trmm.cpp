#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// B := alpha A B for a lower triangular A: side L, uplo L, trans N, diag N; all n by n.
struct Trmm
{
    static Dimensions dimensions(int size, int) { return {size, size, 0, 0}; }
    static double flops(const Dimensions& d) { return double(d.m) * d.m * d.n; }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        const T alpha = scalar<T>(1.5, 0.5);
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.m, d.m, 1), randomMatrix<T>(d.m, d.n, 2)};
        p.overwritten = {1};
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnStrmm, tarnDtrmm, tarnCtrmm, tarnZtrmm), 'L', 'L', 'N', 'N', d.m, d.n, alpha,
                        x[0], d.m, x[1], d.m);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceStrmm, tarnDeviceDtrmm, tarnDeviceCtrmm, tarnDeviceZtrmm), 'L', 'L', 'N',
                        'N', d.m, d.n, alpha, x[0], d.m, x[1], d.m);
        };
        p.reference = [=](const Arrays<T>& x) {
            reference::trmm<T>('L', 'L', 'N', 'N', d.m, d.n, alpha, x[0], d.m, x[1], d.m);
        };
        p.error = [=](const Problem<T>& before, const Outcome<T>& after) {
            return error(before.operands, alpha, after.operand[1]);
        };
        return p;
    }

    /// norm2((B - Bref) w) / (sqrt(m + 2) |alpha| normF(A) normF(B) eps), w a probe
    template <class T>
    static double error(const std::vector<Matrix<T>>& x, T alpha, const Matrix<T>& result)
    {
        Matrix<T> a = x[0];
        for (int j = 0; j < a.cols; ++j)
            std::fill(a.column(j), a.column(j) + j, T(0));
        const Matrix<Wide<T>> w = probe<T>(result.cols);
        const Matrix<Wide<T>> expected = product('N', a, product('N', x[1], w), Wide<T>(alpha));
        return updateError<T>(product('N', result, w), expected, a.cols, std::abs(alpha) * normF(a) * normF(x[1]), 0);
    }
};

} // namespace

Routine trmm()
{
    return describe<Trmm, float, double, std::complex<float>, std::complex<double>>("trmm", reference::blas, blasBound);
}

} // namespace tarn::bench
