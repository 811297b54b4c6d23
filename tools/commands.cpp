#include "commands.h"

#include "versions.h"

#include <fmt/format.h>

#include <cstdio>
#include <exception>
#include <new>

namespace tarn::tool {

namespace {

constexpr int failed = 1, usageError = 2;

int report(const char* what, int status)
{
    fmt::print(stderr, "tarn: {}\n", what);
    return status;
}

int run(const Command& command)
{
    try {
        const int status = command.run();
        return std::fflush(stdout) == 0 ? status : report("cannot write the output", failed);
    } catch (const std::bad_alloc&) {
        return report("out of memory", failed);
    } catch (const std::exception& error) {
        // What was printed so far comes before the error wherever both streams end up in one place.
        std::fflush(stdout);
        return report(error.what(), failed);
    }
}

} // namespace

int runTool(int argc, char** argv)
{
    CLI::App app{"Dense linear algebra on a CUDA GPU: try it, solve with it, measure it."};
    app.set_version_flag("--version", "tarn " + libraryVersion());
    // None at all is refused below: CLI11 would else say that of a misspelt one too.
    app.require_subcommand(0, 1);
    const Command commands[] = {addInfo(app),  addSolve(app), addLstsq(app), addSvd(app),
                                addBench(app), addDemo(app),  addRun(app),   addReport(app)};
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return app.exit(error);
        return report(fmt::format("{} (tarn --help tells more)", error.what()).c_str(), usageError);
    }
    for (const Command& command : commands)
        if (command.app->parsed())
            return run(command);
    return report("a subcommand is required (tarn --help tells more)", usageError);
}

} // namespace tarn::tool
