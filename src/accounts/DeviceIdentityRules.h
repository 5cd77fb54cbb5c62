#pragma once

#include <QString>
#include <QVector>

/// The decisions behind DeviceIdentity, as functions from facts about a machine to texts.
namespace DeviceIdentityRules {

/// What QSysInfo tells of the operating system.
struct SystemFacts
{
    QString productType;
    QString productVersion;
    QString prettyProductName;
    QString kernelVersion;
};

/// What QNetworkInterface tells of one network interface.
struct InterfaceFacts
{
    bool isUp = false;
    bool isLoopBack = false;
    QString hardwareAddress;
};

/// The facts that a device id derives from.
struct DeviceFacts
{
    QString localHostName;
    QString machineHostName;
    QString osInfo;
    QString cpuArchitecture;
    /// Empty when the machine has none.
    QString macAddress;
};

/// The first 32 hexadecimal characters of the SHA-256 hash of the facts, joined by underscores. An empty MAC
/// address adds neither itself nor an underscore.
QString deviceId(const DeviceFacts &facts);

/// The first of the two names that is not empty, else "Unknown".
QString computerName(const QString &localHostName, const QString &machineHostName);

/// "NAME (OS)".
QString deviceName(const QString &computerName, const QString &osInfo);

/// The name of the operating system: the marketing name on Windows and macOS, product and version elsewhere.
QString osInfo(const SystemFacts &facts);

/// The Windows version behind a kernel version such as "10.0.22631"; the pretty product name where the kernel
/// version is of no known Windows.
QString windowsVersionName(const QString &kernelVersion, const QString &prettyProductName);

/// The first usable hardware address in the order given; empty when there is none. An interface need not be
/// running, so a virtual adapter that is up can win; that is meant.
QString macAddress(const QVector<InterfaceFacts> &interfaces);

} // namespace DeviceIdentityRules
