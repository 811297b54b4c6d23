// JSON on the standard output. Who makes objects has nlohmann/json.hpp too.
#pragma once

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace tarn::tool {

/// A text with U+FFFD in place of bytes that are no UTF-8, as file names may hold.
std::string validUtf8(const std::string& text);

/// Prints an object in one line, its strings as valid UTF-8.
void printObject(const nlohmann::ordered_json& object);

} // namespace tarn::tool
