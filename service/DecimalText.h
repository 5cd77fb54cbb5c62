#pragma once

#include <cstdint>
#include <string>

namespace service {

/// A number of hundredths as text with two decimals: 1234 is "12.34", -5 is "-0.05".
std::string decimalText(std::int64_t hundredths);

} // namespace service
