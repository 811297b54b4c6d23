// The subcommands of tarn. Each add function declares one with its options on the application, and returns what runs
// it.
#pragma once

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace tarn::tool {

struct Command
{
    CLI::App* app;
    std::function<int()> run; ///< the exit status of the program; raises Failure
};

Command addInfo(CLI::App& tarn);
Command addSolve(CLI::App& tarn);
Command addLstsq(CLI::App& tarn);
Command addSvd(CLI::App& tarn);
Command addBench(CLI::App& tarn);
Command addDemo(CLI::App& tarn);
Command addRun(CLI::App& tarn);
Command addReport(CLI::App& tarn);
Command addHelp(CLI::App& tarn);

/// The command of that name; raises UsageError, listing those that there are, where there is none.
const CLI::App& commandNamed(const CLI::App& tarn, const std::string& name);

/// Runs the tool: 0, or 1 after a failure, or 2 for a command line that does not parse, each with one line on the error
/// stream.
int runTool(int argc, char** argv);

} // namespace tarn::tool
