#include "commands.h"
#include "failure.h"

#include <fmt/format.h>

#include <memory>

namespace tarn::tool {

namespace {

std::vector<const CLI::App*> allCommands(const CLI::App& tarn)
{
    return tarn.get_subcommands([](const CLI::App*) { return true; });
}

} // namespace

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

} // namespace tarn::tool
