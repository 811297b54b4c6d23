#include "refined_solution.h"

#include "failure.h"
#include "timing.h"

#include <fmt/format.h>

#include <algorithm>

namespace tarn::tool {

namespace {

tarnStatus gesv(const Matrix<double>& a, const Matrix<double>& b, Matrix<double>& x, tarnRefinement& how)
{
    return tarnDsgesv('N', a.rows, b.cols, a.values.data(), a.ld(), b.values.data(), b.ld(), x.values.data(), x.ld(),
                      &how);
}

tarnStatus gesv(const Matrix<std::complex<double>>& a, const Matrix<std::complex<double>>& b,
                Matrix<std::complex<double>>& x, tarnRefinement& how)
{
    const auto c = [](const auto& m) { return reinterpret_cast<const tarnDoubleComplex*>(m.values.data()); };
    return tarnZcgesv('N', a.rows, b.cols, c(a), a.ld(), c(b), b.ld(), toC(x.values.data()), x.ld(), &how);
}

bool isSingle(double x) { return double(float(x)) == x; }
bool isSingle(std::complex<double> x) { return isSingle(x.real()) && isSingle(x.imag()); }

} // namespace

bool holdsDoubles(const AnyMatrix& any)
{
    return std::visit(
        [](const auto& a) {
            return !std::all_of(a.values.begin(), a.values.end(), [](const auto& x) { return isSingle(x); });
        },
        any);
}

template <class W>
RefinedSolution<W> solveRefined(const std::string& file, const Matrix<W>& a, const Matrix<W>& b)
{
    RefinedSolution<W> solution{Matrix<W>(b.rows, b.cols), {}, 0};
    tarnStatus status = tarnNoError;
    solution.seconds = secondsOf([&] { status = gesv(a, b, solution.x, solution.how); });
    if (const tarnInfo pivot = tarnGetErrorInfo(); status == tarnDataError && pivot > 0)
        throw Failure(
            fmt::format("{}: the matrix is singular: U({}, {}) of its LU factorisation is zero", file, pivot, pivot));
    check(status, isComplex<W> ? "tarnZcgesv" : "tarnDsgesv");
    return solution;
}

std::string wayOf(const tarnRefinement& how)
{
    switch (how.iter) {
    case tarnIterSmall:
        return "by the CPU, which is faster at this size";
    case tarnIterRange:
        return "by the CPU, since the values do not fit single precision";
    case tarnIterSingular:
        return "by the CPU, since the matrix is singular in single precision";
    case tarnIterNotConverged:
        return "by the CPU, since refinement of single precision does not converge";
    default:
        return fmt::format("by single precision and {} refinement{}", how.iter, how.iter == 1 ? "" : "s");
    }
}

template RefinedSolution<double> solveRefined(const std::string&, const Matrix<double>&, const Matrix<double>&);
template RefinedSolution<std::complex<double>> solveRefined(const std::string&, const Matrix<std::complex<double>>&,
                                                            const Matrix<std::complex<double>>&);

} // namespace tarn::tool
