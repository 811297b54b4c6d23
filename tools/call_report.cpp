#include "call_report.h"

#include "failure.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <array>
#include <fstream>
#include <map>
#include <string>

namespace tarn::tool {

namespace {

constexpr std::array ways = {"device", "cpu", "fell_back"};

/// The calls of one routine, over all processes.
struct Sum
{
    std::array<long long, ways.size()> calls{};
    std::array<double, ways.size()> seconds{}, flops{};
    double largestFlops = 0;
    std::array<int, 3> largest{};
};

struct Log
{
    int processes = 0;
    std::map<std::string, int> devices; ///< processes on each
    std::map<std::string, Sum> routines;
};

void add(Sum& sum, const nlohmann::json& routine)
{
    for (std::size_t way = 0; way < ways.size(); ++way) {
        const auto& part = routine.at(ways[way]);
        sum.calls[way] += part.at("calls").get<long long>();
        sum.seconds[way] += part.at("seconds").get<double>();
        sum.flops[way] += part.at("flops").get<double>();
    }
    const auto size = routine.at("largest").get<std::array<int, 3>>();
    const double flops = double(size[0]) * size[1] * size[2];
    if (flops >= sum.largestFlops) {
        sum.largestFlops = flops;
        sum.largest = size;
    }
}

Log readLog(const std::string& file)
{
    Log log;
    std::ifstream lines(file);
    if (!lines)
        throw Failure(fmt::format("cannot read {}", file));
    try {
        for (std::string line; std::getline(lines, line);) {
            const auto process = nlohmann::json::parse(line);
            ++log.processes;
            const auto device = process.at("device").get<std::string>();
            ++log.devices[device.empty() ? "no call asked for a device" : device];
            for (const auto& routine : process.at("routines"))
                add(log.routines[routine.at("name").get<std::string>()], routine);
        }
    } catch (const nlohmann::json::exception& error) {
        throw Failure(fmt::format("{} is no log of calls: {}", file, error.what()));
    }
    return log;
}

std::string row(const std::string& name, const Sum& sum)
{
    const double deviceRate = sum.seconds[0] > 0 ? 1e-9 * sum.flops[0] / sum.seconds[0] : 0;
    return fmt::format("{:<8}{:>11}{:>11}{:>11}{:>11.3f}{:>11.3f}{:>11.1f}   {}\n", name, sum.calls[0], sum.calls[1],
                       sum.calls[2], sum.seconds[0], sum.seconds[1] + sum.seconds[2], deviceRate,
                       fmt::join(sum.largest, " x "));
}

} // namespace

std::string callReport(const std::string& file)
{
    const Log log = readLog(file);
    if (log.processes == 0)
        return "tarn: no process called a routine that the drop-in library answers\n";
    std::string text = fmt::format("{} process{}\n", log.processes, log.processes == 1 ? "" : "es");
    for (const auto& [device, count] : log.devices)
        text += fmt::format("  {} on {}\n", count, device);
    text += fmt::format("{:<8}{:>11}{:>11}{:>11}{:>11}{:>11}{:>11}   {}\n", "routine", "on device", "on CPU",
                        "fell back", "device s", "CPU s", "GFLOP/s", "largest");
    for (const auto& [name, sum] : log.routines)
        text += row(name, sum);
    return text;
}

} // namespace tarn::tool
