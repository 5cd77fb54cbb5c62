#include "service/KeywordMatcher.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

using namespace service;

/// Which keywords an item holds.
class KeywordMatcherTest : public QObject
{
    Q_OBJECT

private slots:
    void keywordsAreFound_data();
    void keywordsAreFound();
};

void KeywordMatcherTest::keywordsAreFound_data()
{
    using Texts = QStringList;
    QTest::addColumn<QStringList>("keywords");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("content");
    QTest::addColumn<QStringList>("found");
    const QString robot = QStringLiteral("机器人");
    const QString chip = QStringLiteral("半导体");
    QTest::newRow("in the title") << Texts{robot} << QStringLiteral("人形机器人量产") << QString()
                                  << Texts{robot};
    QTest::newRow("in the content") << Texts{robot} << QString() << QStringLiteral("机器人") << Texts{robot};
    QTest::newRow("in the order of the keywords")
        << Texts{chip, robot} << QStringLiteral("机器人与半导体") << QString() << Texts{chip, robot};
    QTest::newRow("found twice, named once")
        << Texts{robot} << QStringLiteral("机器人") << QStringLiteral("机器人") << Texts{robot};
    QTest::newRow("not across title and content")
        << Texts{robot} << QStringLiteral("机器") << QStringLiteral("人") << Texts();
    QTest::newRow("ASCII letters of either case")
        << Texts{QStringLiteral("Ai")} << "OpenAI" << QString() << Texts{QStringLiteral("Ai")};
    QTest::newRow("none") << Texts{robot} << QStringLiteral("银行") << QString() << Texts();
    QTest::newRow("empty keyword") << Texts{QString()} << QStringLiteral("银行") << QString() << Texts();
    QTest::newRow("no keyword") << Texts() << QStringLiteral("银行") << QString() << Texts();
}

void KeywordMatcherTest::keywordsAreFound()
{
    QFETCH(QStringList, keywords);
    QFETCH(QString, title);
    QFETCH(QString, content);
    QFETCH(QStringList, found);
    std::vector<std::string> texts;
    for (const QString &keyword : keywords)
        texts.push_back(keyword.toStdString());
    QStringList matched;
    for (const std::string &keyword :
         KeywordMatcher(texts).matches(title.toStdString(), content.toStdString()))
        matched << QString::fromStdString(keyword);
    QCOMPARE(matched, found);
}

LARKSPIRE_GUILESS_TEST_MAIN(KeywordMatcherTest)
#include "tst_KeywordMatcher.moc"
