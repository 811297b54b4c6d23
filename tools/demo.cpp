#include "commands.h"
#include "cpu_blas.h"
#include "curve_fit.h"
#include "device.h"
#include "failure.h"
#include "lapack.h"
#include "least_squares.h"
#include "matrix_market.h"
#include "panel_method.h"
#include "singular_values.h"
#include "spectrum_plot.h"
#include "timing.h"

#include <fmt/format.h>

#include <filesystem>

namespace tarn::tool {

namespace {

constexpr double errorBound = 1e-3;
constexpr int panelCount = 2000;
constexpr int samples = 4000, degree = 127, givenPoints = 5;
constexpr double noise = 0.05;

Matrix<double> readReal(const std::string& path)
{
    const AnyMatrix any = readMatrixMarket(path);
    if (const auto* real = std::get_if<Matrix<double>>(&any))
        return *real;
    throw Failure(path + ": a real matrix is needed");
}

struct TimedSolution
{
    Matrix<double> x;
    double seconds;
};

/// A X = B in single precision by the library.
TimedSolution solveSingle(const Matrix<double>& a, const Matrix<double>& b)
{
    Matrix<float> factors = convert<float>(a), x = convert<float>(b);
    std::vector<int> pivots(a.rows);
    tarnStatus status = tarnNoError;
    const double seconds = secondsOf([&] {
        status = tarnSgesv(a.rows, b.cols, factors.values.data(), a.ld(), pivots.data(), x.values.data(), b.ld());
    });
    check(status, "tarnSgesv");
    return {convert<double>(x), seconds};
}

/// A X = B by a gesv of the CPU LAPACK, in the precision T.
template <class T>
TimedSolution solveCpu(FortranGesv<T>* gesv, const Matrix<double>& a, const Matrix<double>& b)
{
    Matrix<T> factors = convert<T>(a), x = convert<T>(b);
    std::vector<int> pivots(a.rows);
    const int n = a.rows, nrhs = b.cols, lda = a.ld(), ldb = b.ld();
    int info = 0;
    const double seconds =
        secondsOf([&] { gesv(&n, &nrhs, factors.values.data(), &lda, pivots.data(), x.values.data(), &ldb, &info); });
    if (info != 0)
        throw Failure(fmt::format("gesv of the CPU LAPACK: info {}", info));
    return {convert<double>(x), seconds};
}

/// The first n rows of B, which a least squares routine overwrites with the solution.
template <class T>
Matrix<double> solutionIn(const Matrix<T>& b, int n)
{
    Matrix<double> x(n, 1);
    std::copy_n(b.column(0), n, x.column(0));
    return x;
}

/// A x = b in the sense of least squares, in single precision by the library.
TimedSolution leastSquaresSingle(const Matrix<double>& a, const Matrix<double>& b)
{
    Matrix<float> factors = convert<float>(a), x = convert<float>(b);
    tarnStatus status = tarnNoError;
    const double seconds = secondsOf(
        [&] { status = tarnSgels('N', a.rows, a.cols, 1, factors.values.data(), a.ld(), x.values.data(), b.ld()); });
    check(status, "tarnSgels");
    return {solutionIn(x, a.cols), seconds};
}

/// The same by a gels of the CPU LAPACK, in the precision T; factors gets the QR factorisation of A.
template <class T>
TimedSolution leastSquaresCpu(FortranGels<T>* gels, const Matrix<double>& a, const Matrix<double>& b,
                              Matrix<T>& factors)
{
    factors = convert<T>(a);
    Matrix<T> x = convert<T>(b);
    const int nrhs = 1, lda = a.ld(), ldb = b.ld();
    int info = 0;
    const double seconds = secondsOf([&] {
        withWorkspace<T>([&](T* work, const int* lwork) {
            gels("N", &a.rows, &a.cols, &nrhs, factors.values.data(), &lda, x.values.data(), &ldb, work, lwork, &info,
                 1);
        });
    });
    if (info != 0)
        throw Failure(fmt::format("gels of the CPU LAPACK: info {}", info));
    return {solutionIn(x, a.cols), seconds};
}

/// The fit with its constraints, by a routine (m, n, p, a, lda, b, ldb, c, d, x) in single precision.
template <class Routine>
TimedSolution constrainedFit(const CurveFit& fit, const Routine& routine)
{
    Matrix<float> a = convert<float>(fit.basis), b = convert<float>(fit.constraints);
    Matrix<float> c = convert<float>(fit.samples), d = convert<float>(fit.values), x(a.cols, 1);
    const double seconds = secondsOf([&] {
        routine(a.rows, a.cols, b.rows, a.values.data(), a.ld(), b.values.data(), b.ld(), c.values.data(),
                d.values.data(), x.values.data());
    });
    return {convert<double>(x), seconds};
}

/// norm2(x - exact) / norm2(exact)
double relativeError(const Matrix<double>& x, const Matrix<double>& exact) { return distance(x, exact) / normF(exact); }

/// norm1(A) norm1(A^-1)
double condition1(const Matrix<double>& a)
{
    Matrix<double> identity(a.rows, a.rows);
    for (int i = 0; i < a.rows; ++i)
        identity(i, i) = 1;
    return norm1(a) * norm1(solveCpu<double>(dgesv_, a, identity).x);
}

/// The same of A = Q R, by LAPACK's estimate for R.
double condition1OfQr(const Matrix<double>& factors)
{
    double reciprocal = 0;
    const int n = factors.cols, ld = factors.ld();
    std::vector<double> work(3 * n);
    std::vector<int> integers(n);
    int info = 0;
    dtrcon_("1", "U", "N", &n, factors.values.data(), &ld, &reciprocal, work.data(), integers.data(), &info, 1, 1, 1);
    return 1 / reciprocal;
}

const char* verdict(double error, double bound) { return error <= bound ? "good" : "TOO LARGE"; }

bool plasmaDemo(const std::string& folder)
{
    const Matrix<double> a = readReal(folder + "/utm300.mtx"), b = readReal(folder + "/utm300_b.mtx");
    if (a.rows != a.cols || b.rows != a.rows || b.cols != 1)
        throw Failure(folder + ": utm300.mtx and utm300_b.mtx do not make a system");
    const TimedSolution exact = solveCpu<double>(dgesv_, a, b);
    const TimedSolution cpu = solveCpu<float>(sgesv_, a, b);
    const TimedSolution ours = solveSingle(a, b);
    const double error = relativeError(ours.x, exact.x);

    fmt::print("\n1. Plasma physics: UTM300, order {}, condition number {:.1e}\n", a.rows, condition1(a));
    fmt::print("   tarnSgesv              {:10.6f} s\n", ours.seconds);
    fmt::print("   sgesv of the CPU       {:10.6f} s\n", cpu.seconds);
    fmt::print("   the solution y of dgesv in double precision stands for the exact one\n");
    fmt::print("   norm2(x - y)/norm2(y)  {:10.1e}     {} (bound {:.0e}; sgesv of the CPU: {:.1e})\n", error,
               verdict(error, errorBound), errorBound, relativeError(cpu.x, exact.x));
    return error <= errorBound;
}

bool panelDemo()
{
    PanelSystem system;
    const double assembly = secondsOf([&] { system = cylinderPanels(panelCount); });
    const TimedSolution cpu = solveCpu<float>(sgesv_, system.normal, system.rhs);
    const TimedSolution ours = solveSingle(system.normal, system.rhs);
    const double error = surfaceSpeedError(system, ours.x);

    fmt::print("\n2. Boundary elements: flow past a circular cylinder, {} source panels\n", panelCount);
    fmt::print("   influence coefficients {:10.6f} s\n", assembly);
    fmt::print("   tarnSgesv              {:10.6f} s    {:.1f} GFLOP/s\n", ours.seconds,
               gesvFlops(panelCount, 1) * 1e-9 / ours.seconds);
    fmt::print("   sgesv of the CPU       {:10.6f} s    {:.1f} GFLOP/s\n", cpu.seconds,
               gesvFlops(panelCount, 1) * 1e-9 / cpu.seconds);
    fmt::print("   the exact surface speed is 2 U sin(theta); errors are relative to its top, 2 U\n");
    fmt::print("   largest error          {:10.1e}     {} (bound {:.0e}; sgesv of the CPU: {:.1e})\n", error,
               verdict(error, errorBound), errorBound, surfaceSpeedError(system, cpu.x));
    return error <= errorBound;
}

bool surveyDemo(const std::string& folder)
{
    const Matrix<double> a = readReal(folder + "/well1850.mtx"), b = readReal(folder + "/well1850_b.mtx");
    if (a.rows < a.cols || b.rows != a.rows || b.cols != 1)
        throw Failure(folder + ": well1850.mtx and well1850_b.mtx do not make a least squares problem");
    Matrix<double> factors;
    Matrix<float> singleFactors;
    const TimedSolution exact = leastSquaresCpu<double>(dgels_, a, b, factors);
    const TimedSolution cpu = leastSquaresCpu<float>(sgels_, a, b, singleFactors);
    const TimedSolution ours = leastSquaresSingle(a, b);
    const double error = relativeError(ours.x, exact.x), condition = condition1OfQr(factors);
    const double bound = condition * epsilon<float>;

    fmt::print("\n3. Surveying: WELL1850, {} observations of {} unknowns, condition number {:.1e}\n", a.rows, a.cols,
               condition);
    fmt::print("   tarnSgels              {:10.6f} s\n", ours.seconds);
    fmt::print("   sgels of the CPU       {:10.6f} s\n", cpu.seconds);
    fmt::print("   the solution y of dgels in double precision stands for the exact one\n");
    fmt::print("   norm2(b - A x)         {:10.6f}     (dgels: {:.6f})\n", normF(residual(a, b, ours.x)),
               normF(residual(a, b, exact.x)));
    fmt::print("   norm2(x - y)/norm2(y)  {:10.1e}     {} (bound {:.0e}, the condition number times eps = 2^-23;\n"
               "                                         sgels of the CPU: {:.1e})\n",
               error, verdict(error, bound), bound, relativeError(cpu.x, exact.x));
    return error <= bound;
}

bool curveDemo()
{
    const CurveFit fit = noisySamples(samples, degree + 1, givenPoints, noise);
    const TimedSolution ours =
        constrainedFit(fit, [](auto... arguments) { check(tarnSgglse(arguments...), "tarnSgglse"); });
    const TimedSolution cpu = constrainedFit(
        fit, [](int m, int n, int p, float* a, int lda, float* b, int ldb, float* c, float* d, float* x) {
            int info = 0;
            withWorkspace<float>([&](float* work, const int* lwork) {
                sgglse_(&m, &n, &p, a, &lda, b, &ldb, c, d, x, work, lwork, &info);
            });
            if (info != 0)
                throw Failure(fmt::format("sgglse of the CPU LAPACK: info {}", info));
        });
    const TimedSolution free = leastSquaresSingle(fit.basis, fit.samples);
    const double error = deviation(fit, ours.x), bound = (degree + 1) * epsilon<float> * norm1(ours.x);

    fmt::print("\n4. Curve fit: a polynomial of degree {} through {} noisy samples and {} given points\n", degree,
               samples, givenPoints);
    fmt::print("   tarnSgglse             {:10.6f} s    {:.1f} GFLOP/s\n", ours.seconds,
               gglseFlops(samples, degree + 1, givenPoints) * 1e-9 / ours.seconds);
    fmt::print("   sgglse of the CPU      {:10.6f} s    {:.1f} GFLOP/s\n", cpu.seconds,
               gglseFlops(samples, degree + 1, givenPoints) * 1e-9 / cpu.seconds);
    fmt::print("   tarnSgels, free        {:10.6f} s    without the given points\n", free.seconds);
    fmt::print("   noise of {} on 1/(1 + 25 t^2), which the given points are on exactly; n coefficients x\n", noise);
    fmt::print("   rms error of the curve {:10.1e}     (free: {:.1e})\n", curveError(fit, ours.x),
               curveError(fit, free.x));
    fmt::print("   largest deviation      {:10.1e}     {} (bound {:.0e}, n norm1(x) eps; free: {:.1e};\n"
               "   at the given points                   sgglse of the CPU: {:.1e})\n",
               error, verdict(error, bound), bound, deviation(fit, free.x), deviation(fit, cpu.x));
    return error <= bound;
}

/// Singular values by dgesvd of the CPU LAPACK.
std::vector<double> singularValuesCpu(Matrix<double> a)
{
    const int m = a.rows, n = a.cols, lda = a.ld(), one = 1;
    std::vector<double> s(std::min(m, n));
    int info = 0;
    withWorkspace<double>([&](double* work, const int* lwork) {
        dgesvd_("N", "N", &m, &n, a.values.data(), &lda, s.data(), nullptr, &one, nullptr, &one, work, lwork, &info, 1,
                1);
    });
    if (info != 0)
        throw Failure(fmt::format("dgesvd of the CPU LAPACK: info {}", info));
    return s;
}

bool spectrumDemo(const std::string& folder)
{
    const Matrix<double> a = readReal(folder + "/well1850.mtx");
    Matrix<float> b = convert<float>(a);
    Spectrum spectrum{a.rows, a.cols, std::vector<float>(std::min(a.rows, a.cols))};
    tarnStatus status = tarnNoError;
    const double seconds = secondsOf([&] {
        status = tarnSgesvd('N', 'N', b.rows, b.cols, b.values.data(), b.ld(), spectrum.values.data(), nullptr, 1,
                            nullptr, 1);
    });
    check(status, "tarnSgesvd");
    const std::vector<double> exact = singularValuesCpu(a);
    double error = 0;
    for (std::size_t i = 0; i < exact.size(); ++i)
        error = std::max(error, std::abs(spectrum.values[i] - exact[i]));
    const double bound = spectrum.noise();

    fmt::print("\n5. Spectrum: the singular values of WELL1850\n");
    fmt::print("   tarnSgesvd             {:10.6f} s\n", seconds);
    fmt::print("   condition number       {:10.2f}     s[1] / s[{}] (dgesvd: {:.2f})\n", spectrum.condition(),
               exact.size(), exact.front() / exact.back());
    fmt::print("   largest error          {:10.1e}     {} (bound {:.0e}, max(m, n) eps s[1]; against dgesvd)\n", error,
               verdict(error, bound), bound);
    fmt::print("{}", textPlot(spectrum, 9));
    return error <= bound;
}

/// The first call pays for the start of the device and its libraries; the timed ones shall not.
void warmUp()
{
    Matrix<double> a(1, 1), b(1, 1);
    a(0, 0) = b(0, 0) = 1;
    solveSingle(a, b);
}

} // namespace

std::string demoFolder()
{
    std::error_code ignored;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const std::filesystem::path installed = program.parent_path() / TARN_INSTALLED_DATA;
    return std::filesystem::exists(installed, ignored) ? installed.string() : TARN_SOURCE_DATA;
}

int runDemo(const std::string& folder)
{
    const Library library;
    const CpuBlas blas = cpuBlas();
    fmt::print("tarn solves two linear systems and two least squares problems, and finds singular values:\n"
               "panels on the CPU, updates on the device.\n\n");
    fmt::print("device  {}\n", describe(deviceFacts(currentDevice())));
    fmt::print("CPU     {}, core {}\n", blas.name, blas.core);
    warmUp();
    bool good = plasmaDemo(folder);
    good &= panelDemo();
    good &= surveyDemo(folder);
    good &= curveDemo();
    good &= spectrumDemo(folder);
    fmt::print("\n{}\n", good ? "All errors are within their bounds."
                              : "An error is larger than its bound: something is wrong here.");
    return good ? 0 : 1;
}

} // namespace tarn::tool
