#include "news/NewsPresentation.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

using namespace NewsPresentation;

Q_DECLARE_METATYPE(NewsTableKind)
Q_DECLARE_METATYPE(NewsSkin)

namespace {

const QDateTime published(QDate(2025, 7, 5), QTime(9, 3, 7), Qt::LocalTime);
const NewsTableKind allKinds[] = {NewsTableKind::Main, NewsTableKind::Interactive, NewsTableKind::Selected,
                                  NewsTableKind::Search};

NewsData plainNews()
{
    NewsData item;
    item.id = QStringLiteral("7");
    item.title = QStringLiteral("标题");
    item.content = QStringLiteral("正文");
    item.publishTime = published;
    return item;
}

NewsData keywordNews()
{
    NewsData item = plainNews();
    item.hasKeywords = true;
    item.matchedKeywords = QStringList{QStringLiteral("锂电"), QStringLiteral("光伏")};
    return item;
}

struct Colours
{
    QString title, body, metaBackground, contentBackground, border, label;
};

// The page, put together without QString::arg.
QString page(const Colours &colours, const QString &title, const QString &time, const QString &keywords,
             const QString &content, const QString &link)
{
    return QStringLiteral(
               "<div style='font-family: Microsoft YaHei, SimSun, sans-serif;'><h1 style='color: ") +
           colours.title + QStringLiteral("; margin-bottom: 15px; border-bottom: 3px solid ") +
           colours.title +
           QStringLiteral("; padding-bottom: 10px; font-size: 16px; font-weight: bold; line-height: 1.2; "
                          "word-wrap: break-word; overflow-wrap: break-word;'>") +
           title + QStringLiteral("</h1><div style='background-color: ") + colours.metaBackground +
           QStringLiteral(
               "; padding: 8px; border-radius: 5px; margin-bottom: 12px;'><p style='margin: 3px 0; "
               "color: ") +
           colours.label + QStringLiteral("; font-size: 13px;'><strong style='color: ") + colours.label +
           QStringLiteral(";'>发布时间:</strong> ") + time +
           QStringLiteral(" &nbsp;&nbsp;<strong style='color: ") + colours.label + QStringLiteral(";'>") +
           keywords + QStringLiteral("</strong></p></div><div style='line-height: 1.5; color: ") +
           colours.body + QStringLiteral("; background-color: ") + colours.contentBackground +
           QStringLiteral("; padding: 12px; border-radius: 5px; margin-bottom: 12px; font-size: 15px; "
                          "word-wrap: break-word; overflow-wrap: break-word;'>") +
           content + QStringLiteral("</div><div style='border-top: 1px solid ") + colours.border +
           QStringLiteral("; padding-top: 8px;'>") + link + QStringLiteral("</div></div>");
}

Colours coloursOf(NewsSkin skin, bool hasKeywords)
{
    const auto text = [](const char *colour) { return QString::fromLatin1(colour); };
    if (skin == NewsSkin::Dark) {
        return {text(hasKeywords ? "#4CAF50" : "#64B5F6"),
                text("#E0E0E0"),
                text("#424242"),
                text("#2E2E2E"),
                text("#555555"),
                text("#E0E0E0")};
    }
    return {text(hasKeywords ? "#2E8B57" : "#1E90FF"),
            text(hasKeywords ? "#CD5C5C" : "#333333"),
            text("#f8f9fa"),
            text(hasKeywords ? "#FFF8F8" : "#FFFFFF"),
            text("#ddd"),
            text("#2C3E50")};
}

const QString publishedText = QStringLiteral("07-05 09:03:07");

} // namespace

