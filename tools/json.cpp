#include "json.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace tarn::tool {

namespace {

template <class Json>
std::string dump(const Json& value)
{
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

} // namespace

std::string validUtf8(const std::string& text)
{
    return nlohmann::json::parse(dump(nlohmann::json(text))).get<std::string>();
}

void printObject(const nlohmann::ordered_json& object) { fmt::print("{}\n", dump(object)); }

} // namespace tarn::tool
