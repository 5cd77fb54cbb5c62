#include "desktop/DesktopEntryExec.h"

#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

QString t(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

class TestDesktopEntryExec : public QObject
{
    Q_OBJECT

private slots:
    void aPathIsQuotedAndComesBack_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("value");
        const auto add = [](const char *name, const char *path, const char *value) {
            QTest::newRow(name) << t(path) << t(value);
        };
        add("plain", "/usr/bin/larkspire", "\"/usr/bin/larkspire\"");
        add("blanks", "/opt/my programs/larkspire", "\"/opt/my programs/larkspire\"");
        add("Chinese", "/home/云雀/资讯", "\"/home/云雀/资讯\"");
        add("percent sign", "/opt/100%f", "\"/opt/100%%f\"");
        add("two percent signs", "/opt/%%", "\"/opt/%%%%\"");
        add("dollar", "/opt/$HOME", "\"/opt/\\\\$HOME\"");
        add("backtick", "/opt/`id`", "\"/opt/\\\\`id\\\\`\"");
        add("double quote", "/opt/\"x\"", "\"/opt/\\\\\"x\\\\\"\"");
        add("backslash", "/opt/a\\b", "\"/opt/a\\\\\\\\b\"");
        add("backslash before n", "/opt/a\\new", "\"/opt/a\\\\\\\\new\"");
        add("single quote and shell signs", "/opt/it's;&|<>~*?#()", "\"/opt/it's;&|<>~*?#()\"");
        add("tab and newline", "/opt/a\tb\nc\rd", "\"/opt/a\\tb\\nc\\rd\"");
    }

    void aPathIsQuotedAndComesBack()
    {
        QFETCH(QString, path);
        QFETCH(QString, value);
        QCOMPARE(DesktopEntryExec::valueFor(path), value);
        QCOMPARE(DesktopEntryExec::arguments(value).value_or(QStringList()), QStringList{path});
    }

    void aPathWithAnEqualsSignCannotBeExpressed()
    {
        QCOMPARE(DesktopEntryExec::valueFor(t("/opt/a=b")), QString());
    }

    void aHandWrittenValueIsTakenApart_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QStringList>("arguments");
        const auto add = [](const char *value, const QStringList &arguments) {
            QTest::newRow(value) << t(value) << arguments;
        };
        add("", {});
        add("   ", {});
        add("/usr/bin/larkspire", {t("/usr/bin/larkspire")});
        add("/usr/bin/larkspire  --tray %U", {t("/usr/bin/larkspire"), t("--tray"), t("%U")});
        add("\"/opt/my programs/larkspire\" \"two words\"",
            {t("/opt/my programs/larkspire"), t("two words")});
        add("larkspire \"\"", {t("larkspire"), QString()});
        add("/opt/my\\sprograms", {t("/opt/my"), t("programs")});
        add("\"/opt/my\\sprograms\"", {t("/opt/my programs")});
        add("/opt/a\\zb", {t("/opt/a\\zb")});
        add("100%%", {t("100%")});
        add("trailing\\", {t("trailing\\")});
    }

    void aHandWrittenValueIsTakenApart()
    {
        QFETCH(QString, value);
        QFETCH(QStringList, arguments);
        const auto found = DesktopEntryExec::arguments(value);
        QVERIFY(found.has_value());
        QCOMPARE(*found, arguments);
    }

    void aQuoteThatIsNotClosedIsNoValue_data()
    {
        QTest::addColumn<QString>("value");
        QTest::newRow("open") << t("\"/usr/bin/larkspire");
        QTest::newRow("closed by an escaped quote only") << t("\"/usr/bin/larkspire\\\\\"");
    }

    void aQuoteThatIsNotClosedIsNoValue()
    {
        QFETCH(QString, value);
        QVERIFY(!DesktopEntryExec::arguments(value).has_value());
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestDesktopEntryExec)
#include "tst_desktopentryexec.moc"
