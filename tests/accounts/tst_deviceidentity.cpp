#include "accounts/DeviceIdentity.h"

#include "accounts/DeviceIdentityRules.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QHostInfo>
#include <QNetworkInterface>
#include <QRegularExpression>
#include <QSysInfo>

namespace Rules = DeviceIdentityRules;

Q_DECLARE_METATYPE(DeviceIdentityRules::InterfaceFacts)

namespace {

QString t(const char *text)
{
    return QString::fromUtf8(text);
}

QString firstHalfOfSha256(const QString &text)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(text.toUtf8(), QCryptographicHash::Sha256).toHex().left(32));
}

} // namespace

class TestDeviceIdentity : public QObject
{
    Q_OBJECT

private slots:
    void theIdIsTheHashOfTheJoinedFacts_data()
    {
        QTest::addColumn<QStringList>("facts");
        QTest::addColumn<QString>("hashed");
        QTest::addColumn<QString>("id");
        // The ids were worked out with sha256sum.
        const auto add = [](const char *name, const QStringList &facts, const QString &hashed,
                            const char *id) { QTest::newRow(name) << facts << hashed << t(id); };
        add("with an adapter",
            {t("WORK-PC"), t("work-pc.lan"), t("Windows 11"), t("x86_64"), t("00:1A:2B:3C:4D:5E")},
            t("WORK-PC_work-pc.lan_Windows 11_x86_64_00:1A:2B:3C:4D:5E"), "3ff3121e85de4597d1d0e914d7415b38");
        add("without an adapter no underscore trails",
            {t("WORK-PC"), t("work-pc.lan"), t("Windows 11"), t("x86_64"), QString()},
            t("WORK-PC_work-pc.lan_Windows 11_x86_64"), "74f9e13b4ed8c1ce6f1d1fc4ffb55cd0");
        add("host names empty stay empty", {QString(), QString(), t("debian 12"), t("arm64"), QString()},
            t("__debian 12_arm64"), "bd890904b68495d18246ce7d8df38be1");
        add("not ASCII", {t("云雀"), t("云雀"), t("Windows 10"), t("x86_64"), QString()},
            t("云雀_云雀_Windows 10_x86_64"), "09fe1d0263cc187755fbd9c51db4b3fc");
        add("percent signs are no placeholders", {t("%2"), t("%1%3"), t("%4"), t("x86_64"), QString()},
            t("%2_%1%3_%4_x86_64"), "d5abe644209f51e99c968be2a75cd938");
    }

    void theIdIsTheHashOfTheJoinedFacts()
    {
        QFETCH(QStringList, facts);
        QFETCH(QString, hashed);
        QFETCH(QString, id);
        QCOMPARE(Rules::deviceId({facts.at(0), facts.at(1), facts.at(2), facts.at(3), facts.at(4)}), id);
        QCOMPARE(firstHalfOfSha256(hashed), id);
    }

    void theIdIs32CharactersWhateverTheLengthOfTheFacts()
    {
        static const QRegularExpression form(t("^[0-9a-f]{32}$"));
        for (const int length : {0, 1, 63, 64, 65, 100000}) {
            const QString name(length, QChar(0x4E91));
            QVERIFY(form.match(Rules::deviceId({name, name, name, name, name})).hasMatch());
        }
    }

    void theComputersNameHasTwoSourcesAndAWordForNone_data()
    {
        QTest::addColumn<QString>("local");
        QTest::addColumn<QString>("machine");
        QTest::addColumn<QString>("name");
        QTest::newRow("both") << t("local") << t("machine") << t("local");
        QTest::newRow("only the second") << QString() << t("machine") << t("machine");
        QTest::newRow("neither") << QString() << QString() << t("Unknown");
    }

    void theComputersNameHasTwoSourcesAndAWordForNone()
    {
        QFETCH(QString, local);
        QFETCH(QString, machine);
        QFETCH(QString, name);
        QCOMPARE(Rules::computerName(local, machine), name);
    }

    void theDeviceNameTakesAPercentSignAsItIs()
    {
        QCOMPARE(Rules::deviceName(t("WORK-PC"), t("Windows 11")), t("WORK-PC (Windows 11)"));
        QCOMPARE(Rules::deviceName(t("100%2"), t("Windows %1")), t("100%2 (Windows %1)"));
        QCOMPARE(Rules::deviceName(Rules::computerName(QString(), QString()), t("ubuntu 22.04")),
                 t("Unknown (ubuntu 22.04)"));
    }

