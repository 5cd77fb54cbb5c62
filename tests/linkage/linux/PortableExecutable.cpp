#include "linkage/linux/PortableExecutable.h"

#include <QtEndian>

QByteArray PortableExecutable::header(quint16 machine, int signatureAt, int size)
{
    constexpr int signatureOffsetAt = 0x3C;
    QByteArray bytes(size, '\0');
    bytes.replace(0, 2, "MZ");
    if (size >= signatureOffsetAt + int(sizeof(quint32)))
        qToLittleEndian(quint32(signatureAt), bytes.data() + signatureOffsetAt);
    const QByteArray signature("PE\0\0", 4);
    if (signatureAt >= 0 && signatureAt + signature.size() + int(sizeof(machine)) <= size) {
        bytes.replace(signatureAt, signature.size(), signature);
        qToLittleEndian(machine, bytes.data() + signatureAt + signature.size());
    }
    return bytes;
}
