#include "app/TrayCommand.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QtTest>

Q_DECLARE_METATYPE(TrayCommand)

class TestTrayCommand : public QObject
{
    Q_OBJECT

private slots:
    void textDecidesTheCommand_data();
    void textDecidesTheCommand();
};

void TestTrayCommand::textDecidesTheCommand_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<TrayCommand>("command");

    QTest::newRow("show") << QStringLiteral("显示主窗口") << TrayCommand::ShowWindow;
    QTest::newRow("show, English") << QStringLiteral("Show") << TrayCommand::ShowWindow;
    QTest::newRow("hide") << QStringLiteral("隐藏窗口") << TrayCommand::HideWindow;
    QTest::newRow("hide, English") << QStringLiteral("Hide") << TrayCommand::HideWindow;
    QTest::newRow("keywords") << QStringLiteral("关键词管理") << TrayCommand::KeywordManager;
    QTest::newRow("keywords, English") << QStringLiteral("Keywords") << TrayCommand::KeywordManager;
    QTest::newRow("settings") << QStringLiteral("设置") << TrayCommand::Settings;
    QTest::newRow("settings, English") << QStringLiteral("Settings") << TrayCommand::Settings;
    QTest::newRow("about") << QStringLiteral("关于") << TrayCommand::About;
    QTest::newRow("about, English") << QStringLiteral("About") << TrayCommand::About;
    QTest::newRow("exit") << QStringLiteral("退出") << TrayCommand::Exit;
    QTest::newRow("exit, English") << QStringLiteral("Exit") << TrayCommand::Exit;
    QTest::newRow("on top") << QStringLiteral("置顶") << TrayCommand::ToggleTopMost;
    QTest::newRow("no longer on top") << QStringLiteral("取消置顶") << TrayCommand::ToggleTopMost;
    QTest::newRow("on top, English") << QStringLiteral("Always on Top") << TrayCommand::ToggleTopMost;
    QTest::newRow("no longer on top, English")
        << QStringLiteral("Remove Always on Top") << TrayCommand::ToggleTopMost;
    QTest::newRow("another case") << QStringLiteral("EXIT") << TrayCommand::None;
    QTest::newRow("an unknown text") << QStringLiteral("刷新") << TrayCommand::None;
    QTest::newRow("no text") << QString() << TrayCommand::None;
}

void TestTrayCommand::textDecidesTheCommand()
{
    QFETCH(QString, text);
    QTEST(trayCommandForText(text), "command");
}

LARKSPIRE_GUILESS_TEST_MAIN(TestTrayCommand)
#include "tst_traycommand.moc"
