#include "service/FaultPlan.h"

#include "service/ServiceError.h"

#include <utility>

namespace service {

namespace {

constexpr std::pair<FaultKind, const char *> words[] = {
    {FaultKind::Delay, "delay"},   {FaultKind::Drop, "drop"},         {FaultKind::Reset, "reset"},
    {FaultKind::Close, "close"},   {FaultKind::Truncate, "truncate"}, {FaultKind::Drip, "drip"},
    {FaultKind::Status, "status"}, {FaultKind::NotJson, "not_json"},  {FaultKind::WrongTypes, "wrong_types"},
    {FaultKind::Change, "change"}, {FaultKind::Huge, "huge"},
};

constexpr std::int64_t largestBody = 256 * 1024 * 1024;
constexpr std::int64_t longestTimeMs = 3'600'000;

FaultKind kindFrom(const std::string &word)
{
    for (const auto &[kind, name] : words) {
        if (word == name)
            return kind;
    }
    throw ServiceError(400, "unknown kind of fault: " + word);
}

std::optional<std::int64_t> numberWithin(const JsonIn &object, const char *key, std::int64_t least,
                                         std::int64_t most)
{
    const auto number = optionalNumber(object, key);
    if (number && (*number < least || *number > most))
        throw ServiceError(400, std::string("out of range: ") + key);
    return number;
}

std::string bodyFrom(const JsonIn &object, int status)
{
    if (const auto found = object.find("body"); found != object.end())
        return found->is_string() ? found->get<std::string>() : found->dump();
    // Answers of these two have no body: a client would take one for the start of its next answer.
    if (status == 204 || status == 304)
        return {};
    Json body{{"success", false}, {"error", optionalText(object, "error", "模拟的服务错误")}};
    if (const auto wait = optionalNumber(object, "wait_seconds"))
        body["wait_seconds"] = *wait;
    else if (status == 429)
        body["wait_seconds"] = 30;
    return toWire(body);
}

void readChanges(Fault &fault, const JsonIn &object)
{
    const auto set = object.find("set");
    const auto remove = object.find("remove");
    if (set == object.end() && remove == object.end())
        throw ServiceError(400, "a change needs set or remove");
    if (set != object.end()) {
        if (!set->is_object())
            throw ServiceError(400, "set must be an object of JSON pointers");
        for (const auto &entry : set->items())
            fault.set.emplace_back(entry.key(), entry.value());
    }
    if (remove != object.end()) {
        if (!remove->is_array())
            throw ServiceError(400, "remove must be a list of JSON pointers");
        for (const JsonIn &place : *remove) {
            if (!place.is_string())
                throw ServiceError(400, "remove must be a list of JSON pointers");
            fault.remove.push_back(place.get<std::string>());
        }
    }
    // Tried out, so that a faulty pointer is refused here and not at the first answer.
    static_cast<void>(changedBody(fault, "{}"));
}

} // namespace

std::string changedBody(const Fault &fault, const std::string &body)
{
    Json value = Json::parse(body, nullptr, false);
    if (value.is_discarded())
        return body;
    for (const auto &[place, newValue] : fault.set)
        value = withChange(std::move(value), place, newValue);
    for (const std::string &place : fault.remove)
        value = withChange(std::move(value), place, std::nullopt);
    return toWire(value);
}

const char *wordFor(FaultKind kind)
{
    for (const auto &[value, name] : words) {
        if (kind == value)
            return name;
    }
    return "";
}

Fault faultFrom(const JsonIn &object)
{
    Fault fault;
    fault.path = requiredText(object, "path");
    if (fault.path.empty() || fault.path.front() != '/')
        throw ServiceError(400, "path must begin with a slash");
    fault.kind = kindFrom(requiredText(object, "kind"));
    fault.method = optionalText(object, "method");
    fault.remaining = numberWithin(object, "count", 1, 1'000'000);
    fault.delayMs = numberWithin(object, "delay_ms", 0, longestTimeMs).value_or(0);
    fault.status = static_cast<int>(numberWithin(object, "status", 200, 599).value_or(fault.status));
    fault.bytes = numberWithin(object, "bytes", 0, largestBody);
    fault.intervalMs = numberWithin(object, "interval_ms", 1, longestTimeMs).value_or(fault.intervalMs);
    fault.contentType = optionalText(object, "content_type", fault.contentType);
    if (fault.kind == FaultKind::Delay && fault.delayMs == 0)
        throw ServiceError(400, "a delay needs delay_ms");
    if (fault.kind == FaultKind::Drip && fault.bytes.value_or(1) < 1)
        throw ServiceError(400, "out of range: bytes");
    if (fault.kind == FaultKind::Change)
        readChanges(fault, object);
    if (fault.kind == FaultKind::Status)
        fault.body = bodyFrom(object, fault.status);
    if (fault.kind == FaultKind::NotJson)
        fault.body = object.contains("body") ? requiredText(object, "body")
                                             : "<html><body><h1>Gateway</h1>this is no JSON</body></html>";
    return fault;
}

Json toJson(const Fault &fault)
{
    Json object{{"id", fault.id}, {"path", fault.path}, {"kind", wordFor(fault.kind)}};
    if (!fault.method.empty())
        object["method"] = fault.method;
    if (fault.remaining)
        object["count"] = *fault.remaining;
    if (fault.delayMs > 0)
        object["delay_ms"] = fault.delayMs;
    if (fault.kind == FaultKind::Status)
        object["status"] = fault.status;
    if (fault.bytes)
        object["bytes"] = *fault.bytes;
    if (fault.kind == FaultKind::Drip)
        object["interval_ms"] = fault.intervalMs;
    for (const auto &[place, newValue] : fault.set)
        object["set"][place] = Json(newValue);
    for (const std::string &place : fault.remove)
        object["remove"].push_back(place);
    return object;
}

Fault FaultPlan::add(Fault fault)
{
    const std::lock_guard lock(m_mutex);
    fault.id = ++m_lastId;
    m_faults.push_back(fault);
    return fault;
}

std::optional<Fault> FaultPlan::take(const std::string &method, const std::string &target)
{
    if (target.rfind("/admin/", 0) == 0)
        return std::nullopt;
    const std::lock_guard lock(m_mutex);
    for (auto fault = m_faults.begin(); fault != m_faults.end(); ++fault) {
        if (target.rfind(fault->path, 0) != 0 || (!fault->method.empty() && fault->method != method))
            continue;
        Fault taken = *fault;
        if (fault->remaining && --*fault->remaining == 0)
            m_faults.erase(fault);
        return taken;
    }
    return std::nullopt;
}

std::vector<Fault> FaultPlan::all() const
{
    const std::lock_guard lock(m_mutex);
    return m_faults;
}

void FaultPlan::clear()
{
    const std::lock_guard lock(m_mutex);
    m_faults.clear();
}

} // namespace service
