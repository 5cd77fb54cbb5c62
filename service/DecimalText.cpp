#include "service/DecimalText.h"

#include <cstdlib>

namespace service {

std::string decimalText(std::int64_t hundredths)
{
    const std::int64_t size = std::abs(hundredths);
    const std::string decimals = std::to_string(size % 100);
    return (hundredths < 0 ? "-" : "") + std::to_string(size / 100) + (decimals.size() < 2 ? ".0" : ".") +
           decimals;
}

} // namespace service
