// The command line of tarn: its commands with their options, and what is said of a line that does not parse. CLI11 is
// long to compile; no other file has it.
#include "command_line.h"

#include "commands.h"
#include "failure.h"
#include "option_checks.h"
#include "versions.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <system_error>
#include <vector>

namespace tarn::tool {

namespace {

// Each add function declares a command with its options on the application.

struct Command
{
    CLI::App* app;
    std::function<int()> run; ///< the exit status of the program; raises Failure
};

Command addInfo(CLI::App& tarn)
{
    auto json = std::make_shared<bool>(false);
    CLI::App* app = tarn.add_subcommand("info", "Print devices, versions, and the CPU BLAS with its speed");
    app->add_flag("--json", *json, "Print one JSON object");
    return {app, [json] { return runInfo(*json); }};
}

Command addSolve(CLI::App& tarn)
{
    auto options = std::make_shared<SolveOptions>();
    CLI::App* app = tarn.add_subcommand("solve", "Solve A X = B for a square matrix from a Matrix Market file");
    app->add_option("matrix", options->matrix, "A: coordinate or array format")->required()->type_name("FILE");
    app->add_option("--rhs", options->rhs, "B; without it B is A times a vector of ones")->type_name("FILE");
    app->add_option("--out", options->out, "Where X goes, in array format; - is the standard output")
        ->type_name("FILE");
    app->add_flag("--complex", options->complex, "Solve in complex arithmetic even if the files are real");
    auto* refine =
        app->add_flag("--refine", options->refine, "Solve in double precision, by factors in single precision");
    app->add_flag("--single", options->single,
                  "Stay in single precision; else the files' doubles are refined where it loses half of its digits")
        ->excludes(refine);
    app->add_flag("--json", options->json, "Print one JSON object");
    return {app, [options] { return runSolve(*options); }};
}

Command addLstsq(CLI::App& tarn)
{
    auto options = std::make_shared<LstsqOptions>();
    CLI::App* app = tarn.add_subcommand("lstsq", "Least squares or least norm for a matrix from a Matrix Market file");
    app->add_option("matrix", options->matrix, "A: coordinate or array format")->required()->type_name("FILE");
    app->add_option("--rhs", options->rhs, "B; without it B is A times a vector of ones")->type_name("FILE");
    CLI::Option* constraints =
        app->add_option("--constraints", options->constraints, "B of constraints B x = d that x meets exactly")
            ->type_name("FILE");
    CLI::Option* constraintRhs =
        app->add_option("--constraint-rhs", options->constraintRhs, "d of the constraints")->type_name("FILE");
    constraints->needs(constraintRhs);
    constraintRhs->needs(constraints);
    app->add_option("--out", options->out, "Where X goes, in array format; - is the standard output")
        ->type_name("FILE");
    app->add_flag("--complex", options->complex, "Solve in complex arithmetic even if the files are real");
    app->add_flag("--json", options->json, "Print one JSON object");
    return {app, [options] { return runLstsq(*options); }};
}

Command addSvd(CLI::App& tarn)
{
    auto options = std::make_shared<SvdOptions>();
    CLI::App* app = tarn.add_subcommand("svd", "Singular values of a matrix from a Matrix Market file");
    app->add_option("matrix", options->matrix, "A: coordinate or array format")->required()->type_name("FILE");
    app->add_flag("--vectors", options->vectors, "Compute the singular vectors too, and show their errors");
    CLI::Option* rank =
        app->add_option("--rank", options->rank, "Find the nearest matrix of this rank")->check(atLeast(1));
    app->add_option("--out", options->out, "Where that matrix goes, in array format; - is the standard output")
        ->type_name("FILE")
        ->needs(rank);
    app->add_option("--plot", options->plot, "Where a plot of the values goes, as SVG; - is the standard output")
        ->type_name("FILE")
        ->check(svgName());
    app->add_flag("--complex", options->complex, "Compute in complex arithmetic even if the file is real");
    app->add_flag("--json", options->json, "Print one JSON object");
    return {app, [options] { return runSvd(*options); }};
}

Command addBench(CLI::App& tarn)
{
    auto options = std::make_shared<BenchOptions>();
    CLI::App* app = tarn.add_subcommand("bench", "Measure routines beside a reference library");
    app->add_option("--routine", options->routines, "Names with commas between, or all")
        ->delimiter(',')
        ->capture_default_str();
    app->add_option("--type", options->types, "Element types: letters of s, d, c, z")->capture_default_str();
    app->add_option("--size", options->sizes, "N or N:N2:STEP, or several with commas between")
        ->delimiter(',')
        ->capture_default_str();
    app->add_option("--nrhs", options->nrhs, "Right-hand sides of gesv and gels")
        ->check(atLeast(1))
        ->capture_default_str();
    app->add_option("--repeat", options->repeats, "Timed calls; 0: about a second's worth a row, at least 3")
        ->check(atLeast(0))
        ->capture_default_str();
    CLI::Option* json = app->add_flag("--json", options->json, "Print an array of JSON objects");
    CLI::Option* csv = app->add_flag("--csv", options->csv, "Print comma-separated values")->excludes(json);
    app->add_flag("--list", options->list,
                  "Measure nothing: print each routine's name, types, largest size for a survey, and reference");
    app->add_flag(
           "--kernels", options->kernels,
           "Measure copies, transposes and plane rotations of the device modules beside memcpy and LAPACK; of the "
           "other options --size and --repeat count")
        ->excludes(json);
    app->add_flag("--dropin", options->dropin,
                  "Measure what the drop-in library costs a call that stays on the CPU; no other option counts");
    app->add_option("--threads", options->threads,
                    "Threads that call at a time, several numbers with commas between: calls per second of all "
                    "together on host pointers, and their share of those of the first number")
        ->delimiter(',')
        ->check(atLeast(1))
        ->excludes(json)
        ->excludes(csv);
    app->footer(benchHelp());
    return {app, [options, app] {
                if (options->kernels && app->count("--size") == 0)
                    options->sizes = {"2048"};
                return runBench(*options);
            }};
}

Command addDemo(CLI::App& tarn)
{
    auto folder = std::make_shared<std::string>(demoFolder());
    CLI::App* app = tarn.add_subcommand("demo", "Solve five sample problems and compare with exact solutions");
    app->add_option("--data", *folder, "Folder of utm300.mtx, well1850.mtx and their right-hand sides")
        ->type_name("FOLDER")
        ->capture_default_str();
    return {app, [folder] { return runDemo(*folder); }};
}

Command addRun(CLI::App& tarn)
{
    auto options = std::make_shared<RunOptions>();
    CLI::App* app =
        tarn.add_subcommand("run", "Run a program whose BLAS and LAPACK calls go to the device if they gain");
    app->add_option("command", options->command, "The program and its arguments, behind --")
        ->required()
        ->type_name("PROGRAM ARGS");
    app->add_flag("--report", options->report, "At its end print which routines it called and where the calls went");
    app->footer(
        "Variables of the drop-in library (the Programmer's Guide tells more):\n"
        "  TARN_BLAS_MIN_FLOPS           the least operations of a call that goes to the device; inf: none goes\n"
        "  TARN_BLAS_MIN_FLOPS_PER_BYTE  the least operations for each byte that is moved there and back\n"
        "  TARN_BLAS_DEVICE              the device; without it the current one, or one by the local rank in MPI\n"
        "  TARN_BLAS_LOG                 a file to which each process appends its calls, for tarn report");
    return {app, [options] { return runProgram(*options); }};
}

Command addReport(CLI::App& tarn)
{
    auto log = std::make_shared<std::string>();
    CLI::App* app = tarn.add_subcommand("report", "Print the calls that programs wrote to the file of TARN_BLAS_LOG");
    app->add_option("log", *log, "The file")->required()->type_name("FILE");
    return {app, [log] { return runReport(*log); }};
}

std::vector<const CLI::App*> allCommands(const CLI::App& tarn)
{
    return tarn.get_subcommands([](const CLI::App*) { return true; });
}

/// The command of that name; raises UsageError, listing those that there are, where there is none.
const CLI::App& commandNamed(const CLI::App& tarn, const std::string& name)
{
    std::string known;
    for (const CLI::App* command : allCommands(tarn)) {
        if (command->get_name() == name)
            return *command;
        known += (known.empty() ? "" : ", ") + command->get_name();
    }
    throw UsageError(fmt::format("there is no command '{}', only {}", name, known));
}

Command addHelp(CLI::App& tarn)
{
    auto name = std::make_shared<std::string>();
    CLI::App* app = tarn.add_subcommand("help", "Explain a command, or list all");
    app->add_option("command", *name, "The command to explain")->type_name("COMMAND");
    return {app, [&tarn, name] {
                // tarn.help() would be that of the command that was given, which is this one.
                fmt::print("{}", name->empty() ? tarn.get_formatter()->make_help(&tarn, tarn.get_name(), {})
                                               : commandNamed(tarn, *name).help(tarn.get_name()));
                return 0;
            }};
}

constexpr int failed = 1, usageError = 2;

int report(const std::string& what, int status)
{
    fmt::print(stderr, "tarn: {}\n", what);
    return status;
}

int reportUsage(const std::string& what, const std::string& command = "")
{
    return report(fmt::format("{} (tarn help{}{} tells more)", what, command.empty() ? "" : " ", command), usageError);
}

/// The status, or a failure if something printed did not get out.
int finish(int status)
{
    errno = 0;
    if (std::fflush(stdout) == 0 && !std::ferror(stdout))
        return status;
    return report(std::string("standard output: ") + (errno ? std::strerror(errno) : "cannot be written"), failed);
}

int run(const Command& command)
{
    try {
        return finish(command.run());
    } catch (const std::bad_alloc&) {
        return report("out of memory", failed);
    } catch (const UsageError& error) {
        const std::string name = command.app->get_name();
        return reportUsage(error.what(), name == "help" ? "" : name);
    } catch (const std::system_error& error) {
        if (std::ferror(stdout))
            return report("standard output: " + error.code().message(), failed);
        std::fflush(stdout);
        return report(error.what(), failed);
    } catch (const std::exception& error) {
        // What was printed so far comes before the error wherever both streams end up in one place.
        std::fflush(stdout);
        return report(error.what(), failed);
    }
}

/// Says what is wrong with a word that is neither a command nor one of its arguments.
int refuse(const CLI::App& app, const std::string& word)
{
    if (word[0] == '-')
        return reportUsage("there is no option " + word);
    try {
        commandNamed(app, word);
    } catch (const UsageError& error) {
        return reportUsage(error.what());
    }
    return reportUsage(fmt::format("'{}' is one command too many", word));
}

} // namespace

int runTool(int argc, char** argv)
{
    CLI::App app{"Dense linear algebra on a CUDA GPU: try it, solve with it, measure it.", "tarn"};
    app.set_version_flag("--version", "tarn " + libraryVersion());
    // None at all is refused below: CLI11 would else say that of a misspelt one too.
    app.require_subcommand(0, 1);
    const Command commands[] = {addInfo(app), addSolve(app), addLstsq(app),  addSvd(app), addBench(app),
                                addDemo(app), addRun(app),   addReport(app), addHelp(app)};
    app.allow_extras(); // they are refused below
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return finish(app.exit(error));
        const auto parsed = app.get_subcommands();
        return reportUsage(error.what(), parsed.empty() ? "" : parsed.front()->get_name());
    }
    if (const auto extras = app.remaining(); !extras.empty())
        return refuse(app, extras.front());
    for (const Command& command : commands)
        if (command.app->parsed())
            return run(command);
    return reportUsage("a command is required");
}

} // namespace tarn::tool