class TestNewsPresentation : public QObject
{
    Q_OBJECT

private slots:
    void longTextsAreCut_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("limit");
        QTest::addColumn<QString>("expected");
        const QString fifty = QString(50, QChar(u'讯'));
        QTest::newRow("empty") << QString() << 50 << QString();
        QTest::newRow("49 characters") << fifty.left(49) << 50 << fifty.left(49);
        QTest::newRow("50 characters") << fifty << 50 << fifty;
        QTest::newRow("51 characters") << fifty + QLatin1Char('x') << 50 << fifty + QLatin1String("...");
        const QString rocket = QString::fromUtf8("🚀");
        QTest::newRow("a character of two units at the limit")
            << QStringLiteral("ab") + rocket + QStringLiteral("c") << 3 << QStringLiteral("ab...");
        QTest::newRow("a character of two units before the limit")
            << QStringLiteral("ab") + rocket + QStringLiteral("cd") << 4
            << QStringLiteral("ab") + rocket + QStringLiteral("...");
    }

    void longTextsAreCut()
    {
        QFETCH(QString, text);
        QFETCH(int, limit);
        QTEST(cutText(text, limit), "expected");
    }

    void aShortTimeStandsInTwoLines()
    {
        QCOMPARE(formatShortTime(published), QStringLiteral("07-05\n09:03"));
        QCOMPARE(formatShortTime(QDateTime()), QStringLiteral("\n"));
    }

    void rowsHaveTheirHeight()
    {
        QCOMPARE(rowHeight(NewsTableKind::Main), 0);
        QCOMPARE(rowHeight(NewsTableKind::Interactive), 30);
        QCOMPARE(rowHeight(NewsTableKind::Selected), 30);
        QCOMPARE(rowHeight(NewsTableKind::Search), 30);
    }

    void theTimeCellCarriesTheItem_data()
    {
        QTest::addColumn<NewsTableKind>("kind");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("sortsByKey");
        QTest::addColumn<bool>("centred");
        const QString shortTime = QStringLiteral("07-05\n09:03");
        QTest::newRow("main") << NewsTableKind::Main << QStringLiteral("09:03:07") << true << false;
        QTest::newRow("interactive") << NewsTableKind::Interactive << shortTime << false << false;
        QTest::newRow("selected") << NewsTableKind::Selected << shortTime << false << true;
        QTest::newRow("search") << NewsTableKind::Search << shortTime << false << true;
    }

    void theTimeCellCarriesTheItem()
    {
        QFETCH(NewsTableKind, kind);
        const Cell cell = rowCells(kind, keywordNews(), NewsSkin::Light).at(0);
        QTEST(cell.text, "text");
        QTEST(cell.sortsByKey, "sortsByKey");
        QTEST(cell.centred, "centred");
        QCOMPARE(cell.sortKey, QVariant(published));
        QVERIFY(cell.carriesItem);
        QVERIFY(cell.toolTip.isEmpty());
        QVERIFY(!cell.highlight);
    }

    void theTitleCellShowsTheTitle_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("mainText");
        QTest::addColumn<QString>("mainToolTip");
        QTest::addColumn<QString>("searchText");
        QTest::addColumn<QString>("searchToolTip");
        const auto row = [](const char *name, const QString &title, const QString &mainText,
                            const QString &searchText, const QString &searchToolTip) {
            QTest::newRow(name) << title << mainText << title << searchText << searchToolTip;
        };
        const QString fifty = QString(50, QChar(u'讯'));
        const QString cut = fifty + QLatin1String("...");
        const QString none = QStringLiteral("(无标题)");
        const QString blanks = QStringLiteral("  \t ");
        row("50 characters", fifty, fifty, fifty, fifty);
        row("51 characters", fifty + QLatin1Char('x'), cut, cut, fifty + QLatin1Char('x'));
        row("empty", QString(), QString(), none, QStringLiteral("无标题"));
        row("only blanks", blanks, blanks, none, blanks);
        // The blanks count for the main table only.
        const QString wide = QLatin1Char(' ') + fifty;
        row("50 characters behind a blank", wide, wide.left(50) + QLatin1String("..."), fifty, wide);
    }

    void theTitleCellShowsTheTitle()
    {
        QFETCH(QString, title);
        QFETCH(QString, mainText);
        QFETCH(QString, mainToolTip);
        QFETCH(QString, searchText);
        QFETCH(QString, searchToolTip);
        NewsData item = plainNews();
        item.title = title;
        for (const NewsTableKind kind : allKinds) {
            const bool trims = kind == NewsTableKind::Selected || kind == NewsTableKind::Search;
            const Cell cell = rowCells(kind, item, NewsSkin::Light).at(1);
            QCOMPARE(cell.text, trims ? searchText : mainText);
            QCOMPARE(cell.toolTip, trims ? searchToolTip : mainToolTip);
            QVERIFY(!cell.carriesItem);
            QVERIFY(!cell.centred);
        }
    }

    void theTitleSortsByTheTimeOfKeywordItems()
    {
        for (const NewsTableKind kind : {NewsTableKind::Main, NewsTableKind::Interactive}) {
            const Cell plain = rowCells(kind, plainNews(), NewsSkin::Light).at(1);
            QVERIFY(plain.sortsByKey);
            QCOMPARE(plain.sortKey, QVariant(qint64(0)));
            const Cell keyword = rowCells(kind, keywordNews(), NewsSkin::Light).at(1);
            QCOMPARE(keyword.sortKey, QVariant(published.toSecsSinceEpoch()));
        }
        for (const NewsTableKind kind : {NewsTableKind::Selected, NewsTableKind::Search}) {
            const Cell keyword = rowCells(kind, keywordNews(), NewsSkin::Light).at(1);
            QVERIFY(!keyword.sortsByKey);
            QVERIFY(!keyword.sortKey.isValid());
        }
    }

    void keywordItemsStandOutExceptInTheSelectedTable()
    {
        const Highlight dark{QColor(QStringLiteral("#CE5C00")), QColor(QStringLiteral("#FFFFFF"))};
        const Highlight light{QColor(255, 255, 200), QColor(222, 4, 34)};
        for (const NewsTableKind kind : allKinds) {
            for (const NewsSkin skin : {NewsSkin::Light, NewsSkin::Dark}) {
                QVERIFY(!rowCells(kind, plainNews(), skin).at(1).highlight);
                const std::optional<Highlight> highlight =
                    rowCells(kind, keywordNews(), skin).at(1).highlight;
                if (kind == NewsTableKind::Selected)
                    QVERIFY(!highlight);
                else
                    QCOMPARE(highlight.value(), skin == NewsSkin::Dark ? dark : light);
            }
        }
        NewsData unnamed = keywordNews();
        unnamed.matchedKeywords.clear();
        QVERIFY(rowCells(NewsTableKind::Main, unnamed, NewsSkin::Dark).at(1).highlight);
    }

    void theThirdColumnTellsOfKeywords_data()
    {
        QTest::addColumn<bool>("hasKeywords");
        QTest::addColumn<QStringList>("keywords");
        QTest::addColumn<QString>("selectedText");
        QTest::addColumn<QString>("searchText");
        const QStringList two{QStringLiteral("锂电"), QStringLiteral("光伏")};
        const QString none = QStringLiteral("无");
        const QString yes = QStringLiteral("是");
        const QString no = QStringLiteral("否");
        QTest::newRow("two keywords") << true << two << QStringLiteral("锂电, 光伏") << yes;
        QTest::newRow("one keyword") << true << QStringList(two.mid(1)) << QStringLiteral("光伏") << yes;
        QTest::newRow("the mark without keywords") << true << QStringList() << none << yes;
        QTest::newRow("keywords without the mark") << false << two << none << no;
        QTest::newRow("neither") << false << QStringList() << none << no;
    }

    void theThirdColumnTellsOfKeywords()
    {
        QFETCH(bool, hasKeywords);
        QFETCH(QStringList, keywords);
        NewsData item = plainNews();
        item.hasKeywords = hasKeywords;
        item.matchedKeywords = keywords;
        const Cell selected = rowCells(NewsTableKind::Selected, item, NewsSkin::Light).at(2);
        const Cell search = rowCells(NewsTableKind::Search, item, NewsSkin::Light).at(2);
        QTEST(selected.text, "selectedText");
        QTEST(search.text, "searchText");
        for (const Cell &cell : {selected, search}) {
            QVERIFY(cell.centred);
            QVERIFY(!cell.sortsByKey);
            QVERIFY(!cell.sortKey.isValid());
            QVERIFY(cell.toolTip.isEmpty());
        }
        QCOMPARE(rowCells(NewsTableKind::Main, item, NewsSkin::Light).size(), 2);
        QCOMPARE(rowCells(NewsTableKind::Interactive, item, NewsSkin::Light).size(), 2);
    }

    void thePageHasTheColoursOfSkinAndKeywords_data()
    {
        QTest::addColumn<NewsSkin>("skin");
        QTest::addColumn<bool>("hasKeywords");
        QTest::newRow("dark with keywords") << NewsSkin::Dark << true;
        QTest::newRow("dark without") << NewsSkin::Dark << false;
        QTest::newRow("light with keywords") << NewsSkin::Light << true;
        QTest::newRow("light without") << NewsSkin::Light << false;
    }

    void thePageHasTheColoursOfSkinAndKeywords()
    {
        QFETCH(NewsSkin, skin);
        QFETCH(bool, hasKeywords);
        const bool dark = skin == NewsSkin::Dark;
        for (const NewsTableKind kind : allKinds) {
            NewsData item = hasKeywords ? keywordNews() : plainNews();
            item.url = QStringLiteral("https://news.example/a%20b%2Fc?x=1");
            const QString word =
                kind == NewsTableKind::Selected ? QStringLiteral("自选关键词") : QStringLiteral("关键词");
            const QString span = hasKeywords
                                     ? QStringLiteral("<span style='color: ") +
                                           (dark ? QStringLiteral("#FFB74D") : QStringLiteral("#FF6347")) +
                                           QStringLiteral("; font-weight: bold;'>") + word +
                                           QStringLiteral(" 锂电 光伏</span>")
                                     : QString();
            const Colours colours = coloursOf(skin, hasKeywords);
            const QString link = QStringLiteral("<p style='margin: 0; color: ") + colours.label +
                                 QStringLiteral("; font-size: 13px;'><strong style='color: ") +
                                 colours.label + QStringLiteral(";'>原文链接:</strong> <a href='") +
                                 item.url + QStringLiteral("' style='color: ") +
                                 (dark ? QStringLiteral("#81C784") : QStringLiteral("#007bff")) +
                                 QStringLiteral("; text-decoration: none;'>点击查看原文</a></p>");
            QCOMPARE(detailsHtml(kind, item, skin),
                     page(colours, item.title, publishedText, span, item.content, link));
        }
    }

    void theMarkWithoutKeywordsColoursTheTitleAndNamesNothing()
    {
        NewsData item = keywordNews();
        item.matchedKeywords.clear();
        QCOMPARE(detailsHtml(NewsTableKind::Main, item, NewsSkin::Light),
                 page(coloursOf(NewsSkin::Light, true), item.title, publishedText, QString(), item.content,
                      QString()));
    }

    void keywordsWithoutTheMarkAreNotNamed()
    {
        NewsData item = keywordNews();
        item.hasKeywords = false;
        QCOMPARE(detailsHtml(NewsTableKind::Main, item, NewsSkin::Light),
                 page(coloursOf(NewsSkin::Light, false), item.title, publishedText, QString(), item.content,
                      QString()));
    }

    void aLinkLineNeedsHttpInTheAddress_data()
    {
        QTest::addColumn<QString>("url");
        QTest::addColumn<bool>("hasLink");
        QTest::newRow("none") << QString() << false;
        QTest::newRow("http") << QStringLiteral("http://news.example") << true;
        QTest::newRow("https") << QStringLiteral("https://news.example") << true;
        QTest::newRow("http in the middle") << QStringLiteral("ftp://news.example/http") << true;
        QTest::newRow("no http") << QStringLiteral("ftp://news.example") << false;
        QTest::newRow("in capitals") << QStringLiteral("HTTP://news.example") << false;
    }

    void aLinkLineNeedsHttpInTheAddress()
    {
        QFETCH(QString, url);
        QFETCH(bool, hasLink);
        NewsData item = plainNews();
        item.url = url;
        const QString html = detailsHtml(NewsTableKind::Main, item, NewsSkin::Dark);
        QCOMPARE(html.contains(QStringLiteral("原文链接")), hasLink);
        QCOMPARE(html.contains(QStringLiteral("<a href='%1'").arg(url)), hasLink);
    }

    void titleAndContentGoInAsTheyAre()
    {
        NewsData item = plainNews();
        item.title = QStringLiteral("<i>甲 & 乙</i>");
        item.content = QStringLiteral("<p>'丙' > \"丁\"</p> 50% 100%");
        QCOMPARE(detailsHtml(NewsTableKind::Main, item, NewsSkin::Dark),
                 page(coloursOf(NewsSkin::Dark, false), item.title, publishedText, QString(), item.content,
                      QString()));
    }

    // Meant: each place is filled by a call of its own, and a later call takes what an earlier text holds.
    void aPercentAndADigitInATextIsTakenForAPlace_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("content");
        QTest::addColumn<QString>("shownTitle");
        QTest::addColumn<QString>("shownContent");
        const auto row = [](const char *name, const char *title, const char *content, const char *shownTitle,
                            const char *shownContent) {
            QTest::newRow(name) << QString::fromUtf8(title) << QString::fromUtf8(content)
                                << QString::fromUtf8(shownTitle) << QString::fromUtf8(shownContent);
        };
        row("the label colour in a title", "涨 %9 停", "正文", "涨 #E0E0E0 停", "正文");
        row("the content in a title", "涨 %7 停", "正文", "涨 正文 停", "正文");
        row("the border in a content", "标题", "涨 %10 停", "标题", "涨 #555555 停");
        row("a place that nobody fills", "涨 %12 停", "跌 %99 停", "涨 %12 停", "跌 %99 停");
    }

    void aPercentAndADigitInATextIsTakenForAPlace()
    {
        QFETCH(QString, title);
        QFETCH(QString, content);
        QFETCH(QString, shownTitle);
        QFETCH(QString, shownContent);
        NewsData item = plainNews();
        item.title = title;
        item.content = content;
        QCOMPARE(detailsHtml(NewsTableKind::Main, item, NewsSkin::Dark),
                 page(coloursOf(NewsSkin::Dark, false), shownTitle, publishedText, QString(), shownContent,
                      QString()));
    }

    // Meant as well: the lowest place left is filled first, so one that is filled already shifts all others.
    void aPlaceThatIsFilledAlreadyShiftsTheOthers()
    {
        NewsData item = plainNews();
        item.title = QStringLiteral("%1");
        QVERIFY(detailsHtml(NewsTableKind::Main, item, NewsSkin::Dark)
                    .contains(QLatin1Char('>') + publishedText + QStringLiteral("</h1>")));
    }

    void aMissingTimeLeavesItsPlaceEmpty()
    {
        NewsData item = plainNews();
        item.publishTime = QDateTime();
        QCOMPARE(detailsHtml(NewsTableKind::Main, item, NewsSkin::Light),
                 page(coloursOf(NewsSkin::Light, false), item.title, QString(), QString(), item.content,
                      QString()));
        QCOMPARE(rowCells(NewsTableKind::Main, item, NewsSkin::Light).at(0).text, QString());
    }

    void theViewsStyleFollowsTheSkin()
    {
        QCOMPARE(detailsStyleSheet(NewsSkin::Dark),
                 QStringLiteral(
                     "QTextBrowser {  font-family: 'Microsoft YaHei', 'SimSun', sans-serif;  font-size: "
                     "12px;  background-color: #2b2b2b;  color: white;  border: 1px solid #555555;}"));
        QCOMPARE(detailsStyleSheet(NewsSkin::Light),
                 QStringLiteral(
                     "QTextBrowser {  font-family: 'Microsoft YaHei', 'SimSun', sans-serif;  font-size: "
                     "12px;  background-color: white;  color: black;  border: 1px solid #ccc;}"));
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestNewsPresentation)
#include "tst_newspresentation.moc"
