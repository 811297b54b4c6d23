#include "commands.h"
#include "cpu_blas.h"
#include "device.h"
#include "failure.h"
#include "lapack.h"
#include "matrix_market.h"
#include "panel_method.h"
#include "timing.h"

#include <fmt/format.h>

#include <filesystem>
#include <memory>

namespace tarn::tool {

namespace {

constexpr double errorBound = 1e-3;
constexpr int panelCount = 2000;

/// The folder of the sample systems: beside an installed tool, else in the source tree.
std::string dataFolder()
{
    std::error_code ignored;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", ignored);
    const std::filesystem::path installed = program.parent_path() / TARN_INSTALLED_DATA;
    return std::filesystem::exists(installed, ignored) ? installed.string() : TARN_SOURCE_DATA;
}

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

/// norm2(x - exact) / norm2(exact)
double relativeError(Matrix<double> x, const Matrix<double>& exact)
{
    for (std::size_t i = 0; i < x.values.size(); ++i)
        x.values[i] -= exact.values[i];
    return normF(x) / normF(exact);
}

/// norm1(A) norm1(A^-1)
double condition1(const Matrix<double>& a)
{
    Matrix<double> identity(a.rows, a.rows);
    for (int i = 0; i < a.rows; ++i)
        identity(i, i) = 1;
    return norm1(a) * norm1(solveCpu<double>(dgesv_, a, identity).x);
}

const char* verdict(double error) { return error <= errorBound ? "good" : "TOO LARGE"; }

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
               verdict(error), errorBound, relativeError(cpu.x, exact.x));
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
               verdict(error), errorBound, surfaceSpeedError(system, cpu.x));
    return error <= errorBound;
}

/// The first call pays for the start of the device and its libraries; the timed ones shall not.
void warmUp()
{
    Matrix<double> a(1, 1), b(1, 1);
    a(0, 0) = b(0, 0) = 1;
    solveSingle(a, b);
}

int runDemo(const std::string& folder)
{
    const Library library;
    const CpuBlas blas = cpuBlas();
    fmt::print("tarn solves two linear systems with tarnSgesv: panels on the CPU, updates on the device.\n\n");
    fmt::print("device  {}\n", describeDevice(currentDevice()));
    fmt::print("CPU     {}, core {}\n", blas.name, blas.core);
    warmUp();
    const bool plasma = plasmaDemo(folder);
    const bool panels = panelDemo();
    fmt::print("\n{}\n", plasma && panels ? "Both errors are within their bounds."
                                          : "An error is larger than its bound: something is wrong here.");
    return plasma && panels ? 0 : 1;
}

} // namespace

Command addDemo(CLI::App& tarn)
{
    auto folder = std::make_shared<std::string>(dataFolder());
    CLI::App* app = tarn.add_subcommand("demo", "Solve two sample systems and compare with exact solutions");
    app->add_option("--data", *folder, "Folder of utm300.mtx and utm300_b.mtx")
        ->type_name("FOLDER")
        ->capture_default_str();
    return {app, [folder] { return runDemo(*folder); }};
}

} // namespace tarn::tool
