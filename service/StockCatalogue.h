#pragma once

#include <vector>

namespace service {

/// One listed stock: real code, real name, its line of business.
struct Stock
{
    const char *code;
    const char *name;
    const char *industry;
};

/// The stocks that appear in simulated news and data, of all four markets.
const std::vector<Stock> &stockCatalogue();

} // namespace service
