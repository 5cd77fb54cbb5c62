#pragma once

#include <optional>
#include <stdexcept>
#include <string>

namespace service {

/// A refusal that the caller is told: HTTP status, the text for "error", and for 429 the seconds to wait.
class ServiceError final : public std::runtime_error
{
public:
    ServiceError(int httpStatus, const std::string &text) : std::runtime_error(text), status(httpStatus) {}
    ServiceError(int httpStatus, const std::string &text, std::int64_t seconds)
        : std::runtime_error(text), status(httpStatus), waitSeconds(seconds)
    {}

    int status;
    std::optional<std::int64_t> waitSeconds;
};

} // namespace service
