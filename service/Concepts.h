#pragma once

#include <string>
#include <vector>

namespace service {

struct Stock;

/// A theme that the market trades, with the news behind it.
struct Concept
{
    const char *code;
    const char *name;
    /// What is said to move its stocks; a sentence without its full stop.
    const char *story;
};

/// All concepts.
const std::vector<Concept> &conceptCatalogue();

/// The concepts that a stock belongs to, the one nearest to its business first. Empty for a few.
std::vector<const Concept *> conceptsOf(const Stock &stock);

/// What a stock's company has to do with a concept, as the record of concepts tells it.
/// Empty for those that nobody has described.
std::string roleIn(const Concept &theme, const Stock &stock);

/// What a company of a line of business does.
std::string businessOf(const std::string &industry);

} // namespace service
