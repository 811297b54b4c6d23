#include "bench/trial.h"
#include "commands.h"
#include "condition.h"
#include "failure.h"
#include "json.h"
#include "output.h"
#include "progress.h"
#include "single_precision.h"
#include "timing.h"

#include <fmt/format.h>

#include <memory>
#include <optional>

namespace tarn::tool {

namespace {

struct SolveOptions
{
    std::string matrix, rhs, out;
    bool complex = false, json = false;
};

struct Solution
{
    int n = 0, nrhs = 0;
    double seconds = 0, gflops = 0, backwardError = 0, rcond = 0;
    std::optional<double> forwardError = {}; ///< where the solution is known
};

void checkShapes(const SolveOptions& options, const AnyMatrix& matrix, const std::optional<AnyMatrix>& rhs)
{
    const auto [rows, cols] = shapeOf(matrix);
    if (rows != cols)
        throw Failure(fmt::format("{}: the matrix is {} x {}, not square", options.matrix, rows, cols));
    if (rhs)
        checkHasColumns(options.rhs, *rhs);
    if (rhs && shapeOf(*rhs).first != rows)
        throw Failure(fmt::format("{}: the right-hand side has {} rows, but the matrix has order {}", options.rhs,
                                  shapeOf(*rhs).first, rows));
}

template <class T>
Solution solve(const SolveOptions& options, const AnyMatrix& matrix, const std::optional<AnyMatrix>& rhs)
{
    const Matrix<T> a = toSingle<T>(options.matrix, matrix);
    const Matrix<T> b = rhs ? toSingle<T>(options.rhs, *rhs) : rowSums(a);
    Solution result{a.rows, b.cols};
    Matrix<T> factors = a, x = b;
    std::vector<int> pivots(std::max(1, a.rows));

    const Library library;
    Phase phase("solving", bench::expectedSeconds("gesv", letter<T>, {0, a.rows, 0, b.cols}));
    tarnStatus status = tarnNoError;
    result.seconds = secondsOf([&] {
        if constexpr (isComplex<T>)
            status =
                call(tarnCgesv, a.rows, b.cols, factors.values.data(), a.ld(), pivots.data(), x.values.data(), b.ld());
        else
            status =
                call(tarnSgesv, a.rows, b.cols, factors.values.data(), a.ld(), pivots.data(), x.values.data(), b.ld());
    });
    if (const tarnInfo pivot = tarnGetErrorInfo(); status == tarnDataError && pivot > 0)
        throw Failure(fmt::format("{}: the matrix is singular: U({}, {}) of its LU factorisation is zero",
                                  options.matrix, pivot, pivot));
    check(status, isComplex<T> ? "tarnCgesv" : "tarnSgesv");

    phase.next("checking");
    result.gflops = gesvFlops(a.rows, b.cols) * (isComplex<T> ? 4 : 1) * 1e-9 / result.seconds;
    result.rcond = reciprocalConditionOfLu(factors, norm1(a));
    result.backwardError = solveBackwardError(a, b, x);
    if (!rhs)
        result.forwardError = deviationFromOnes(x);
    if (!std::isfinite(result.backwardError))
        throw Failure(options.matrix + ": the solution does not fit single precision");
    phase.end();
    if (!options.out.empty())
        writeMatrixMarket(options.out, x);
    return result;
}

void print(const SolveOptions& options, char type, const Solution& s)
{
    const char* status = tarnGetStatusString(tarnNoError);
    if (options.json) {
        nlohmann::ordered_json object = {{"matrix", options.matrix},
                                         {"routine", "gesv"},
                                         {"type", std::string(1, type)},
                                         {"n", s.n},
                                         {"nrhs", s.nrhs},
                                         {"seconds", s.seconds},
                                         {"gflops", s.gflops},
                                         {"backward_error", s.backwardError},
                                         {"rcond", s.rcond},
                                         {"status", status}};
        if (s.forwardError)
            object["forward_error"] = *s.forwardError;
        printObject(object);
        return;
    }
    fmt::print("system          order {}, {} right-hand side{}, {} single precision\n", s.n, s.nrhs,
               s.nrhs == 1 ? "" : "s", type == 'c' ? "complex" : "real");
    fmt::print("time            {:.6f} s, {:.2f} GFLOP/s\n", s.seconds, s.gflops);
    fmt::print("backward error  {:.3g}   norm1(B - A X) / (n norm1(A) norm1(X) eps), eps = 2^-23\n", s.backwardError);
    fmt::print("condition       {:.3g}   an estimate of norm1(A) norm1(A^-1)\n", 1 / s.rcond);
    if (s.forwardError)
        fmt::print("forward error   {:.3g}   largest |x - 1|, where all of X should be 1\n", *s.forwardError);
    fmt::print("status          {}\n", status);
    if (!options.out.empty())
        fmt::print("solution        {}\n", options.out);
}

int runSolve(const SolveOptions& options)
{
    reserveOutput(options.out);
    const AnyMatrix matrix = readMatrixMarket(options.matrix);
    std::optional<AnyMatrix> rhs;
    if (!options.rhs.empty())
        rhs = readMatrixMarket(options.rhs);
    checkShapes(options, matrix, rhs);

    const bool complex = options.complex || holdsComplex(matrix) || (rhs && holdsComplex(*rhs));
    const Solution solution =
        complex ? solve<std::complex<float>>(options, matrix, rhs) : solve<float>(options, matrix, rhs);
    print(options, complex ? 'c' : 's', solution);
    warnOfCondition(options.matrix, solution.rcond);
    return 0;
}

} // namespace

Command addSolve(CLI::App& tarn)
{
    auto options = std::make_shared<SolveOptions>();
    CLI::App* app = tarn.add_subcommand("solve", "Solve A X = B for a square matrix from a Matrix Market file");
    app->add_option("matrix", options->matrix, "A: coordinate or array format")->required()->type_name("FILE");
    app->add_option("--rhs", options->rhs, "B; without it B is A times a vector of ones")->type_name("FILE");
    app->add_option("--out", options->out, "Where X goes, in array format; - is the standard output")
        ->type_name("FILE");
    app->add_flag("--complex", options->complex, "Solve in complex arithmetic even if the files are real");
    app->add_flag("--json", options->json, "Print one JSON object");
    return {app, [options] { return runSolve(*options); }};
}

} // namespace tarn::tool
