// JSON on the standard output.
#pragma once

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <string>

namespace tarn::tool {

/// A text with U+FFFD in place of bytes that are no UTF-8, as file names may hold.
inline std::string validUtf8(const std::string& text)
{
    const auto replace = nlohmann::json::error_handler_t::replace;
    return nlohmann::json::parse(nlohmann::json(text).dump(-1, ' ', false, replace)).get<std::string>();
}

/// Prints an object in one line, its strings as valid UTF-8.
inline void printObject(const nlohmann::ordered_json& object)
{
    fmt::print("{}\n", object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

} // namespace tarn::tool
