#include "accounts/DeviceIdentity.h"

#include "accounts/DeviceIdentityRules.h"

#include <QHostInfo>
#include <QNetworkInterface>
#include <QSysInfo>

QString DeviceIdentity::deviceId()
{
    return DeviceIdentityRules::deviceId({QHostInfo::localHostName(), QSysInfo::machineHostName(), osInfo(),
                                          QSysInfo::currentCpuArchitecture(), macAddress()});
}

QString DeviceIdentity::deviceName()
{
    return DeviceIdentityRules::deviceName(
        DeviceIdentityRules::computerName(QHostInfo::localHostName(), QSysInfo::machineHostName()), osInfo());
}

QString DeviceIdentity::deviceType()
{
    return QStringLiteral("desktop");
}

QString DeviceIdentity::osInfo()
{
    return DeviceIdentityRules::osInfo({QSysInfo::productType(), QSysInfo::productVersion(),
                                        QSysInfo::prettyProductName(), QSysInfo::kernelVersion()});
}

QString DeviceIdentity::macAddress()
{
    QVector<DeviceIdentityRules::InterfaceFacts> facts;
    const QList<QNetworkInterface> interfaces = QNetworkInterface::allInterfaces();
    facts.reserve(interfaces.size());
    for (const QNetworkInterface &adapter : interfaces) {
        const QNetworkInterface::InterfaceFlags flags = adapter.flags();
        facts.append({flags.testFlag(QNetworkInterface::IsUp), flags.testFlag(QNetworkInterface::IsLoopBack),
                      adapter.hardwareAddress()});
    }
    return DeviceIdentityRules::macAddress(facts);
}
