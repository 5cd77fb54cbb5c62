#pragma once

#include "linkage/PlatformOperations.h"

#include <QObject>
#include <QString>

/// Makes one of the outside trading programs jump to a stock. Tdx hears a registered window message that
/// carries the code as a number; Ths is given a block of bytes in its own memory and a private message that
/// points at it.
///
/// Both operations run on the main thread and block it until the receiving windows have handled the message,
/// without a limit. A code is a string of digits, six as a rule; it is not checked beyond its being not
/// empty.
class StockCodeSender final : public QObject
{
    Q_OBJECT

public:
    /// `operations` is the operating system to work on and outlives this object.
    explicit StockCodeSender(PlatformOperations &operations, QObject *parent = nullptr);
    Q_DISABLE_COPY_MOVE(StockCodeSender)

    /// Broadcasts `code` to Tdx. No window is looked for: it counts as sent even where no Tdx runs. Emits
    /// exactly one of the two signals, with the software "通达信", and returns true with sendSuccess().
    bool sendToTdx(const QString &code);

    /// Sends `code` to the first process hexin.exe. Emits exactly one of the two signals, with the software
    /// "同花顺", and returns true with sendSuccess().
    bool sendToThs(const QString &code);

signals:
    /// The message was sent. `code` is the code as given.
    void sendSuccess(const QString &software, const QString &code);
    /// Nothing was sent; `errorMsg` says why, in words for the user.
    void sendFailed(const QString &software, const QString &code, const QString &errorMsg);

private:
    using Delivery = QString (StockCodeSender::*)(const QString &code);

    bool send(const QString &software, const QString &code, Delivery deliver);
    QString deliverToTdx(const QString &code);
    QString deliverToThs(const QString &code);
    QString deliverBlock(ProcessHandle process, const QByteArray &block);
    ProcessHandle openThs();
    WindowHandle findThsWindow();

    PlatformOperations &m_operations;
};
