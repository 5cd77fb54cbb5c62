#include "linkage/StockCodeFormat.h"

#include <QLatin1String>

#include <algorithm>
#include <iterator>

namespace {

struct TdxRule
{
    QLatin1String beginning;
    QLatin1Char prefix{'\0'};
};

struct ThsRule
{
    QLatin1String beginning;
    char marker = '\0';
};

// The first rule that fits wins.
const TdxRule tdxRules[] = {
    {QLatin1String("6"), QLatin1Char('7')},  {QLatin1String("0"), QLatin1Char('6')},
    {QLatin1String("3"), QLatin1Char('6')},  {QLatin1String("9"), QLatin1Char('4')},
    {QLatin1String("11"), QLatin1Char('7')}, {QLatin1String("5"), QLatin1Char('7')},
    {QLatin1String("12"), QLatin1Char('6')}, {QLatin1String("15"), QLatin1Char('6')},
};

const ThsRule thsRules[] = {
    {QLatin1String("6"), '\x11'},  {QLatin1String("0"), '\x21'},  {QLatin1String("3"), '\x21'},
    {QLatin1String("92"), '\x97'}, {QLatin1String("11"), '\x13'}, {QLatin1String("12"), '\x23'},
    {QLatin1String("5"), '\x14'},  {QLatin1String("15"), '\x24'}, {QLatin1String("16"), '\x24'},
};
constexpr char thsMarkerOtherwise = '\x21';

template <typename Rule, std::size_t Count>
const Rule *firstRule(const Rule (&rules)[Count], const QString &code)
{
    const auto rule = std::find_if(std::begin(rules), std::end(rules), [&code](const Rule &candidate) {
        return code.startsWith(candidate.beginning);
    });
    return rule == std::end(rules) ? nullptr : rule;
}

} // namespace

QString StockCodeFormat::formatTdxCode(const QString &code)
{
    const TdxRule *rule = firstRule(tdxRules, code);
    return rule ? rule->prefix + code : code;
}

QByteArray StockCodeFormat::formatThsCode(const QString &code)
{
    if (code.isEmpty())
        return {};
    const ThsRule *rule = firstRule(thsRules, code);
    return QByteArray(1, rule ? rule->marker : thsMarkerOtherwise) + code.toLatin1();
}
