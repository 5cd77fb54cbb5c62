#include "stockviews/DynamicAnalysisText.h"

#include "settings/ConfigManager.h"
#include "stockviews/StockRendering.h"

#include <QDateTime>
#include <QStringView>

#include <algorithm>
#include <array>

namespace {

const QChar fullColon(0xff1a); // ：
const QChar colon = QLatin1Char(':');
const QChar enumerationComma(0x3001); // 、
const QChar lineFeed = QLatin1Char('\n');

const QString isoDay = QStringLiteral("yyyy-MM-dd");

struct Replacement
{
    QString find;
    QString by;
};

/// Each works on what the ones before it have left.
const std::array<Replacement, 15> &headReplacements()
{
    static const std::array<Replacement, 15> replacements{{
        {QStringLiteral("今日走势："), QStringLiteral("\n今日走势：")},
        {QStringLiteral("今日走势:"), QStringLiteral("\n今日走势:")},
        {QStringLiteral("异动原因揭秘：行业原因："), QStringLiteral("\n异动原因揭秘：\n行业原因：")},
        {QStringLiteral("异动原因揭秘: 行业原因:"), QStringLiteral("\n异动原因揭秘:\n行业原因:")},
        {QStringLiteral("异动原因揭秘："), QStringLiteral("\n异动原因揭秘：")},
        // That this one shortens the head is meant.
        {QStringLiteral("异动原因揭秘:"), QStringLiteral("\n异动原因:")},
        {QStringLiteral("板块异动原因："), QStringLiteral("\n板块异动原因：\n")},
        {QStringLiteral("板块异动原因:"), QStringLiteral("\n板块异动原因:\n")},
        {QStringLiteral("行业原因："), QStringLiteral("\n行业原因：\n")},
        {QStringLiteral("行业原因:"), QStringLiteral("\n行业原因:\n")},
        {QStringLiteral("公司原因："), QStringLiteral("\n公司原因：")},
        {QStringLiteral("公司原因:"), QStringLiteral("\n公司原因:")},
        {QStringLiteral("后市分析："), QStringLiteral("\n后市分析：")},
        {QStringLiteral("后市分析:"), QStringLiteral("\n后市分析:")},
        {QStringLiteral("（免责声明"), QStringLiteral("\n（免责声明")},
    }};
    return replacements;
}

bool isPlainDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

/// A letter, digit or underscore of ASCII.
bool isWordCharacter(QChar character)
{
    return isPlainDigit(character) || character == QLatin1Char('_') ||
           (character >= QLatin1Char('a') && character <= QLatin1Char('z')) ||
           (character >= QLatin1Char('A') && character <= QLatin1Char('Z'));
}

/// The place behind the digits that begin at `start`.
int endOfDigits(const QString &text, int start)
{
    int end = start;
    while (end < text.size() && isPlainDigit(text.at(end)))
        ++end;
    return end;
}

/// A line break before each number with "、" that has a character other than a line break before it. A number
/// of several digits at the start of a line is parted after its first digit.
QString withPointsOnLines(const QString &text)
{
    QString result;
    result.reserve(text.size() + text.size() / 8);
    int start = 0;
    while (start < text.size()) {
        const int end = endOfDigits(text, start);
        if (end == start) {
            result += text.at(start++);
            continue;
        }
        if (end < text.size() && text.at(end) == enumerationComma) {
            if (start > 0 && text.at(start - 1) == lineFeed)
                result += text.at(start++);
            if (start < end)
                result += lineFeed;
        }
        result += QStringView(text).mid(start, end - start);
        start = end;
    }
    return result;
}

bool beginsWithAny(QStringView line, std::initializer_list<QStringView> heads)
{
    return std::any_of(heads.begin(), heads.end(),
                       [line](QStringView head) { return line.startsWith(head); });
}

/// A text as the value of an attribute in single quotes.
QString quoted(const QString &value)
{
    return value.toHtmlEscaped().replace(QLatin1Char('\''), QLatin1String("&#39;"));
}

QString heading(const DynamicAnalysisRecord &record, const DynamicAnalysisText::Look &look)
{
    const QString color = quoted(StockRendering::getMarketColor(record.stockCode, look.stock));
    QString line =
        QStringLiteral("<p style='color:%1; font-size:%2px; font-weight:bold; margin:0 0 4px 0;'>%3 %4")
            .arg(color, QString::number(look.nameFontSize), record.stockName.toHtmlEscaped(),
                 record.stockCode.toHtmlEscaped());
    if (look.manualEdit) {
        line += QStringLiteral("&nbsp;").repeated(10);
        line += QStringLiteral("<a href='%1' style='font-size:%2px; font-weight:normal; color:#2ecc71; "
                               "text-decoration:none;'>%3</a>")
                    .arg(DynamicAnalysisText::editTarget(), QString::number(look.descFontSize),
                         QStringLiteral("修改"));
    }
    return line + QStringLiteral("</p>");
}

QString titleLine(const QString &title, const DynamicAnalysisText::Look &look)
{
    return QStringLiteral("<h3 style='color:%1; font-size:%2px; margin:0 0 6px 0;'>%3</h3>")
        .arg(quoted(look.nameColor), QString::number(look.nameFontSize), title.toHtmlEscaped());
}

/// The lines of the text as paragraphs, one after the other.
class Sections final
{
public:
    Sections(QString code, const DynamicAnalysisText::Look &look)
        : m_code(std::move(code))
        , m_nameColor(quoted(look.nameColor))
        , m_nameSize(QString::number(look.nameFontSize))
        , m_descColor(quoted(look.descColor))
        , m_descSize(QString::number(look.descFontSize))
        , m_smallSize(QString::number(look.descFontSize - 1))
    {}

