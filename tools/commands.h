// The subcommands of tarn: what may be asked of each, and what runs it. The run functions return the exit status of the
// program, and raise Failure.
#pragma once

#include <string>
#include <vector>

namespace tarn::tool {

int runInfo(bool json);

/// A X = B for a square matrix. Names of files: empty, none; "-", the standard output.
struct SolveOptions
{
    std::string matrix, rhs, out;
    bool complex = false, json = false, refine = false, single = false;
};
int runSolve(const SolveOptions& options);

/// Least squares or least norm.
struct LstsqOptions
{
    std::string matrix, rhs, constraints, constraintRhs, out;
    bool complex = false, json = false;

    bool constrained() const { return !constraints.empty(); }
};
int runLstsq(const LstsqOptions& options);

/// Singular values.
struct SvdOptions
{
    std::string matrix, out, plot;
    int rank = 0; ///< of the nearest matrix that is asked for; 0: none is
    bool vectors = false, complex = false, json = false;

    bool wantsVectors() const { return vectors || rank > 0; }
};
int runSvd(const SvdOptions& options);

/// Measurements of routines.
struct BenchOptions
{
    std::vector<std::string> routines = {"all"};
    std::string types = "s";
    std::vector<std::string> sizes = {"1024"};
    int nrhs = 10, repeats = 0;
    std::vector<int> threads; ///< of callers at a time; empty: one, call by call
    bool json = false, csv = false, list = false, kernels = false, dropin = false;
};
int runBench(const BenchOptions& options);
/// Explains the table that it prints.
std::string benchHelp();

int runDemo(const std::string& folder);
/// The folder of the sample problems: beside an installed tool, else in the source tree.
std::string demoFolder();

/// A program under the drop-in library.
struct RunOptions
{
    std::vector<std::string> command;
    bool report = false;
};
int runProgram(RunOptions options);

int runReport(const std::string& log);

} // namespace tarn::tool
