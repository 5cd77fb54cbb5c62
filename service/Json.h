#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace service {

/// What goes out: keys stay in the order in which they were put in, so a reply reads as it was written.
using Json = nlohmann::ordered_json;

/// What comes in. A sorted object, because a large body with very many keys must not cost quadratic time.
using JsonIn = nlohmann::json;

/// Text of a value for the wire: compact, UTF-8, bytes that are no UTF-8 replaced instead of refused.
std::string toWire(const Json &value);

/// How deep the lists and objects of a body may nest.
inline constexpr int DeepestNesting = 64;

/// Parses text that must be a JSON object.
/// @return nothing when the text is no JSON or no object, or nests deeper than `DeepestNesting`.
std::optional<JsonIn> parseObject(const std::string &text);

/// The text under `key`; throws ServiceError 400 naming the key when it is missing or no string.
std::string requiredText(const JsonIn &object, const char *key);

/// The text under `key`, or `fallback` when it is missing; throws ServiceError 400 when it is no string.
std::string optionalText(const JsonIn &object, const char *key, const std::string &fallback = {});

/// The flag under `key`, or `fallback` when it is missing; throws ServiceError 400 when it is no bool.
bool optionalFlag(const JsonIn &object, const char *key, bool fallback);

/// The whole number under `key`, or nothing when it is missing; throws ServiceError 400 when it is none.
std::optional<std::int64_t> optionalNumber(const JsonIn &object, const char *key);

/// A reply that has nothing to say but that it worked: "success" true and "message".
Json messageReply(const std::string &message);

/// A reply with "success" true and "data".
Json dataReply(Json data);

/// The same JSON with every leaf of another type: texts become numbers, numbers texts, flags words, null an
/// empty list, and every list gets a stray text in front. Names and nesting stay.
Json withWrongTypes(const Json &value);

/// The same JSON with the value at a place put in, or taken out when there is no `newValue`. The place is a
/// JSON pointer such as "/data/stocks/0/name"; "-" stands for the end of a list. What would lie in no object
/// or list that is there changes nothing. Throws ServiceError 400 when `pointer` is none.
Json withChange(Json value, const std::string &pointer, const std::optional<JsonIn> &newValue);

} // namespace service