    QString of(const QString &text)
    {
        m_html.reserve(text.size() * 2);
        int start = 0;
        while (start <= text.size()) {
            int end = text.indexOf(lineFeed, start);
            if (end < 0)
                end = text.size();
            const QStringView line = QStringView(text).mid(start, end - start).trimmed();
            // The outlook and all behind it are not shown; that is meant.
            if (line.startsWith(u"后市分析"))
                break;
            add(line);
            start = end + 1;
        }
        return m_html;
    }

private:
    void add(QStringView line)
    {
        if (line.isEmpty()) {
            if (m_afterItem)
                m_html += QLatin1String("<p style='margin:0 0 6px 0;'>&nbsp;</p>");
            return;
        }
        if (line.startsWith(QChar(0xff09)) || line.startsWith(QLatin1Char(')'))) {
            const QStringView rest = line.mid(1).trimmed();
            if (rest.startsWith(u"今日"))
                line = rest;
        }
        if (line.startsWith(u"今日") && !line.contains(fullColon) && !line.contains(colon))
            return;
        if (line == QStringView(m_code))
            return;

        const QString shown = line.toString().toHtmlEscaped();
        m_afterItem = true;
        if (beginsWithAny(line, {u"今日走势", u"异动原因揭秘", u"行业原因", u"板块异动原因", u"个股异动解析",
                                 u"公司原因"})) {
            const bool apart = beginsWithAny(line, {u"公司原因", u"个股异动解析"});
            m_html +=
                QStringLiteral(
                    "<p style='margin:%1px 0 6px 0; color:%2; font-size:%3px; font-weight:bold;'>%4</p>")
                    .arg(apart ? QStringLiteral("10") : QStringLiteral("4"), m_nameColor, m_nameSize, shown);
        } else if (line.startsWith(u"（免责声明")) {
            m_html += QStringLiteral("<p style='margin:6px 0;'>&nbsp;</p>"
                                     "<p style='margin:8px 0 4px 0; color:%1; font-size:%2px;'>%3</p>")
                          .arg(m_descColor, m_smallSize, shown);
        } else if (line.size() > 2 && line.at(0).isDigit() && line.at(1) == enumerationComma) {
            m_html += QStringLiteral("<p style='margin:%1px 0 4px 0; color:%2; font-size:%3px;'>%4</p>")
                          .arg(m_firstPoint ? QStringLiteral("6") : QStringLiteral("12"), m_descColor,
                               m_descSize, shown);
            m_firstPoint = false;
        } else {
            m_html += QStringLiteral("<p style='margin:4px 0; color:%1; font-size:%2px;'>%3</p>")
                          .arg(m_descColor, m_descSize, shown);
        }
    }

    QString m_code;
    QString m_nameColor;
    QString m_nameSize;
    QString m_descColor;
    QString m_descSize;
    QString m_smallSize;
    QString m_html;
    bool m_afterItem = false;
    bool m_firstPoint = true;
};

} // namespace

