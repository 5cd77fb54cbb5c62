#pragma once

#include "service/Router.h"
#include "service/TradingCalendar.h"

#include <optional>
#include <string>

namespace service {

struct Stock;

/// The text of a query item, empty when it is missing.
std::string queryText(const Call &call, const char *name);

/// Throws ServiceError 400 unless `code` has six digits.
void refuseFaultyCode(const std::string &code);

/// The day of a query item, nothing when it is missing or empty; throws ServiceError 400 when it is no date.
std::optional<Day> queryDay(const Call &call, const char *name);

/// The stock of a code. Throws ServiceError 400 when it has not six digits, and 404 with "NOT FOUND" in the
/// text when nothing is listed under it. Null for a fund, an index or a bond, with `reply` telling so.
const Stock *stockFor(const std::string &code, Reply &reply);

} // namespace service
