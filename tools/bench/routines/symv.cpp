#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// y := alpha A x + beta y, the lower triangle of A stored: symmetric if real (symv), Hermitian if complex (hemv).
struct Symv
{
    static Dimensions dimensions(int size, int) { return {0, size, 0, 0}; }
    static double flops(const Dimensions& d) { return 2.0 * d.n * d.n; }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        const T alpha = scalar<T>(1.5, 0.5), beta = scalar<T>(-0.5, 0.25);
        Problem<T> p;
        p.operands = {randomMatrix<T>(d.n, d.n, 1), randomMatrix<T>(d.n, 1, 2), randomMatrix<T>(d.n, 1, 3)};
        p.overwritten = {2};
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnSsymv, tarnDsymv, tarnChemv, tarnZhemv), 'L', d.n, alpha, x[0], d.n, x[1], 1,
                        beta, x[2], 1);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceSsymv, tarnDeviceDsymv, tarnDeviceChemv, tarnDeviceZhemv), 'L', d.n, alpha,
                        x[0], d.n, x[1], 1, beta, x[2], 1);
        };
        p.reference = [=](const Arrays<T>& x) {
            reference::symv<T>('L', d.n, alpha, x[0], d.n, x[1], 1, beta, x[2], 1);
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
        const Matrix<T> a = mirrored(x[0], isComplex<T>);
        Matrix<Wide<T>> expected = product('N', a, tool::convert<Wide<T>>(x[1]), Wide<T>(alpha));
        const Wide<T> factor(beta);
        for (int i = 0; i < expected.rows; ++i)
            expected(i, 0) += factor * Wide<T>(x[2](i, 0));
        return updateError<T>(tool::convert<Wide<T>>(result), expected, a.cols,
                              std::abs(alpha) * normF(a) * normF(x[1]), std::abs(beta) * normF(x[2]));
    }
};

} // namespace

Routine symv() { return describe<Symv, float, double>("symv", reference::blas, blasBound); }

Routine hemv() { return describe<Symv, std::complex<float>, std::complex<double>>("hemv", reference::blas, blasBound); }

} // namespace tarn::bench
