#include "bench/trial.h"
#include "commands.h"
#include "condition.h"
#include "failure.h"
#include "json.h"
#include "output.h"
#include "progress.h"
#include "refined_solution.h"
#include "single_precision.h"
#include "timing.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <optional>

namespace tarn::tool {

namespace {

struct Solution
{
    int n = 0, nrhs = 0;
    double seconds = 0, gflops = 0, backwardError = 0, rcond = 0;
    std::optional<double> forwardError = {};       ///< where the solution is known
    std::optional<tarnRefinement> refinement = {}; ///< where it is one in double precision
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

/// The matrix of a file for W double, or for W complex if it is real.
template <class W>
Matrix<W> toDouble(const AnyMatrix& any)
{
    const auto* same = std::get_if<Matrix<W>>(&any);
    return same ? *same : convert<W>(std::get<Matrix<double>>(any));
}

/// What both precisions say of X, which goes to its file.
template <class T>
void finish(const SolveOptions& options, const Matrix<T>& a, const Matrix<T>& b, const Matrix<T>& x, Phase& phase,
            Solution& result)
{
    phase.next("checking");
    result.gflops = gesvFlops(a.rows, b.cols) * (isComplex<T> ? 4 : 1) * 1e-9 / result.seconds;
    result.backwardError = solveBackwardError(a, b, x);
    if (options.rhs.empty())
        result.forwardError = deviationFromOnes(x);
    if (!std::isfinite(result.backwardError))
        throw Failure(options.matrix + ": the solution does not fit " +
                      select<T>("single", "double", "single", "double") + " precision");
    phase.end();
    if (!options.out.empty())
        writeMatrixMarket(options.out, x);
}

template <class W>
Solution solveInDouble(const SolveOptions& options, const AnyMatrix& matrix, const std::optional<AnyMatrix>& rhs)
{
    const Matrix<W> a = toDouble<W>(matrix);
    const Matrix<W> b = rhs ? toDouble<W>(*rhs) : rowSums(a);
    Solution result{a.rows, b.cols};
    Phase phase("solving in double precision");
    const RefinedSolution<W> refined = solveRefined(options.matrix, a, b);
    result.seconds = refined.seconds;
    result.rcond = refined.how.rcond;
    result.refinement = refined.how;
    finish(options, a, b, refined.x, phase, result);
    return result;
}

/// In single precision; in double where single loses more than half of its digits and the files hold more.
template <class T>
Solution solve(const SolveOptions& options, const AnyMatrix& matrix, const std::optional<AnyMatrix>& rhs)
{
    const Matrix<T> a = toSingle<T>(options.matrix, matrix);
    const Matrix<T> b = rhs ? toSingle<T>(options.rhs, *rhs) : rowSums(a);
    Solution result{a.rows, b.cols};
    Matrix<T> factors = a, x = b;
    std::vector<int> pivots(std::max(1, a.rows));

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
    const tarnInfo pivot = tarnGetErrorInfo();
    const bool singular = status == tarnDataError && pivot > 0;
    if (!singular) {
        check(status, isComplex<T> ? "tarnCgesv" : "tarnSgesv");
        result.rcond = reciprocalConditionOfLu(factors, norm1(a));
    }
    if (!options.single && !(result.rcond >= rcondOfHalfTheDigits) &&
        (holdsDoubles(matrix) || (rhs && holdsDoubles(*rhs)))) {
        phase.end();
        return solveInDouble<Wide<T>>(options, matrix, rhs);
    }
    if (singular)
        throw Failure(fmt::format("{}: the matrix is singular: U({}, {}) of its LU factorisation is zero",
                                  options.matrix, pivot, pivot));
    finish(options, a, b, x, phase, result);
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
        if (s.refinement)
            object["iter"] = s.refinement->iter;
        if (s.forwardError)
            object["forward_error"] = *s.forwardError;
        printObject(object);
        return;
    }
    const char* precision = s.refinement ? "double" : "single";
    fmt::print("system          order {}, {} right-hand side{}, {} {} precision\n", s.n, s.nrhs, s.nrhs == 1 ? "" : "s",
               type == 'c' || type == 'z' ? "complex" : "real", precision);
    if (s.refinement)
        fmt::print("solved          {}{}\n", wayOf(*s.refinement),
                   options.refine ? "" : "; single precision loses more than half of its digits here");
    fmt::print("time            {:.6f} s, {:.2f} GFLOP/s\n", s.seconds, s.gflops);
    fmt::print("backward error  {:.3g}   norm1(B - A X) / (n norm1(A) norm1(X) eps), eps = 2^-{}\n", s.backwardError,
               s.refinement ? 52 : 23);
    fmt::print("condition       {:.3g}   an estimate of norm1(A) norm1(A^-1)\n", 1 / s.rcond);
    if (s.forwardError)
        fmt::print("forward error   {:.3g}   largest |x - 1|, where all of X should be 1\n", *s.forwardError);
    fmt::print("status          {}\n", status);
    if (!options.out.empty())
        fmt::print("solution        {}\n", options.out);
}

} // namespace

int runSolve(const SolveOptions& options)
{
    reserveOutput(options.out);
    const AnyMatrix matrix = readMatrixMarket(options.matrix);
    std::optional<AnyMatrix> rhs;
    if (!options.rhs.empty())
        rhs = readMatrixMarket(options.rhs);
    checkShapes(options, matrix, rhs);

    const bool complex = options.complex || holdsComplex(matrix) || (rhs && holdsComplex(*rhs));
    const Library library;
    const auto way = options.refine ? (complex ? &solveInDouble<std::complex<double>> : &solveInDouble<double>)
                                    : (complex ? &solve<std::complex<float>> : &solve<float>);
    const Solution solution = way(options, matrix, rhs);
    if (solution.refinement) {
        print(options, complex ? 'z' : 'd', solution);
        warnOfCondition<double>(options.matrix, solution.rcond);
    } else {
        print(options, complex ? 'c' : 's', solution);
        warnOfCondition<float>(options.matrix, solution.rcond);
    }
    return 0;
}

} // namespace tarn::tool
