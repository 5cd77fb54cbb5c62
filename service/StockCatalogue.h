#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace service {

/// One listed stock: real code, real name, its line of business, where it has its seat. Price and number of
/// shares are of the right order and no more.
struct Stock
{
    const char *code;
    const char *name;
    const char *industry;
    const char *region;
    /// The price around which the simulated one swings, in hundredths of a yuan.
    std::int64_t usualPrice;
    /// Shares in free float, in millions.
    std::int64_t floatShares;
};

/// The stocks that appear in simulated news and data, of all four markets.
const std::vector<Stock> &stockCatalogue();

/// The stock of a code; null when there is none.
const Stock *findStock(const std::string &code);

/// What is listed beside the stocks.
enum class SecurityKind
{
    Fund,
    Index,
    ConvertibleBond,
};

/// A fund, an index or a convertible bond: real code and name. There are no records of these.
struct OtherSecurity
{
    const char *code;
    const char *name;
    SecurityKind kind;
};

const std::vector<OtherSecurity> &otherSecurities();

/// The security of a code that is no stock's; null when there is none.
const OtherSecurity *findOtherSecurity(const std::string &code);

} // namespace service
