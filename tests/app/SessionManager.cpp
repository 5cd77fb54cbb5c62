#include "app/SessionManager.h"

#include <QSocketNotifier>

#include <algorithm>
#include <cstdlib>
#include <vector>

extern "C" {
#include <X11/ICE/ICElib.h>
#include <X11/ICE/ICEutil.h>
#include <X11/SM/SMlib.h>
}

struct SessionManager::Protocol
{
    int listenerCount = 0;
    IceListenObj *listeners = nullptr;
    std::vector<IceConn> connections;
    std::vector<std::unique_ptr<QSocketNotifier>> notifiers;
    std::vector<SmsConn> members;
    int saved = 0;
    bool cancelled = false;

    static Protocol *of(SmPointer data) { return static_cast<Protocol *>(data); }

    static Status newClient(SmsConn connection, SmPointer data, unsigned long *mask, SmsCallbacks *callbacks,
                            char **refusal);
    static void process(IceConn connection, QSocketNotifier *notifier);
    void accept(IceListenObj listener);
};

namespace {

/// Every program of this user may join.
Bool admit(char *hostName)
{
    Q_UNUSED(hostName)
    return True;
}

Status registerClient(SmsConn connection, SmPointer data, char *previousId)
{
    Q_UNUSED(data)
    std::free(previousId);
    char *id = SmsGenerateClientID(connection);
    SmsRegisterClientReply(connection, id);
    std::free(id);
    // A program that joins is asked once for its state, without a log-off.
    SmsSaveYourself(connection, SmSaveLocal, False, SmInteractStyleNone, False);
    return 1;
}

void interactRequest(SmsConn connection, SmPointer data, int dialogType)
{
    Q_UNUSED(data)
    Q_UNUSED(dialogType)
    SmsInteract(connection);
}

void saveYourselfRequest(SmsConn, SmPointer, int, Bool, int, Bool, Bool) {}

void saveYourselfPhase2Request(SmsConn connection, SmPointer data)
{
    Q_UNUSED(data)
    SmsSaveYourselfPhase2(connection);
}

void setProperties(SmsConn connection, SmPointer data, int count, SmProp **properties)
{
    Q_UNUSED(connection)
    Q_UNUSED(data)
    for (int i = 0; i < count; ++i)
        SmFreeProperty(properties[i]);
    std::free(properties);
}

void deleteProperties(SmsConn connection, SmPointer data, int count, char **names)
{
    Q_UNUSED(connection)
    Q_UNUSED(data)
    for (int i = 0; i < count; ++i)
        std::free(names[i]);
    std::free(names);
}

void getProperties(SmsConn connection, SmPointer data)
{
    Q_UNUSED(data)
    SmsReturnProperties(connection, 0, nullptr);
}

} // namespace

Status SessionManager::Protocol::newClient(SmsConn connection, SmPointer data, unsigned long *mask,
                                           SmsCallbacks *callbacks, char **refusal)
{
    Q_UNUSED(refusal)
    of(data)->members.push_back(connection);
    *mask = SmsRegisterClientProcMask | SmsInteractRequestProcMask | SmsInteractDoneProcMask |
            SmsSaveYourselfRequestProcMask | SmsSaveYourselfP2RequestProcMask | SmsSaveYourselfDoneProcMask |
            SmsCloseConnectionProcMask | SmsSetPropertiesProcMask | SmsDeletePropertiesProcMask |
            SmsGetPropertiesProcMask;
    callbacks->register_client = {&registerClient, data};
    callbacks->interact_request = {&interactRequest, data};
    callbacks->interact_done.manager_data = data;
    callbacks->interact_done.callback = [](SmsConn, SmPointer protocol, Bool cancelled) {
        of(protocol)->cancelled |= cancelled != 0;
    };
    callbacks->save_yourself_request = {&saveYourselfRequest, data};
    callbacks->save_yourself_phase2_request = {&saveYourselfPhase2Request, data};
    callbacks->save_yourself_done.manager_data = data;
    callbacks->save_yourself_done.callback = [](SmsConn member, SmPointer protocol, Bool success) {
        Q_UNUSED(success)
        ++of(protocol)->saved;
        SmsSaveComplete(member);
    };
    callbacks->close_connection.manager_data = data;
    callbacks->close_connection.callback = [](SmsConn member, SmPointer protocol, int count, char **reasons) {
        SmFreeReasons(count, reasons);
        auto &all = of(protocol)->members;
        all.erase(std::remove(all.begin(), all.end(), member), all.end());
    };
    callbacks->set_properties = {&setProperties, data};
    callbacks->delete_properties = {&deleteProperties, data};
    callbacks->get_properties = {&getProperties, data};
    return 1;
}

