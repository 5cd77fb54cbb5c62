#pragma once

#include <QByteArray>

/// The beginning of a Windows program or library, as far as it tells the machine it is for.
namespace PortableExecutable {

constexpr quint16 i386 = 0x014C;
constexpr quint16 amd64 = 0x8664;

/// `size` bytes, with the PE signature at `signatureAt`.
QByteArray header(quint16 machine, int signatureAt = 0x80, int size = 1024);

} // namespace PortableExecutable
