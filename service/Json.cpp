#include "service/Json.h"

#include "service/ServiceError.h"

#include <cstdint>
#include <cstdlib>

namespace service {

std::string toWire(const Json &value)
{
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

namespace {

/// Whether brackets outside texts nest deeper than `most`. Looked at ahead of parsing: a parser builds every
/// level, and a megabyte of opening brackets keeps it busy for seconds.
bool nestsDeeperThan(const std::string &text, int most)
{
    int depth = 0;
    bool insideText = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (insideText) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                insideText = false;
        } else if (c == '"') {
            insideText = true;
        } else if (c == '{' || c == '[') {
            if (++depth > most)
                return true;
        } else if (c == '}' || c == ']') {
            --depth;
        }
    }
    return false;
}

} // namespace

std::optional<JsonIn> parseObject(const std::string &text)
{
    if (nestsDeeperThan(text, DeepestNesting))
        return std::nullopt;
    JsonIn value = JsonIn::parse(text, nullptr, false);
    if (!value.is_object())
        return std::nullopt;
    return value;
}

std::string requiredText(const JsonIn &object, const char *key)
{
    const auto found = object.find(key);
    if (found == object.end())
        throw ServiceError(400, std::string("缺少字段: ") + key);
    if (!found->is_string())
        throw ServiceError(400, std::string("字段类型错误: ") + key);
    return found->get<std::string>();
}

std::string optionalText(const JsonIn &object, const char *key, const std::string &fallback)
{
    return object.contains(key) ? requiredText(object, key) : fallback;
}

bool optionalFlag(const JsonIn &object, const char *key, bool fallback)
{
    const auto found = object.find(key);
    if (found == object.end())
        return fallback;
    if (!found->is_boolean())
        throw ServiceError(400, std::string("字段类型错误: ") + key);
    return found->get<bool>();
}

std::optional<std::int64_t> optionalNumber(const JsonIn &object, const char *key)
{
    const auto found = object.find(key);
    if (found == object.end())
        return std::nullopt;
    const bool isTooLarge = found->is_number_unsigned() && found->get<std::uint64_t>() > INT64_MAX;
    if (!found->is_number_integer() || isTooLarge)
        throw ServiceError(400, std::string("字段类型错误: ") + key);
    return found->get<std::int64_t>();
}

Json messageReply(const std::string &message)
{
    return Json{{"success", true}, {"message", message}};
}

Json dataReply(Json data)
{
    Json reply;
    reply["success"] = true;
    reply["data"] = std::move(data);
    return reply;
}

Json withWrongTypes(const Json &value)
{
    switch (value.type()) {
    case Json::value_t::object: {
        Json changed = Json::object();
        for (const auto &entry : value.items())
            changed[entry.key()] = withWrongTypes(entry.value());
        return changed;
    }
    case Json::value_t::array: {
        Json changed = Json::array({"not an object"});
        for (const Json &element : value)
            changed.push_back(withWrongTypes(element));
        return changed;
    }
    case Json::value_t::string:
        return 42;
    case Json::value_t::boolean:
        return value.get<bool>() ? "yes" : "no";
    case Json::value_t::null:
        return Json::array();
    default:
        return value.dump();
    }
}

Json withChange(Json value, const std::string &pointer, const std::optional<JsonIn> &newValue)
{
    Json::json_pointer place;
    try {
        place = Json::json_pointer(pointer);
    } catch (const Json::parse_error &) {
        throw ServiceError(400, "no JSON pointer: " + pointer);
    }
    if (place.empty())
        return newValue ? Json(*newValue) : Json();
    const std::string key = place.back();
    place.pop_back();
    if (!value.contains(place))
        return value;
    Json &parent = value[place];
    if (parent.is_object()) {
        if (newValue)
            parent[key] = Json(*newValue);
        else
            parent.erase(key);
    } else if (parent.is_array() && key == "-") {
        if (newValue)
            parent.push_back(Json(*newValue));
    } else if (parent.is_array()) {
        const auto index = static_cast<std::size_t>(std::strtoull(key.c_str(), nullptr, 10));
        if (key.find_first_not_of("0123456789") != std::string::npos || index >= parent.size())
            return value;
        if (newValue)
            parent[index] = Json(*newValue);
        else
            parent.erase(index);
    }
    return value;
}

} // namespace service
