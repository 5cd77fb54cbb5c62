#include "settings/PasswordScrambling.h"

#include <QByteArray>
#include <QCryptographicHash>

namespace {

QByteArray xoredWithHashOf(QByteArray bytes, const QString &deviceId)
{
    const QByteArray key = QCryptographicHash::hash(deviceId.toUtf8(), QCryptographicHash::Sha256);
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(bytes.at(i) ^ key.at(i % key.size()));
    return bytes;
}

} // namespace

QString PasswordScrambling::scrambled(const QString &password, const QString &deviceId)
{
    if (password.isEmpty() || deviceId.isEmpty())
        return QString();
    return QString::fromLatin1(xoredWithHashOf(password.toUtf8(), deviceId).toBase64());
}

QString PasswordScrambling::unscrambled(const QString &stored, const QString &deviceId)
{
    if (stored.isEmpty() || deviceId.isEmpty())
        return QString();
    return QString::fromUtf8(xoredWithHashOf(QByteArray::fromBase64(stored.toLatin1()), deviceId));
}