namespace DynamicAnalysisText {

Look Look::stored()
{
    const ConfigManager *const config = ConfigManager::instance();
    Look look;
    look.nameColor = config->getThemeNameColor();
    look.nameFontSize = qMax(1, config->getThemeNameFontSize());
    look.descColor = config->getThemeDescColor();
    look.descFontSize = qMax(1, config->getThemeDescFontSize());
    look.manualEdit = config->getDynamicManualEdit();
    look.stock = StockRenderSettings::stored(0);
    return look;
}

QString editTarget()
{
    return QStringLiteral("manual:edit");
}

bool isEmpty(const DynamicAnalysisRecord &record)
{
    return record.title.trimmed().isEmpty() && record.content.trimmed().isEmpty();
}

QString html(const DynamicAnalysisRecord &record, const Look &look)
{
    QString body = heading(record, look);
    if (isEmpty(record))
        return body + titleLine(QStringLiteral("暂无异动信息"), look);

    body += titleLine(shownTitle(record.title), look);
    if (!record.publishTime.trimmed().isEmpty()) {
        body += QStringLiteral("<p style='color:%1; font-size:%2px;'>发布时间：%3</p>"
                               "<hr style='border:1px solid #34495e;'/>")
                    .arg(quoted(look.descColor), QString::number(look.descFontSize),
                         shownTime(record.publishTime).toHtmlEscaped());
    }
    body += Sections(record.stockCode, look).of(withLineBreaks(record.content));
    return QStringLiteral("<div style='line-height:1.5;'>%1</div>").arg(body);
}

QString shownTitle(const QString &title)
{
    int place = title.indexOf(fullColon);
    if (place < 0)
        place = title.indexOf(colon);
    if (place < 0)
        return title;
    const QString rest = title.mid(place + 1).trimmed();
    return rest.isEmpty() ? title : rest;
}

QString shownTime(const QString &publishTime)
{
    const QDateTime time = QDateTime::fromString(publishTime, Qt::RFC2822Date);
    return time.isValid() ? time.toString(QStringLiteral("yyyy-MM-dd HH:mm")) : publishTime;
}

QString withLineBreaks(const QString &content)
{
    QString text = content;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), lineFeed);
    for (const Replacement &replacement : headReplacements())
        text.replace(replacement.find, replacement.by);
    return withPointsOnLines(text);
}

QString titleOfPasted(const QString &text)
{
    int place = text.indexOf(QStringLiteral("个股异动解析："));
    if (place < 0)
        place = text.indexOf(QStringLiteral("个股异动解析:"));
    if (place >= 0) {
        const QString rest = text.mid(place + QStringLiteral("个股异动解析：").size()).trimmed();
        int end = 0;
        while (end < rest.size() && rest.at(end) != lineFeed && rest.at(end) != QLatin1Char('\r')) {
            const int behindDigits = endOfDigits(rest, end);
            if (behindDigits == end) {
                ++end;
                continue;
            }
            const bool ownNumber = end == 0 || !isWordCharacter(rest.at(end - 1));
            if (ownNumber && behindDigits < rest.size() && rest.at(behindDigits) == enumerationComma)
                break;
            end = behindDigits;
        }
        const QString title = rest.left(end).trimmed();
        if (!title.isEmpty())
            return title;
    }
    int start = 0;
    while (start < text.size()) {
        int end = start;
        while (end < text.size() && text.at(end) != lineFeed && text.at(end) != QLatin1Char('\r'))
            ++end;
        const QString line = text.mid(start, end - start).trimmed();
        if (!line.isEmpty())
            return line;
        start = end + 1;
    }
    return {};
}

QString savingProblem(const QString &title, const QString &content)
{
    if (title.trimmed().isEmpty())
        return QStringLiteral("标题不能为空");
    return content.trimmed().isEmpty() ? QStringLiteral("内容不能为空") : QString();
}

QString tradeDate(const QString &publishTime, const QDate &today)
{
    QDateTime time = QDateTime::fromString(publishTime, Qt::RFC2822Date);
    if (!time.isValid())
        time = QDateTime::fromString(publishTime, QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    return (time.isValid() ? time.date() : today).toString(isoDay);
}

} // namespace DynamicAnalysisText
