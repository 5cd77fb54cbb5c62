#include "news/KeywordRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

KeywordData keyword(const QString &text)
{
    KeywordData data;
    data.keyword = text;
    return data;
}

} // namespace

class TestKeywordRules : public QObject
{
    Q_OBJECT

private slots:
    void aKeywordIsChineseLatinLettersAndDigits_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expectedFault");
        const QString empty = QStringLiteral("关键词不能为空");
        const QString tooLong = QStringLiteral("关键词长度不能超过15个字符");
        const QString foreign = QStringLiteral("仅允许中文、英文字母和数字，不能包含空格或特殊符号");
        QTest::newRow("empty") << QString() << empty;
        QTest::newRow("blanks") << QStringLiteral("  ") << empty;
        QTest::newRow("one character") << QStringLiteral("银") << QString();
        QTest::newRow("fifteen Chinese characters") << QString(15, QChar(0x5149)) << QString();
        QTest::newRow("sixteen Chinese characters") << QString(16, QChar(0x5149)) << tooLong;
        QTest::newRow("sixteen foreign characters: the length counts first")
            << QString(16, QLatin1Char('-')) << tooLong;
        QTest::newRow("mixed") << QStringLiteral("AI算力2026") << QString();
        QTest::newRow("blanks around") << QStringLiteral(" 光伏 ") << QString();
        QTest::newRow("blank inside") << QStringLiteral("光 伏") << foreign;
        QTest::newRow("full-width digit") << QStringLiteral("光伏２") << foreign;
        QTest::newRow("full-width letter") << QStringLiteral("Ａ股") << foreign;
        QTest::newRow("first character of the range") << QString(QChar(0x4E00)) << QString();
        QTest::newRow("last character of the range") << QString(QChar(0x9FA5)) << QString();
        QTest::newRow("just below the range") << QString(QChar(0x4DFF)) << foreign;
        QTest::newRow("just above the range") << QString(QChar(0x9FA6)) << foreign;
        QTest::newRow("punctuation") << QStringLiteral("涨停!") << foreign;
        QTest::newRow("line feed inside") << QStringLiteral("涨\n停") << foreign;
    }

    void aKeywordIsChineseLatinLettersAndDigits()
    {
        QFETCH(QString, text);
        QTEST(KeywordRules::fault(text), "expectedFault");
    }

    void theFilterLooksInsideTheTextWithoutRegardToCase()
    {
        const QList<KeywordData> all{keyword(QStringLiteral("AI算力")), keyword(QStringLiteral("光伏")),
                                     keyword(QStringLiteral("ai芯片"))};
        const auto texts = [&all](const QString &filter) {
            QStringList result;
            for (const KeywordData &item : KeywordRules::filtered(all, filter))
                result.append(item.keyword);
            return result;
        };
        QCOMPARE(texts(QString()).size(), 3);
        QCOMPARE(texts(QStringLiteral("  ")).size(), 3);
        QCOMPARE(texts(QStringLiteral(" aI ")),
                 QStringList({QStringLiteral("AI算力"), QStringLiteral("ai芯片")}));
        QCOMPARE(texts(QStringLiteral("银行")), QStringList());
    }

    void aFileGivesItsLinesTrimmedWithoutEmptyOnes_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QStringList>("expectedTexts");
        QTest::addColumn<bool>("expectedFault");
        const QStringList two{QStringLiteral("光伏"), QStringLiteral("AI")};
        QTest::newRow("empty") << QByteArray() << QStringList() << false;
        QTest::newRow("only empty lines") << QByteArray("\n  \r\n\n") << QStringList() << false;
        QTest::newRow("line feeds") << QByteArray("光伏\nAI\n") << two << false;
        QTest::newRow("carriage returns and no end of line") << QByteArray("光伏\r\n AI ") << two << false;
        QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF光伏\nAI\n") << two << false;
        QTest::newRow("GB18030") << QByteArray("\xB9\xE2\xB7\xFC\n") << QStringList() << true;
        QTest::newRow("UTF-16") << QByteArray("\xFF\xFE\x49\x51\x0F\x4F", 6) << QStringList() << true;
        QTest::newRow("zero bytes") << QByteArray("AI\0\0\0", 5) << QStringList() << true;
        QTest::newRow("a character cut in half at the end")
            << QByteArray("\xE5\x85") << QStringList() << true;
        QTest::newRow("as large as allowed")
            << QByteArray(int(KeywordRules::maximumFileBytes), 'a')
            << QStringList(QString(int(KeywordRules::maximumFileBytes), QLatin1Char('a'))) << false;
        QTest::newRow("a byte too large")
            << QByteArray(int(KeywordRules::maximumFileBytes) + 1, 'a') << QStringList() << true;
    }

    void aFileGivesItsLinesTrimmedWithoutEmptyOnes()
    {
        QFETCH(QByteArray, bytes);
        const KeywordRules::FileContents contents = KeywordRules::readFile(bytes);
        QTEST(contents.texts, "expectedTexts");
        QTEST(!contents.fault.isEmpty(), "expectedFault");
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestKeywordRules)
#include "tst_keywordrules.moc"
