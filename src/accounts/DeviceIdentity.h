#pragma once

#include <QString>

/// What the program tells the services about the machine it runs on. The services count devices per account,
/// so the device id comes out the same at every start on the same machine, without anything stored. All
/// values are computed anew at every call; none of the functions fails.
namespace DeviceIdentity {

/// 32 lower-case hexadecimal characters. Derives from the host names, the operating system, the processor
/// architecture and the MAC address: a change of any of them makes this another device.
QString deviceId();

/// Computer name and operating system, such as "WORK-PC (Windows 11)". Begins with "Unknown" on a machine
/// without a host name.
QString deviceName();

/// Always "desktop".
QString deviceType();

/// The operating system, such as "Windows 10" or "ubuntu 22.04".
QString osInfo();

/// The hardware address of the first network interface that is up and not the loopback, colon-separated, as
/// Qt gives it. Empty when no interface has one.
QString macAddress();

} // namespace DeviceIdentity
