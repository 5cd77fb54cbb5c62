#include "linkage/linux/PortableExecutable.h"

namespace {

/// The \p count low bytes of \p value, lowest first.
QByteArray littleEndian(quint32 value, int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes.append(char((value >> (8 * i)) & 0xFF));
    return bytes;
}

void place(QByteArray &bytes, int at, const QByteArray &part)
{
    if (at >= 0 && at + part.size() <= bytes.size())
        bytes.replace(at, part.size(), part);
}

} // namespace

QByteArray PortableExecutable::header(quint16 machine, int signatureAt, int size)
{
    constexpr int signatureOffsetAt = 0x3C;
    QByteArray bytes(size, '\0');
    place(bytes, 0, "MZ");
    place(bytes, signatureOffsetAt, littleEndian(quint32(signatureAt), 4));
    place(bytes, signatureAt, QByteArray("PE\0\0", 4) + littleEndian(machine, 2));
    return bytes;
}
