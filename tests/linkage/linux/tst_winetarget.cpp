#include "linkage/linux/WineTarget.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>

namespace {

QByteArray environ(const QList<QByteArray> &variables)
{
    QByteArray result;
    for (const QByteArray &variable : variables)
        result += variable + '\0';
    return result;
}

} // namespace

class tst_WineTarget : public QObject
{
    Q_OBJECT

private slots:
    void theLoaderAndThePrefixAreReadOffTheProcess_data()
    {
        QTest::addColumn<QByteArray>("variables");
        QTest::addColumn<QString>("executable");
        QTest::addColumn<QString>("loader");
        QTest::addColumn<QString>("prefix");
        QTest::newRow("named by Wine")
            << environ({"HOME=/home/li", "WINELOADER=/usr/lib/wine/wine64", "WINEPREFIX=/home/li/tdx/"})
            << QStringLiteral("/usr/lib/wine/wine64") << QStringLiteral("/usr/lib/wine/wine64")
            << QStringLiteral("/home/li/tdx");
        QTest::newRow("the prefix that goes without saying")
            << environ({"HOME=/home/li", "WINELOADER=/usr/lib/wine/wine64"})
            << QStringLiteral("/usr/lib/wine/wine64") << QStringLiteral("/usr/lib/wine/wine64")
            << QStringLiteral("/home/li/.wine");
        QTest::newRow("an empty prefix")
            << environ({"HOME=/home/li", "WINEPREFIX="}) << QStringLiteral("/opt/w/bin/wine")
            << QStringLiteral("/opt/w/bin/wine") << QStringLiteral("/home/li/.wine");
        QTest::newRow("a preloader") << environ({"HOME=/home/li"})
                                     << QStringLiteral("/opt/w/bin/wine64-preloader")
                                     << QStringLiteral("/opt/w/bin/wine64")
                                     << QStringLiteral("/home/li/.wine");
        QTest::newRow("Chinese folders")
            << environ({"HOME=/home/李", "WINEPREFIX=/home/李/通达信"}) << QStringLiteral("/usr/bin/wine")
            << QStringLiteral("/usr/bin/wine") << QStringLiteral("/home/李/通达信");
    }

    void theLoaderAndThePrefixAreReadOffTheProcess()
    {
        QFETCH(QByteArray, variables);
        QFETCH(QString, executable);
        QFETCH(QString, loader);
        QFETCH(QString, prefix);
        const auto target = WineTarget::of(variables, executable);
        QVERIFY(target);
        QCOMPARE(target->loader, loader);
        QCOMPARE(target->prefix, prefix);
    }

    void aProcessOutsideWineIsNoTarget_data()
    {
        QTest::addColumn<QByteArray>("variables");
        QTest::addColumn<QString>("executable");
        QTest::newRow("a native program")
            << environ({"HOME=/home/li"}) << QStringLiteral("/opt/standins/hexin.exe");
        QTest::newRow("a native program, with a prefix set")
            << environ({"HOME=/home/li", "WINEPREFIX=/home/li/.wine"})
            << QStringLiteral("/opt/standins/hexin.exe");
        QTest::newRow("nothing known") << QByteArray() << QString();
    }

    void aProcessOutsideWineIsNoTarget()
    {
        QFETCH(QByteArray, variables);
        QFETCH(QString, executable);
        QVERIFY(!WineTarget::of(variables, executable));
    }

    void onlyWhatDecidesOnTheSessionIsTakenOver()
    {
        const auto target = WineTarget::of(
            environ({"HOME=/home/li", "DISPLAY=:1", "WINEESYNC=1", "WINEFSYNC=1", "WINEARCH=win64",
                     "WINEDEBUG=+all", "WINELOADERNOEXEC=1", "WINESERVERSOCKET=13", "WINEPRELOADRESERVE=1-2",
                     "EDITOR=vi", "=broken", "broken", "LD_LIBRARY_PATH=a=b"}),
            QStringLiteral("/usr/bin/wine"));
        QVERIFY(target);
        const QMap<QString, QByteArray> expected{
            {QStringLiteral("DISPLAY"), ":1"},         {QStringLiteral("HOME"), "/home/li"},
            {QStringLiteral("WINEARCH"), "win64"},     {QStringLiteral("WINEESYNC"), "1"},
            {QStringLiteral("WINEFSYNC"), "1"},        {QStringLiteral("WINEPREFIX"), "/home/li/.wine"},
            {QStringLiteral("LD_LIBRARY_PATH"), "a=b"}};
        QCOMPARE(target->environment, expected);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(tst_WineTarget)
#include "tst_winetarget.moc"
