#include "../reference.h"
#include "../routine.h"

namespace tarn::bench {

namespace {

/// A X = B for a unit lower triangular A, as LU factorisation uses it: side L, uplo L, trans N, diag U; all n by n.
struct Trsm
{
    static Dimensions dimensions(int size, int) { return {size, size, 0, 0}; }
    static double flops(const Dimensions& d) { return double(d.m) * d.m * d.n; }

    template <class T>
    static Problem<T> problem(const Dimensions& d)
    {
        Problem<T> p;
        // Elements of size 1 would make X grow exponentially with m; of size 1 / m they do not.
        p.operands = {randomMatrix<T>(d.m, d.m, 1, 1.0 / d.m), randomMatrix<T>(d.m, d.n, 2)};
        p.overwritten = {1};
        p.host = [=](const Arrays<T>& x) {
            return call(select<T>(tarnStrsm, tarnDtrsm, tarnCtrsm, tarnZtrsm), 'L', 'L', 'N', 'U', d.m, d.n, T(1), x[0],
                        d.m, x[1], d.m);
        };
        p.device = [=](const Arrays<T>& x) {
            return call(select<T>(tarnDeviceStrsm, tarnDeviceDtrsm, tarnDeviceCtrsm, tarnDeviceZtrsm), 'L', 'L', 'N',
                        'U', d.m, d.n, T(1), x[0], d.m, x[1], d.m);
        };
        p.reference = [=](const Arrays<T>& x) {
            reference::trsm<T>('L', 'L', 'N', 'U', d.m, d.n, T(1), x[0], d.m, x[1], d.m);
        };
        p.error = [](const Problem<T>& before, const Outcome<T>& after) {
            return error(unitLower(before.operands[0]), before.operands[1], after.operand[1]);
        };
        return p;
    }

    /// What the routine sees of a: ones on the diagonal, zeros above it.
    template <class T>
    static Matrix<T> unitLower(Matrix<T> a)
    {
        for (int j = 0; j < a.cols; ++j) {
            std::fill(a.column(j), a.column(j) + j, T(0));
            a(j, j) = 1;
        }
        return a;
    }

    /// norm2((A X - B) w) / (sqrt(m + 2) normF(A) normF(X) eps), w a probe
    template <class T>
    static double error(const Matrix<T>& a, const Matrix<T>& b, const Matrix<T>& x)
    {
        const Matrix<Wide<T>> w = probe<T>(x.cols);
        const double residual = distance(product('N', a, product('N', x, w)), product('N', b, w));
        return ratio(residual, std::sqrt(a.rows + 2.0) * normF(a) * normF(x) * epsilon<T>);
    }
};

} // namespace

Routine trsm()
{
    return describe<Trsm, float, double, std::complex<float>, std::complex<double>>("trsm", reference::blas, blasBound);
}

} // namespace tarn::bench
