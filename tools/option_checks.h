// Checks of the values of options.
#pragma once

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <charconv>
#include <climits>
#include <filesystem>
#include <string>

namespace tarn::tool {

/// Whole numbers from `least` to the largest int.
inline CLI::Validator atLeast(int least)
{
    const auto check = [least](const std::string& text) {
        int value = 0;
        const char* const end = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data(), end, value);
        const bool good = error == std::errc() && stop == end && value >= least;
        return good ? "" : fmt::format("{} is not a whole number from {} to {}", text, least, INT_MAX);
    };
    return {check, ""};
}

/// Names of SVG files, of files without an ending, and "-".
inline CLI::Validator svgName()
{
    const auto check = [](const std::string& text) {
        const std::string ending = std::filesystem::path(text).extension().string();
        const bool good = ending.empty() || ending == ".svg" || ending == ".SVG";
        return good ? "" : fmt::format("{} is not the name of an SVG file, NAME.svg, and plots are SVG only", text);
    };
    return {check, ""};
}

} // namespace tarn::tool
