#include "stockviews/StockPortals.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QSet>

class tst_StockPortals : public QObject
{
    Q_OBJECT

private slots:
    void everyPortalHasAPageForEveryClassOfCode_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("page"); // behind the host
        const auto row = [](const char *name, const char *code, const char *page) {
            QTest::addRow("%s, %s", name, *code != '\0' ? code : "no code")
                << QString::fromUtf8(name) << QString::fromLatin1(code) << QString::fromLatin1(page);
        };
        row("财联社", "600519", "/stock?code=sh600519");
        row("财联社", "000001", "/stock?code=sz000001");
        row("财联社", "300750", "/stock?code=sz300750");
        row("财联社", "399001", "/stock?code=sz399001"); // an index, and classed as its digits say
        row("财联社", "920001", "/stock?code=920001.BJ");
        row("财联社", "510300", "/");
        row("财联社", "", "/");
        row("龙虎榜", "600519", "/market/lhbgg/code/600519/");
        row("龙虎榜", "000001", "/market/lhbgg/code/000001/");
        row("龙虎榜", "920001", "/market/lhbgg/code/920001/");
        row("龙虎榜", "110059", "/market/longhu/");
        row("龙虎榜", "", "/market/longhu/");
        row("东财股吧", "600519", "/list,sh600519.html");
        row("东财股吧", "000001", "/list,sz000001.html");
        row("东财股吧", "920001", "/list,920001.html");
        row("东财股吧", "", "/");
        row("淘股吧", "600519", "/quotes/sh600519");
        row("淘股吧", "300750", "/quotes/sz300750");
        row("淘股吧", "920001", "/quotes/bj920001");
        row("淘股吧", "", "/newsFlash/");
        row("韭菜公社", "600519", "/search/new?k=600519&type=stock");
        row("韭菜公社", "920001", "/search/new?k=920001&type=stock");
        row("韭菜公社", "510300", "/");
        row("爱股票", "000001", "/search/lists/type/WZ/content/000001");
        row("爱股票", "880001", "/");
        row("新浪财经", "600519", "/corp/go.php/vCB_AllNewsStock/symbol/sh600519.phtml");
        row("新浪财经", "000001", "/corp/go.php/vCB_AllNewsStock/symbol/sz000001.phtml");
        row("新浪财经", "920001", "/corp/go.php/vCB_AllNewsStock/symbol/bj920001.phtml");
        row("新浪财经", "", "/");
        row("雪球", "688981", "/S/SH688981");
        row("雪球", "002594", "/S/SZ002594");
        row("雪球", "920001", "/S/BJ920001");
        row("雪球", "", "/");
    }

    void everyPortalHasAPageForEveryClassOfCode()
    {
        QFETCH(QString, name);
        QFETCH(QString, code);
        const QUrl url = StockPortals::pageOf(name, code);
        QVERIFY2(url.isValid() && url.scheme() == QLatin1String("https") && !url.host().isEmpty(),
                 qPrintable(url.errorString()));
        QTEST(url.toString(QUrl::RemoveScheme | QUrl::RemoveAuthority), "page");
    }

    void theHomePageMayLieOnAnotherHost()
    {
        for (const StockPortals::Portal &portal : StockPortals::all()) {
            const bool elsewhere = StockPortals::pageOf(portal.name, QStringLiteral("600519")).host() !=
                                   StockPortals::pageOf(portal.name, QString()).host();
            const bool meant = portal.name == QStringLiteral("淘股吧") ||
                               portal.name == QStringLiteral("东财股吧") ||
                               portal.name == QStringLiteral("新浪财经");
            QVERIFY2(elsewhere == meant, qPrintable(portal.name));
        }
    }

    void onePortalGoesByAnotherNameThanItsButton()
    {
        QSet<QString> names;
        for (const StockPortals::Portal &portal : StockPortals::all()) {
            names.insert(portal.name);
            if (portal.buttonName == QLatin1String("jiucaiButton")) {
                QCOMPARE(portal.buttonText, QStringLiteral("韭研公社"));
                QCOMPARE(portal.name, QStringLiteral("韭菜公社"));
            } else {
                QCOMPARE(portal.buttonText, portal.name);
            }
        }
        QCOMPARE(names.size(), 8);
        QVERIFY(!StockPortals::pageOf(QStringLiteral("韭研公社"), QStringLiteral("600519")).isValid());
    }

    void theToolTipNamesPortalAndCode()
    {
        QCOMPARE(StockPortals::toolTip(StockPortals::all()[4], QStringLiteral("600519")),
                 QStringLiteral("点击打开 韭研公社 查看股票 600519 的详细信息"));
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_StockPortals)
#include "tst_stockportals.moc"
