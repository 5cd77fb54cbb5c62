#include "program/TradingProgram.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace {

struct Stock
{
    std::string_view code;
    std::string_view name;
};

constexpr Stock stocks[] = {
    {"600519", "贵州茅台"}, {"000001", "平安银行"},   {"300750", "宁德时代"},  {"688981", "中芯国际"},
    {"601318", "中国平安"}, {"002594", "比亚迪"},     {"000858", "五粮液"},    {"600036", "招商银行"},
    {"920002", "万达轴承"}, {"510300", "沪深300ETF"}, {"159915", "创业板ETF"}, {"110059", "浦发转债"},
    {"399001", "深证成指"}, {"830799", "艾融软件"},
};

const Stock *findStock(std::string_view code)
{
    const auto *found = std::find_if(std::begin(stocks), std::end(stocks),
                                     [code](const Stock &stock) { return stock.code == code; });
    return found == std::end(stocks) ? nullptr : found;
}

constexpr std::size_t codeLength = 6;

bool startsWith(std::string_view text, std::string_view beginning)
{
    return text.substr(0, beginning.size()) == beginning;
}

/// Ths's marker byte of the market that the code belongs to.
char marketMarker(std::string_view code)
{
    if (startsWith(code, "92"))
        return '\x97'; // Beijing
    if (startsWith(code, "6"))
        return '\x11'; // Shanghai
    if (startsWith(code, "11"))
        return '\x13'; // Shanghai, bonds
    if (startsWith(code, "5"))
        return '\x14'; // Shanghai, funds
    if (startsWith(code, "12"))
        return '\x23'; // Shenzhen, bonds
    if (startsWith(code, "15") || startsWith(code, "16"))
        return '\x24'; // Shenzhen, funds
    return '\x21';     // Shenzhen
}

} // namespace

std::string TradingProgram::stockName() const
{
    const Stock *stock = findStock(m_code);
    return stock ? std::string(stock->name) : std::string();
}

std::string TradingProgram::title() const
{
    std::string title = m_kind == Kind::Tdx ? "通达信金融终端(模拟)" : "同花顺(模拟)";
    if (!m_code.empty())
        title += " - " + m_code + ' ' + stockName();
    return title;
}

void TradingProgram::open(const std::string &code)
{
    m_typed.clear();
    m_code = code;
}

void TradingProgram::close()
{
    open({});
}

void TradingProgram::type(char digit)
{
    if (digit < '0' || digit > '9')
        return;
    m_typed += digit;
    if (m_typed.size() == codeLength)
        open(std::string(m_typed));
}

void TradingProgram::eraseDigit()
{
    if (!m_typed.empty())
        m_typed.pop_back();
}

void TradingProgram::openNext()
{
    const Stock *stock = findStock(m_code);
    openAt(stock ? std::size_t(stock - std::begin(stocks)) + 1 : 0);
}

void TradingProgram::openPrevious()
{
    const Stock *stock = findStock(m_code);
    openAt((stock ? std::size_t(stock - std::begin(stocks)) : 0) + std::size(stocks) - 1);
}

void TradingProgram::openAt(std::size_t position)
{
    open(std::string(stocks[position % std::size(stocks)].code));
}

std::array<char, 8> TradingProgram::memoryText() const
{
    std::array<char, 8> text = {};
    if (m_code.empty())
        return text;
    std::string bytes = m_code;
    if (m_kind == Kind::Ths)
        bytes.insert(bytes.begin(), marketMarker(m_code));
    std::copy_n(bytes.begin(), std::min(bytes.size(), text.size()), text.begin());
    return text;
}

std::string TradingProgram::codeOfNumber(std::int64_t number)
{
    constexpr std::int64_t codes = 1000000;
    if (number < 0)
        return {};
    const std::string digits = std::to_string(number % codes);
    return std::string(codeLength - digits.size(), '0') + digits;
}

std::string TradingProgram::codeOfBlock(const char *block, std::size_t size)
{
    if (size < 2)
        return {};
    const std::size_t length = std::min(size - 1, codeLength);
    return {block + 1, std::find(block + 1, block + 1 + length, '\0')};
}