void SessionManager::Protocol::process(IceConn connection, QSocketNotifier *notifier)
{
    if (IceProcessMessages(connection, nullptr, nullptr) != IceProcessMessagesSuccess)
        notifier->setEnabled(false);
}

void SessionManager::Protocol::accept(IceListenObj listener)
{
    IceAcceptStatus status = IceAcceptFailure;
    IceConn connection = IceAcceptConnection(listener, &status);
    if (!connection)
        return;
    connections.push_back(connection);
    auto notifier = std::make_unique<QSocketNotifier>(IceConnectionNumber(connection), QSocketNotifier::Read);
    QSocketNotifier *raw = notifier.get();
    QObject::connect(raw, &QSocketNotifier::activated, raw, [connection, raw] { process(connection, raw); });
    notifiers.push_back(std::move(notifier));
}

SessionManager::SessionManager() : m_protocol(std::make_unique<Protocol>())
{
    char error[256] = "";
    SmsInitialize("Larkspire test", "1", &Protocol::newClient, m_protocol.get(), &admit, sizeof error, error);
    // A connection that breaks is a program that has ended; the library's own handler would end this one.
    IceSetIOErrorHandler([](IceConn) {});
    if (!IceListenForConnections(&m_protocol->listenerCount, &m_protocol->listeners, sizeof error, error)) {
        qWarning("The session can't be opened: %s", error);
        return;
    }
    for (int i = 0; i < m_protocol->listenerCount; ++i) {
        IceListenObj listener = m_protocol->listeners[i];
        IceSetHostBasedAuthProc(listener, &admit);
        auto notifier =
            std::make_unique<QSocketNotifier>(IceGetListenConnectionNumber(listener), QSocketNotifier::Read);
        connect(notifier.get(), &QSocketNotifier::activated, this,
                [this, listener] { m_protocol->accept(listener); });
        m_protocol->notifiers.push_back(std::move(notifier));
    }
}

SessionManager::~SessionManager()
{
    m_protocol->notifiers.clear();
    for (SmsConn member : m_protocol->members)
        SmsCleanUp(member);
    for (IceConn connection : m_protocol->connections) {
        IceSetShutdownNegotiation(connection, False);
        IceCloseConnection(connection);
    }
    if (m_protocol->listeners)
        IceFreeListenObjs(m_protocol->listenerCount, m_protocol->listeners);
}

QString SessionManager::address() const
{
    if (!m_protocol->listeners)
        return {};
    char *ids = IceComposeNetworkIdList(m_protocol->listenerCount, m_protocol->listeners);
    const QString address = QString::fromLocal8Bit(ids);
    std::free(ids);
    return address;
}

void SessionManager::logOff()
{
    m_protocol->saved = 0;
    m_protocol->cancelled = false;
    for (SmsConn member : m_protocol->members)
        SmsSaveYourself(member, SmSaveBoth, True, SmInteractStyleAny, False);
}

int SessionManager::members() const
{
    return static_cast<int>(m_protocol->members.size());
}

int SessionManager::saved() const
{
    return m_protocol->saved;
}

bool SessionManager::cancelled() const
{
    return m_protocol->cancelled;
}
