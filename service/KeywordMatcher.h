#pragma once

#include <string>
#include <vector>

namespace service {

/// ASCII letters in lower case, all other bytes as they are.
std::string foldedCase(const std::string &text);

/// Finds a user's keywords in news. A keyword matches when the title or the content holds it anywhere; ASCII
/// letters match without regard to case.
class KeywordMatcher final
{
public:
    explicit KeywordMatcher(std::vector<std::string> keywords);

    /// The keywords that match, in the order in which they were given.
    std::vector<std::string> matches(const std::string &title, const std::string &content) const;

private:
    std::vector<std::string> m_keywords;
    std::vector<std::string> m_folded;
};

} // namespace service
