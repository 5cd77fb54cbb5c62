#pragma once

#include <QString>

/// The seconds for which a button that sends an e-mail code waits until it may send again.
namespace CodeCountdown {

constexpr int startSeconds = 60;
constexpr int tickMs = 1000;

/// Caption of the button when it may send.
inline QString idleCaption()
{
    return QStringLiteral("发送验证码");
}

/// Caption of the button while \p seconds are left.
inline QString waitingCaption(int seconds)
{
    return QStringLiteral("重新发送(%1)").arg(seconds);
}

} // namespace CodeCountdown
