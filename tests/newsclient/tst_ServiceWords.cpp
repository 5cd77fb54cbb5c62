#include "newsclient/ServiceWords.h"

#include "support/IsolatedHome.h"

#include <QTextDocument>
#include <QtTest>

class TestServiceWords : public QObject
{
    Q_OBJECT

private slots:
    void wordsAreShownAsTheyWereSent_data()
    {
        QTest::addColumn<QString>("words");
        QTest::newRow("plain") << QStringLiteral("该邮箱未注册");
        QTest::newRow("none") << QString();
        QTest::newRow("a tag") << QStringLiteral("<b>该邮箱</b>未注册");
        QTest::newRow("a reference") << QStringLiteral("<p>a &amp; b");
        QTest::newRow("a comparison") << QStringLiteral("长度 < 6 或 > 16");
        QTest::newRow("two lines") << QStringLiteral("第一行 <i>\n第二行");
    }

    void wordsAreShownAsTheyWereSent()
    {
        QFETCH(QString, words);
        const QString text = ServiceWords::asSent(words);
        QTextDocument document;
        if (Qt::mightBeRichText(text))
            document.setHtml(text);
        else
            document.setPlainText(text);
        QCOMPARE(document.toPlainText(), words);
    }

    void plainWordsStayAsTheyAre()
    {
        QCOMPARE(ServiceWords::asSent(QStringLiteral("a & b")), QStringLiteral("a & b"));
    }
};

LARKSPIRE_TEST_MAIN(TestServiceWords)

#include "tst_ServiceWords.moc"