    void theOperatingSystemIsNamed_data()
    {
        QTest::addColumn<QStringList>("facts");
        QTest::addColumn<QString>("name");
        const auto add = [](const char *name, const QStringList &facts, const char *expected) {
            QTest::newRow(name) << facts << t(expected);
        };
        // Product type, product version, pretty product name, kernel version.
        add("Windows", {t("windows"), t("10"), t("Windows 10 Version 2009"), t("10.0.22631")}, "Windows 11");
        add("Windows in capitals", {t("WINDOWS"), t("10"), t("pretty"), t("10.0.19045")}, "Windows 10");
        add("an unknown Windows", {t("windows"), t("12"), t("Windows 12 Preview"), t("11.0.30000")},
            "Windows 12 Preview");
        add("macOS", {t("macos"), t("13.1"), t("macOS Ventura (13.1)"), t("22.2.0")}, "macOS Ventura (13.1)");
        add("macOS of old", {t("OSX"), t("10.11"), t("OS X El Capitan (10.11)"), t("15.0")},
            "OS X El Capitan (10.11)");
        add("ubuntu", {t("ubuntu"), t("22.04"), t("Ubuntu 22.04.3 LTS"), t("6.2.0-39")}, "ubuntu 22.04");
        add("type as it came", {t("openSUSE-Leap"), t("15.5"), t("pretty"), t("5.14")}, "openSUSE-Leap 15.5");
        add("percent signs", {t("%2"), t("%1"), t("pretty"), t("6.1")}, "%2 %1");
        add("no version", {t("arch"), QString(), t("Arch Linux"), t("6.6.8")}, "arch");
        add("Linux with a Windows-like kernel", {t("debian"), t("12"), t("pretty"), t("6.1.0-18")},
            "debian 12");
        add("unknown", {t("unknown"), QString(), t("pretty"), QString()}, "unknown");
    }

    void theOperatingSystemIsNamed()
    {
        QFETCH(QStringList, facts);
        QFETCH(QString, name);
        QCOMPARE(Rules::osInfo({facts.at(0), facts.at(1), facts.at(2), facts.at(3)}), name);
    }

    void theWindowsVersionFollowsFromTheKernel_data()
    {
        QTest::addColumn<QString>("kernel");
        QTest::addColumn<QString>("name");
        const auto add = [](const char *kernel, const char *name) {
            QTest::newRow(kernel) << t(kernel) << t(name);
        };
        add("10.0.22000", "Windows 11");
        add("10.0.21999", "Windows 10");
        add("10.0.10240", "Windows 10");
        add("10.0.22631.3007", "Windows 11");
        add("10.0.26100", "Windows 11");
        add("10.0.", "Windows 10");
        add("10.0..22631", "Windows 10");
        add("10.0.beta", "Windows 10");
        add("10.0.22631beta", "Windows 10");
        add("10.0.99999999999", "Windows 10");
        add("10.0", "pretty");
        add("10.1.22631", "pretty");
        add("6.3.9600", "Windows 8.1");
        add("6.3", "Windows 8.1");
        add("6.2.9200", "Windows 8");
        add("6.1.7601", "Windows 7");
        add("6.0.6002", "Windows Vista");
        add("5.2.3790", "Windows XP 64-bit");
        add("5.1.2600", "Windows XP");
        add("5.0.2195", "pretty");
        add("11.0.1", "pretty");
        add(" 6.1", "pretty");
        add("", "pretty");
    }

    void theWindowsVersionFollowsFromTheKernel()
    {
        QFETCH(QString, kernel);
        QFETCH(QString, name);
        QCOMPARE(Rules::windowsVersionName(kernel, t("pretty")), name);
    }

