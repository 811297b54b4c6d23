#include "commands.h"

#include "failure.h"
#include "versions.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <new>
#include <system_error>

namespace tarn::tool {

namespace {

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
