#include "accounts/DeviceIdentityRules.h"

#include <QCryptographicHash>
#include <QStringList>

QString DeviceIdentityRules::deviceId(const DeviceFacts &facts)
{
    QStringList parts{facts.localHostName, facts.machineHostName, facts.osInfo, facts.cpuArchitecture};
    if (!facts.macAddress.isEmpty())
        parts.append(facts.macAddress);
    const QByteArray hashed = parts.join(QLatin1Char('_')).toUtf8();
    return QString::fromLatin1(QCryptographicHash::hash(hashed, QCryptographicHash::Sha256).toHex().left(32));
}

QString DeviceIdentityRules::computerName(const QString &localHostName, const QString &machineHostName)
{
    if (!localHostName.isEmpty())
        return localHostName;
    return machineHostName.isEmpty() ? QStringLiteral("Unknown") : machineHostName;
}

QString DeviceIdentityRules::deviceName(const QString &computerName, const QString &osInfo)
{
    return QStringLiteral("%1 (%2)").arg(computerName, osInfo);
}

QString DeviceIdentityRules::osInfo(const SystemFacts &facts)
{
    const QString type = facts.productType.toLower();
    if (type == QLatin1String("windows")) {
        const QString name = windowsVersionName(facts.kernelVersion, facts.prettyProductName);
        return name.isEmpty() ? facts.prettyProductName : name;
    }
    if (type == QLatin1String("macos") || type == QLatin1String("osx"))
        return facts.prettyProductName;
    if (facts.productVersion.isEmpty())
        return facts.productType;
    return QStringLiteral("%1 %2").arg(facts.productType, facts.productVersion);
}

QString DeviceIdentityRules::windowsVersionName(const QString &kernelVersion,
                                                const QString &prettyProductName)
{
    if (kernelVersion.startsWith(QLatin1String("10.0."))) {
        constexpr int firstBuildOfWindows11 = 22000;
        // A build that is not a number reads as 0.
        const int build = kernelVersion.section(QLatin1Char('.'), 2, 2).toInt();
        return build < firstBuildOfWindows11 ? QStringLiteral("Windows 10") : QStringLiteral("Windows 11");
    }
    static constexpr struct
    {
        const char *prefix;
        const char *name;
    } olderVersions[] = {
        {"6.3", "Windows 8.1"},   {"6.2", "Windows 8"},         {"6.1", "Windows 7"},
        {"6.0", "Windows Vista"}, {"5.2", "Windows XP 64-bit"}, {"5.1", "Windows XP"},
    };
    for (const auto &version : olderVersions) {
        if (kernelVersion.startsWith(QLatin1String(version.prefix)))
            return QLatin1String(version.name);
    }
    return prettyProductName;
}

QString DeviceIdentityRules::macAddress(const QVector<InterfaceFacts> &interfaces)
{
    for (const InterfaceFacts &adapter : interfaces) {
        if (adapter.isUp && !adapter.isLoopBack && !adapter.hardwareAddress.isEmpty() &&
            adapter.hardwareAddress != QLatin1String("00:00:00:00:00:00"))
            return adapter.hardwareAddress;
    }
    return QString();
}
