#include "service/KeywordMatcher.h"

namespace service {

std::string foldedCase(const std::string &text)
{
    std::string folded = text;
    for (char &c : folded) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return folded;
}

KeywordMatcher::KeywordMatcher(std::vector<std::string> keywords) : m_keywords(std::move(keywords))
{
    m_folded.reserve(m_keywords.size());
    for (const std::string &keyword : m_keywords)
        m_folded.push_back(foldedCase(keyword));
}

std::vector<std::string> KeywordMatcher::matches(const std::string &title, const std::string &content) const
{
    std::vector<std::string> found;
    if (m_keywords.empty())
        return found;
    const std::string foldedTitle = foldedCase(title);
    const std::string foldedContent = foldedCase(content);
    for (std::size_t i = 0; i < m_keywords.size(); ++i) {
        if (m_folded[i].empty())
            continue;
        if (foldedTitle.find(m_folded[i]) != std::string::npos ||
            foldedContent.find(m_folded[i]) != std::string::npos)
            found.push_back(m_keywords[i]);
    }
    return found;
}

} // namespace service
