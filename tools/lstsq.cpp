#include "bench/trial.h"
#include "commands.h"
#include "condition.h"
#include "json.h"
#include "least_squares.h"
#include "output.h"
#include "progress.h"
#include "single_precision.h"
#include "timing.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <optional>

namespace tarn::tool {

namespace {

/// A X = B in the sense of least squares, and the constraints, which a file each gives; no file, no matrix.
struct Files
{
    AnyMatrix matrix;
    std::optional<AnyMatrix> rhs, constraints, constraintRhs;

    bool anyComplex() const
    {
        const auto isComplexFile = [](const std::optional<AnyMatrix>& file) { return file && holdsComplex(*file); };
        return holdsComplex(matrix) || isComplexFile(rhs) || isComplexFile(constraints) || isComplexFile(constraintRhs);
    }
};

struct Solution
{
    int m = 0, n = 0, nrhs = 0, p = 0;
    double seconds = 0, gflops = 0, residual = 0, constraintResidual = 0, backwardError = 0;
    std::optional<double> rcond = {};        ///< not with constraints
    std::optional<double> forwardError = {}; ///< where the solution is known
};

Files readFiles(const LstsqOptions& options)
{
    const auto read = [](const std::string& path) {
        return path.empty() ? std::nullopt : std::optional(readMatrixMarket(path));
    };
    return {readMatrixMarket(options.matrix), read(options.rhs), read(options.constraints),
            read(options.constraintRhs)};
}

const char* plural(int count) { return count == 1 ? "" : "s"; }

void checkShapes(const LstsqOptions& options, const Files& files)
{
    const auto [m, n] = shapeOf(files.matrix);
    if (files.rhs)
        checkHasColumns(options.rhs, *files.rhs);
    if (files.rhs && shapeOf(*files.rhs).first != m)
        throw Failure(fmt::format("{}: the right-hand side has {} rows, but the matrix has {}", options.rhs,
                                  shapeOf(*files.rhs).first, m));
    if (!options.constrained())
        return;
    const auto [p, columns] = shapeOf(*files.constraints);
    const auto [values, sets] = shapeOf(*files.constraintRhs);
    if (columns != n)
        throw Failure(
            fmt::format("{}: the constraints have {} columns, but the matrix has {}", options.constraints, columns, n));
    if (values != p || sets != 1)
        throw Failure(fmt::format("{}: the matrix is {} x {}, but {} constraint{} take{} {} x 1", options.constraintRhs,
                                  values, sets, p, plural(p), p == 1 ? "s" : "", p));
    if (files.rhs && shapeOf(*files.rhs).second != 1)
        throw Failure(fmt::format("{}: with constraints there is one right-hand side, not {}", options.rhs,
                                  shapeOf(*files.rhs).second));
    if (p > n)
        throw Failure(
            fmt::format("{}: {} constraints on {} unknown{} are too many", options.constraints, p, n, plural(n)));
    if (m + p < n)
        throw Failure(fmt::format("{}: {} equation{} and {} constraint{} do not determine {} unknowns", options.matrix,
                                  m, plural(m), p, plural(p), n));
}

/// The first rows of b.
template <class T>
Matrix<T> top(const Matrix<T>& b, int rows)
{
    Matrix<T> x(rows, b.cols);
    for (int j = 0; j < b.cols; ++j)
        std::copy_n(b.column(j), rows, x.column(j));
    return x;
}

template <class T>
Matrix<T> leastSquares(const LstsqOptions& options, const Matrix<T>& a, const Matrix<T>& b, Phase& phase,
                       Solution& result)
{
    Matrix<T> factors = a, x(std::max(a.rows, a.cols), b.cols);
    for (int j = 0; j < b.cols; ++j)
        std::copy_n(b.column(j), a.rows, x.column(j));
    phase.next("solving", bench::expectedSeconds("gels", letter<T>,
                                                 {std::max(a.rows, a.cols), std::min(a.rows, a.cols), 0, b.cols}));
    tarnStatus status = tarnNoError;
    result.seconds = secondsOf([&] {
        status = call(select<T>(tarnSgels, nullptr, tarnCgels, nullptr), 'N', a.rows, a.cols, b.cols,
                      factors.values.data(), a.ld(), x.values.data(), x.ld());
    });
    if (const tarnInfo i = tarnGetErrorInfo(); status == tarnDataError && i > 0)
        throw Failure(fmt::format("{}: the matrix has not full rank: {}({}, {}) of its {} factorisation is zero",
                                  options.matrix, a.rows < a.cols ? 'L' : 'R', i, i, a.rows < a.cols ? "LQ" : "QR"));
    check(status, isComplex<T> ? "tarnCgels" : "tarnSgels");
    phase.next("checking");
    x = top(x, a.cols);
    result.gflops = gelsFlops(a.rows, a.cols, b.cols);
    result.rcond = reciprocalConditionOfTriangle(a.rows < a.cols ? 'L' : 'U', std::min(a.rows, a.cols), factors);
    result.backwardError = leastSquaresBackwardError(a, b, x);
    if (options.rhs.empty() && a.rows >= a.cols)
        result.forwardError = deviationFromOnes(x);
    return x;
}

template <class T>
Matrix<T> constrained(const LstsqOptions& options, const Files& files, const Matrix<T>& a, const Matrix<T>& c,
                      Phase& phase, Solution& result)
{
    const Matrix<T> b = toSingle<T>(options.constraints, *files.constraints);
    const Matrix<T> d = toSingle<T>(options.constraintRhs, *files.constraintRhs);
    Matrix<T> factorsA = a, factorsB = b, values = c, limits = d, x(a.cols, 1);
    if (a.rows == 0) // the routine wants addresses all the same
        factorsA.values.resize(1), values.values.resize(1);
    phase.next("solving", bench::expectedSeconds("gglse", letter<T>, {a.rows, a.cols, b.rows, 0}));
    tarnStatus status = tarnNoError;
    result.seconds = secondsOf([&] {
        status =
            call(select<T>(tarnSgglse, nullptr, tarnCgglse, nullptr), a.rows, a.cols, b.rows, factorsA.values.data(),
                 a.ld(), factorsB.values.data(), b.ld(), values.values.data(), limits.values.data(), x.values.data());
    });
    if (status == tarnDataError && tarnGetErrorInfo() == 1)
        throw Failure(options.constraints + ": the constraints are linearly dependent");
    if (status == tarnDataError && tarnGetErrorInfo() == 2)
        throw Failure(options.matrix + ": the equations and the constraints do not determine the unknowns");
    check(status, isComplex<T> ? "tarnCgglse" : "tarnSgglse");
    phase.next("checking");
    result.p = b.rows;
    result.gflops = gglseFlops(a.rows, a.cols, b.rows);
    result.constraintResidual = normF(residual(b, d, x));
    result.backwardError = constrainedBackwardError(a, c, b, d, x);
    return x;
}

template <class T>
Solution solve(const LstsqOptions& options, const Files& files)
{
    const Matrix<T> a = toSingle<T>(options.matrix, files.matrix);
    const Matrix<T> b = files.rhs ? toSingle<T>(options.rhs, *files.rhs) : rowSums(a);
    Solution result{a.rows, a.cols, b.cols};
    const Library library;
    Phase phase("preparing");
    const Matrix<T> x = options.constrained() ? constrained(options, files, a, b, phase, result)
                                              : leastSquares(options, a, b, phase, result);
    result.gflops *= (isComplex<T> ? 4 : 1) * 1e-9 / result.seconds;
    result.residual = normF(residual(a, b, x));
    if (!std::isfinite(result.backwardError) || !std::isfinite(result.residual))
        throw Failure(options.matrix + ": the solution does not fit single precision");
    phase.end();
    if (!options.out.empty())
        writeMatrixMarket(options.out, x);
    return result;
}

void printJson(const LstsqOptions& options, char type, const Solution& s)
{
    nlohmann::ordered_json object = {{"matrix", options.matrix},
                                     {"routine", options.constrained() ? "gglse" : "gels"},
                                     {"type", std::string(1, type)},
                                     {"m", s.m},
                                     {"n", s.n},
                                     {"nrhs", s.nrhs},
                                     {"seconds", s.seconds},
                                     {"gflops", s.gflops},
                                     {"residual", s.residual},
                                     {"backward_error", s.backwardError},
                                     {"status", tarnGetStatusString(tarnNoError)}};
    if (s.rcond)
        object["rcond"] = *s.rcond;
    if (s.forwardError)
        object["forward_error"] = *s.forwardError;
    if (options.constrained()) {
        object["p"] = s.p;
        object["constraint_residual"] = s.constraintResidual;
    }
    printObject(object);
}

/// The definition of the backward error that is printed.
const char* definition(const LstsqOptions& options, const Solution& s)
{
    if (options.constrained())
        return "the larger of norm2(B x - d) / ((normF(B) norm2(x) + norm2(d)) eps) and of\n"
               "                the least change of A that makes x optimal over normF(A) eps,";
    if (s.m >= s.n)
        return "least change of A that makes X optimal over normF(A) eps,";
    return "the larger of norm2(b - A x) / (normF(A) norm2(x) eps)\n"
           "                and norm2(Z' x) / (norm2(x) eps), A Z = 0,";
}

void printText(const LstsqOptions& options, char type, const Solution& s)
{
    fmt::print("problem         {} x {}, {} right-hand side{}, {} single precision\n", s.m, s.n, s.nrhs, plural(s.nrhs),
               type == 'c' ? "complex" : "real");
    if (options.constrained())
        fmt::print("                least squares with {} equality constraint{}\n", s.p, plural(s.p));
    else
        fmt::print("                {}\n", s.m >= s.n ? "least squares" : "solution of least norm");
    fmt::print("time            {:.6f} s, {:.2f} GFLOP/s\n", s.seconds, s.gflops);
    fmt::print("residual        {:.6g}   {}\n", s.residual,
               options.constrained() ? "norm2(c - A x)" : "normF(B - A X)");
    if (options.constrained())
        fmt::print("constraints     {:.6g}   norm2(d - B x)\n", s.constraintResidual);
    fmt::print("backward error  {:.3g}   {} eps = 2^-23\n", s.backwardError, definition(options, s));
    if (s.rcond)
        fmt::print("condition       {:.3g}   an estimate of norm1({f}) norm1({f}^-1), {f} the triangular factor\n",
                   1 / *s.rcond, fmt::arg("f", s.m < s.n ? "L" : "R"));
    if (s.forwardError)
        fmt::print("forward error   {:.3g}   largest |x - 1|, where all of X should be 1\n", *s.forwardError);
    fmt::print("status          {}\n", tarnGetStatusString(tarnNoError));
    if (!options.out.empty())
        fmt::print("solution        {}\n", options.out);
}

} // namespace

int runLstsq(const LstsqOptions& options)
{
    reserveOutput(options.out);
    const Files files = readFiles(options);
    checkShapes(options, files);
    const bool complex = options.complex || files.anyComplex();
    const Solution solution = complex ? solve<std::complex<float>>(options, files) : solve<float>(options, files);
    (options.json ? printJson : printText)(options, complex ? 'c' : 's', solution);
    if (solution.rcond)
        warnOfCondition<float>(options.matrix, *solution.rcond);
    return 0;
}

} // namespace tarn::tool
