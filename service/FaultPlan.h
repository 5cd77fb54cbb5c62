#pragma once

#include "service/Json.h"

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace service {

/// What goes wrong with a request. Kinds that need a real answer let the request through and spoil the
/// answer; the others never reach the service behind the relay.
enum class FaultKind
{
    /// The real answer, held back for `delayMs`.
    Delay,
    /// No answer; the connection stays open.
    Drop,
    /// The connection is reset (RST).
    Reset,
    /// The connection is closed without an answer.
    Close,
    /// The real head, but only `bytes` bytes of the body (half of it by default), then the connection ends.
    Truncate,
    /// The real answer, `bytes` bytes every `intervalMs`.
    Drip,
    /// `status` with `body`.
    Status,
    /// Status 200 with a body that is no JSON.
    NotJson,
    /// The real answer with other types in all places.
    WrongTypes,
    /// The real answer with the values of `set` put in and those of `remove` taken out.
    Change,
    /// A valid JSON body of `bytes` bytes (50 MiB by default).
    Huge,
};

/// One rule: which requests, what happens, how often.
struct Fault
{
    std::int64_t id = 0;
    FaultKind kind = FaultKind::Delay;
    /// Beginning of the target, query included.
    std::string path;
    /// Empty for all methods.
    std::string method;
    /// How many requests it hits; nothing for all until it is switched off.
    std::optional<std::int64_t> remaining;
    std::int64_t delayMs = 0;
    int status = 500;
    std::string body;
    std::string contentType = "application/json; charset=utf-8";
    std::optional<std::int64_t> bytes;
    std::int64_t intervalMs = 100;
    /// Places in the body, as JSON pointers, with their new values, and places that go.
    std::vector<std::pair<std::string, JsonIn>> set;
    std::vector<std::string> remove;
};

/// Reads a rule from the object that the administration path takes. Throws ServiceError 400 for what is
/// missing or out of range.
Fault faultFrom(const JsonIn &object);

/// The body of an answer that a rule of the kind `Change` hits; a body that is no JSON stays as it is.
std::string changedBody(const Fault &fault, const std::string &body);

/// The rule as the administration path shows it.
Json toJson(const Fault &fault);

/// The word of a kind on the administration path.
const char *wordFor(FaultKind kind);

/// The faults that are switched on. Safe to use from any thread.
class FaultPlan final
{
public:
    FaultPlan() = default;
    FaultPlan(const FaultPlan &) = delete;
    FaultPlan &operator=(const FaultPlan &) = delete;

    /// Switches a fault on. @return the same with its id.
    Fault add(Fault fault);

    /// The oldest rule that hits a request, counted down; nothing when none does. Administration paths are
    /// never hit.
    std::optional<Fault> take(const std::string &method, const std::string &target);

    std::vector<Fault> all() const;
    void clear();

private:
    mutable std::mutex m_mutex;
    std::vector<Fault> m_faults;
    std::int64_t m_lastId = 0;
};

} // namespace service
