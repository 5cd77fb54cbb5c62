#pragma once

#include "accounts/AuthManager.h"

/// The tests' way into AuthManager: to what no operation sends, and to the status where no signal tells it.
class AuthManagerPeer
{
public:
    static bool sendWithoutBody(AuthManager &manager)
    {
        return manager.send(QStringLiteral("/auth/any"), {}, &AuthManager::onVerificationCodeReplyFinished);
    }

    static AuthStatus status(const AuthManager &manager) { return manager.m_authStatus; }
};