    void theFirstUsableAdapterGivesTheAddress_data()
    {
        QTest::addColumn<QVector<Rules::InterfaceFacts>>("adapters");
        QTest::addColumn<QString>("address");
        constexpr bool up = true;
        constexpr bool down = false;
        constexpr bool loop = true;
        const Rules::InterfaceFacts loopback{up, loop, t("00:00:00:00:00:00")};
        const Rules::InterfaceFacts cable{up, !loop, t("00:1A:2B:3C:4D:5E")};
        const Rules::InterfaceFacts radio{up, !loop, t("00:1A:2B:3C:4D:5F")};
        using Adapters = QVector<Rules::InterfaceFacts>;
        QTest::newRow("none at all") << Adapters{} << QString();
        QTest::newRow("behind the loopback") << Adapters{loopback, cable} << t("00:1A:2B:3C:4D:5E");
        QTest::newRow("the first of two") << Adapters{radio, cable} << t("00:1A:2B:3C:4D:5F");
        QTest::newRow("none is up") << Adapters{{down, !loop, t("00:1A:2B:3C:4D:5E")}} << QString();
        QTest::newRow("one that is down is skipped")
            << Adapters{{down, !loop, t("00:1A:2B:3C:4D:50")}, cable} << t("00:1A:2B:3C:4D:5E");
        QTest::newRow("a loopback with an address is skipped")
            << Adapters{{up, loop, t("00:1A:2B:3C:4D:50")}, cable} << t("00:1A:2B:3C:4D:5E");
        QTest::newRow("empty and all-zero addresses are skipped")
            << Adapters{{up, !loop, QString()}, {up, !loop, t("00:00:00:00:00:00")}, cable}
            << t("00:1A:2B:3C:4D:5E");
        QTest::newRow("all addresses are zero")
            << Adapters{{up, !loop, t("00:00:00:00:00:00")}, {up, !loop, t("00:00:00:00:00:00")}}
            << QString();
    }

    void theFirstUsableAdapterGivesTheAddress()
    {
        QFETCH(QVector<Rules::InterfaceFacts>, adapters);
        QFETCH(QString, address);
        QCOMPARE(Rules::macAddress(adapters), address);
    }

    void anAdapterMakesAnotherDevice()
    {
        const Rules::DeviceFacts without{t("a"), t("b"), t("c"), t("d"), QString()};
        Rules::DeviceFacts with = without;
        with.macAddress = t("00:1A:2B:3C:4D:5E");
        QVERIFY(Rules::deviceId(without) != Rules::deviceId(with));
    }

    void theRealDeviceIsDescribedByItsRealFacts()
    {
        QString hashed = t("%1_%2_%3_%4")
                             .arg(QHostInfo::localHostName(), QSysInfo::machineHostName(),
                                  DeviceIdentity::osInfo(), QSysInfo::currentCpuArchitecture());
        if (!DeviceIdentity::macAddress().isEmpty())
            hashed += t("_") + DeviceIdentity::macAddress();
        QCOMPARE(DeviceIdentity::deviceId(), firstHalfOfSha256(hashed));
        QCOMPARE(DeviceIdentity::deviceId(), DeviceIdentity::deviceId());
        QCOMPARE(DeviceIdentity::deviceType(), t("desktop"));
        QVERIFY(DeviceIdentity::deviceName().endsWith(t(" (") + DeviceIdentity::osInfo() + t(")")));
        QVERIFY(DeviceIdentity::deviceName().startsWith(
            Rules::computerName(QHostInfo::localHostName(), QSysInfo::machineHostName())));
#ifdef Q_OS_LINUX
        QVERIFY(DeviceIdentity::osInfo().startsWith(QSysInfo::productType()));
        QVERIFY(DeviceIdentity::osInfo().endsWith(QSysInfo::productVersion()));
#endif
    }

    void theRealAddressIsThatOfAnAdapterThatIsUp()
    {
        QStringList usable;
        const QList<QNetworkInterface> adapters = QNetworkInterface::allInterfaces();
        for (const QNetworkInterface &adapter : adapters) {
            if (adapter.flags().testFlag(QNetworkInterface::IsUp) &&
                !adapter.flags().testFlag(QNetworkInterface::IsLoopBack) &&
                !adapter.hardwareAddress().isEmpty())
                usable.append(adapter.hardwareAddress());
        }
        usable.removeAll(t("00:00:00:00:00:00"));
        QCOMPARE(DeviceIdentity::macAddress(), usable.isEmpty() ? QString() : usable.first());
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestDeviceIdentity)
#include "tst_deviceidentity.moc"
