#include "news/NewsPresentation.h"

namespace NewsPresentation {

namespace {

constexpr int longestTitle = 50;

struct DetailsColours
{
    QString title;
    QString body;
    QString metaBackground;
    QString contentBackground;
    QString link;
    QString border;
    QString label;
    QString keywords;
};

DetailsColours detailsColours(NewsSkin skin, bool hasKeywords)
{
    if (skin == NewsSkin::Dark) {
        return {hasKeywords ? QStringLiteral("#4CAF50") : QStringLiteral("#64B5F6"),
                QStringLiteral("#E0E0E0"),
                QStringLiteral("#424242"),
                QStringLiteral("#2E2E2E"),
                QStringLiteral("#81C784"),
                QStringLiteral("#555555"),
                QStringLiteral("#E0E0E0"),
                QStringLiteral("#FFB74D")};
    }
    return {hasKeywords ? QStringLiteral("#2E8B57") : QStringLiteral("#1E90FF"),
            hasKeywords ? QStringLiteral("#CD5C5C") : QStringLiteral("#333333"),
            QStringLiteral("#f8f9fa"),
            hasKeywords ? QStringLiteral("#FFF8F8") : QStringLiteral("#FFFFFF"),
            QStringLiteral("#007bff"),
            QStringLiteral("#ddd"),
            QStringLiteral("#2C3E50"),
            QStringLiteral("#FF6347")};
}

bool namesKeywords(const NewsData &item)
{
    return item.hasKeywords && !item.matchedKeywords.isEmpty();
}

QString keywordSpan(NewsTableKind kind, const NewsData &item, const DetailsColours &colours)
{
    if (!namesKeywords(item))
        return {};
    const QString span =
        kind == NewsTableKind::Selected
            ? QStringLiteral("<span style='color: %1; font-weight: bold;'>自选关键词 %2</span>")
            : QStringLiteral("<span style='color: %1; font-weight: bold;'>关键词 %2</span>");
    return span.arg(colours.keywords, item.matchedKeywords.join(QLatin1Char(' ')));
}

QString linkLine(const NewsData &item, const DetailsColours &colours)
{
    if (!item.url.contains(QLatin1String("http")))
        return {};
    // All three in one call, so that the escapes of an address are not taken for places.
    return QStringLiteral("<p style='margin: 0; color: %2; font-size: 13px;'><strong style='color: %2;'>"
                          "原文链接:</strong> <a href='%1' style='color: %3; text-decoration: none;'>"
                          "点击查看原文</a></p>")
        .arg(item.url, colours.label, colours.link);
}

Cell timeCell(NewsTableKind kind, const NewsData &item)
{
    Cell cell;
    cell.text = kind == NewsTableKind::Main ? item.publishTime.toString(QStringLiteral("hh:mm:ss"))
                                            : formatShortTime(item.publishTime);
    cell.sortKey = item.publishTime;
    cell.sortsByKey = kind == NewsTableKind::Main;
    cell.carriesItem = true;
    cell.centred = kind == NewsTableKind::Search || kind == NewsTableKind::Selected;
    return cell;
}

Cell titleCell(NewsTableKind kind, const NewsData &item, NewsSkin skin)
{
    Cell cell;
    if (kind == NewsTableKind::Main || kind == NewsTableKind::Interactive) {
        cell.text = cutText(item.title, longestTitle);
        cell.toolTip = item.title;
        cell.sortKey = item.hasKeywords ? item.publishTime.toSecsSinceEpoch() : qint64(0);
        cell.sortsByKey = true;
    } else {
        const QString title = item.title.trimmed();
        cell.text = title.isEmpty() ? QStringLiteral("(无标题)") : cutText(title, longestTitle);
        // The untrimmed title decides here: blanks alone stay a tooltip of blanks. This is meant.
        cell.toolTip = item.title.isEmpty() ? QStringLiteral("无标题") : item.title;
    }
    cell.highlight = titleHighlight(kind, item, skin);
    return cell;
}

Cell keywordCell(NewsTableKind kind, const NewsData &item)
{
    Cell cell;
    cell.centred = true;
    if (kind == NewsTableKind::Search)
        cell.text = item.hasKeywords ? QStringLiteral("是") : QStringLiteral("否");
    else
        cell.text =
            namesKeywords(item) ? item.matchedKeywords.join(QLatin1String(", ")) : QStringLiteral("无");
    return cell;
}

} // namespace

QVector<Cell> rowCells(NewsTableKind kind, const NewsData &item, NewsSkin skin)
{
    QVector<Cell> cells{timeCell(kind, item), titleCell(kind, item, skin)};
    if (kind == NewsTableKind::Selected || kind == NewsTableKind::Search)
        cells.append(keywordCell(kind, item));
    return cells;
}

std::optional<Highlight> titleHighlight(NewsTableKind kind, const NewsData &item, NewsSkin skin)
{
    if (!item.hasKeywords || kind == NewsTableKind::Selected)
        return std::nullopt;
    if (skin == NewsSkin::Dark)
        return Highlight{QColor(0xce, 0x5c, 0x00), QColor(0xff, 0xff, 0xff)};
    return Highlight{QColor(255, 255, 200), QColor(222, 4, 34)};
}

int rowHeight(NewsTableKind kind)
{
    return kind == NewsTableKind::Main ? 0 : 30;
}

QString formatShortTime(const QDateTime &time)
{
    return QStringLiteral("%1\n%2").arg(time.toString(QStringLiteral("MM-dd")),
                                        time.toString(QStringLiteral("hh:mm")));
}

QString cutText(const QString &text, int limit)
{
    if (text.size() <= limit)
        return text;
    const bool splitsPair = limit > 0 && text.at(limit - 1).isHighSurrogate();
    return text.left(splitsPair ? limit - 1 : limit) + QLatin1String("...");
}

QString detailsHtml(NewsTableKind kind, const NewsData &item, NewsSkin skin)
{
    const DetailsColours colours = detailsColours(skin, item.hasKeywords);
    const QString page = QStringLiteral(
        "<div style='font-family: Microsoft YaHei, SimSun, sans-serif;'>"
        "<h1 style='color: %1; margin-bottom: 15px; border-bottom: 3px solid %1; padding-bottom: 10px; "
        "font-size: 16px; font-weight: bold; line-height: 1.2; word-wrap: break-word; "
        "overflow-wrap: break-word;'>%2</h1>"
        "<div style='background-color: %8; padding: 8px; border-radius: 5px; margin-bottom: 12px;'>"
        "<p style='margin: 3px 0; color: %9; font-size: 13px;'><strong style='color: %9;'>发布时间:</strong> "
        "%3 &nbsp;&nbsp;<strong style='color: %9;'>%4</strong></p></div>"
        "<div style='line-height: 1.5; color: %5; background-color: %6; padding: 12px; border-radius: 5px; "
        "margin-bottom: 12px; font-size: 15px; word-wrap: break-word; overflow-wrap: break-word;'>%7</div>"
        "<div style='border-top: 1px solid %10; padding-top: 8px;'>%11</div></div>");
    // One call for each place, in this order: a "%9" in a title shows the label colour. This is meant.
    return page.arg(colours.title)
        .arg(item.title)
        .arg(item.publishTime.toString(QStringLiteral("MM-dd hh:mm:ss")))
        .arg(keywordSpan(kind, item, colours))
        .arg(colours.body)
        .arg(colours.contentBackground)
        .arg(item.content)
        .arg(colours.metaBackground)
        .arg(colours.label)
        .arg(colours.border)
        .arg(linkLine(item, colours));
}

QString detailsStyleSheet(NewsSkin skin)
{
    const bool dark = skin == NewsSkin::Dark;
    return QStringLiteral("QTextBrowser {  font-family: 'Microsoft YaHei', 'SimSun', sans-serif;  "
                          "font-size: 12px;  background-color: %1;  color: %2;  border: 1px solid %3;}")
        .arg(dark ? QStringLiteral("#2b2b2b") : QStringLiteral("white"),
             dark ? QStringLiteral("white") : QStringLiteral("black"),
             dark ? QStringLiteral("#555555") : QStringLiteral("#ccc"));
}

} // namespace NewsPresentation
