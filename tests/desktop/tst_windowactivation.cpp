#include "desktop/WindowActivation.h"

#include "support/IsolatedHome.h"

#include <QApplication>
#include <QDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <QProcess>

#include <cstdlib>
#include <memory>

#include <xcb/xcb.h>

namespace {

QString t(const char *text)
{
    return QString::fromLatin1(text);
}

/// The windows that a property of the root window lists, as X ids.
QList<WId> rootWindows(const char *property)
{
    QProcess xprop;
    xprop.start(t("xprop"), {t("-root"), t("-notype"), t(property)});
    QList<WId> windows;
    if (!xprop.waitForFinished())
        return windows;
    const QString output = QString::fromLocal8Bit(xprop.readAllStandardOutput());
    const QStringList ids = output.section(QLatin1Char('#'), 1).split(QLatin1Char(','), Qt::SkipEmptyParts);
    for (const QString &id : ids)
        windows.append(id.trimmed().toULongLong(nullptr, 16));
    return windows;
}

WId activeWindow()
{
    return rootWindows("_NET_ACTIVE_WINDOW").value(0);
}

bool isDock(WId window)
{
    QProcess xprop;
    xprop.start(t("xprop"), {t("-id"), QString::number(window), t("_NET_WM_WINDOW_TYPE")});
    return xprop.waitForFinished() && xprop.readAllStandardOutput().contains("_NET_WM_WINDOW_TYPE_DOCK");
}

/// The uppermost window but for the tray's own, which lies above all.
WId frontWindow()
{
    QList<WId> stack = rootWindows("_NET_CLIENT_LIST_STACKING");
    while (!stack.isEmpty() && isDock(stack.last()))
        stack.removeLast();
    return stack.isEmpty() ? 0 : stack.last();
}

/// Listens to what clients ask of the window manager, beside the window manager itself.
class RequestListener
{
public:
    RequestListener()
    {
        const std::uint32_t requests = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
        xcb_change_window_attributes(m_connection,
                                     xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root,
                                     XCB_CW_EVENT_MASK, &requests);
        // The answer to a later request tells that the listening has begun.
        std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
    }
    ~RequestListener() { xcb_disconnect(m_connection); }
    Q_DISABLE_COPY_MOVE(RequestListener)

    /// Whether a message with this first number for this window has come.
    bool heard(WId window, std::uint32_t firstNumber)
    {
        while (xcb_generic_event_t *const event = xcb_poll_for_event(m_connection)) {
            const auto *const message = reinterpret_cast<const xcb_client_message_event_t *>(event);
            if ((event->response_type & 0x7f) == XCB_CLIENT_MESSAGE)
                m_messages.append({message->window, message->data.data32[0]});
            std::free(event);
        }
        return m_messages.contains({window, firstNumber});
    }

private:
    xcb_connection_t *const m_connection = xcb_connect(nullptr, nullptr);
    QList<QPair<WId, std::uint32_t>> m_messages;
};

/// A window of another process, which lies over the test's windows and has the focus.
class OtherProgram
{
public:
    OtherProgram()
    {
        m_process.start(QCoreApplication::applicationFilePath(), {t("--other-program")});
        if (m_process.waitForReadyRead())
            m_window = m_process.readLine().trimmed().toULongLong();
    }
    ~OtherProgram()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(OtherProgram)

    WId window() const { return m_window; }

private:
    QProcess m_process;
    WId m_window = 0;
};

/// The other program: tells its window's id and lives until its input is closed.
int runOtherProgram()
{
    QWidget window;
    window.setGeometry(100, 100, 700, 600);
    window.show();
    std::printf("%llu\n", static_cast<unsigned long long>(window.winId()));
    std::fflush(stdout);
    QProcess waiter;
    waiter.setInputChannelMode(QProcess::ForwardedInputChannel);
    QObject::connect(&waiter, QOverload<int, QProcess::ExitStatus>::of(&QProcess::finished), &window,
                     [] { QCoreApplication::quit(); });
    waiter.start(t("cat"), QStringList());
    return QApplication::exec();
}

} // namespace

class TestWindowActivation : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_window = std::make_unique<QMainWindow>();
        m_edit = new QLineEdit;
        m_window->setCentralWidget(m_edit);
        m_window->setGeometry(200, 200, 400, 300);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void cleanup() { m_window.reset(); }

    void aWindowBehindAnotherProgramsWindowEndsInFrontAndFocused()
    {
        const OtherProgram other;
        QVERIFY(other.window() != 0);
        QTRY_COMPARE(activeWindow(), other.window());
        QTRY_VERIFY(!m_window->isActiveWindow());
        WindowActivation::bringToFrontNatively(m_window.get());
        verifyInFront();
    }

    // Window managers that guard the focus grant a request that comes from the user, and turn one that a
    // program makes on its own behalf into a blinking task bar.
    void theFocusIsAskedForInTheNameOfTheUser()
    {
        constexpr std::uint32_t onBehalfOfTheUser = 2;
        RequestListener listener;
        WindowActivation::bringToFrontNatively(m_window.get());
        QTRY_VERIFY(listener.heard(m_window->winId(), onBehalfOfTheUser));
    }

    void aMinimisedWindowEndsInFrontAndFocused()
    {
        const OtherProgram other;
        QVERIFY(other.window() != 0);
        QTRY_COMPARE(activeWindow(), other.window());
        m_window->showMinimized();
        QTRY_VERIFY(isIconicForTheWindowManager());
        QTRY_VERIFY(m_window->isMinimized());
        WindowActivation::bringToFrontNatively(m_window.get());
        verifyInFront();
        QVERIFY(!isIconicForTheWindowManager());
    }

    void aHiddenWindowThatIsShownAgainEndsInFrontAndFocused()
    {
        m_window->hide();
        QTRY_VERIFY(QGuiApplication::focusWindow() == nullptr);
        const OtherProgram other;
        QVERIFY(other.window() != 0);
        QTRY_COMPARE(activeWindow(), other.window());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
        WindowActivation::bringToFrontNatively(m_window.get());
        verifyInFront();
    }

    void aWindowBehindAnotherOfTheSameProgramEndsInFront()
    {
        QDialog other;
        other.setGeometry(150, 150, 600, 500);
        other.show();
        QVERIFY(QTest::qWaitForWindowActive(&other));
        WindowActivation::bringToFrontNatively(m_window.get());
        verifyInFront();
    }

    void aWidgetInsideStandsForItsWindow()
    {
        const OtherProgram other;
        QVERIFY(other.window() != 0);
        QTRY_COMPARE(activeWindow(), other.window());
        WindowActivation::bringToFrontNatively(m_edit);
        verifyInFront();
    }

    void aWindowInFrontStaysAsItIs()
    {
        const QRect geometry = m_window->geometry();
        WindowActivation::bringToFrontNatively(m_window.get());
        verifyInFront();
        QCOMPARE(m_window->geometry(), geometry);
    }

    void aMaximisedWindowComesBackMaximised()
    {
        m_window->showMaximized();
        QTRY_VERIFY(property("_NET_WM_STATE").contains("_NET_WM_STATE_MAXIMIZED_VERT"));
        QTRY_VERIFY(m_window->isMaximized());
        m_window->setWindowState(m_window->windowState() | Qt::WindowMinimized);
        QTRY_VERIFY(isIconicForTheWindowManager());
        // Qt's own connection has not heard of it yet; what it hears late it takes for a new change.
        QGuiApplication::sync();
        WindowActivation::bringToFrontNatively(m_window.get());
        verifyInFront();
        QTRY_VERIFY(m_window->isMaximized());
        QVERIFY(property("_NET_WM_STATE").contains("_NET_WM_STATE_MAXIMIZED_VERT"));
    }

private:
    void verifyInFront() const
    {
        QTRY_COMPARE(activeWindow(), m_window->winId());
        QTRY_COMPARE(frontWindow(), m_window->winId());
        QTRY_VERIFY(m_window->isActiveWindow());
        QTRY_VERIFY(!m_window->isMinimized());
        QVERIFY(m_window->isVisible());
    }

    /// What the window manager has written on the window.
    QByteArray property(const char *name) const
    {
        QProcess xprop;
        xprop.start(t("xprop"), {t("-id"), QString::number(m_window->winId()), t(name)});
        return xprop.waitForFinished() ? xprop.readAllStandardOutput() : QByteArray();
    }

    bool isIconicForTheWindowManager() const { return property("WM_STATE").contains("window state: Iconic"); }

    std::unique_ptr<QMainWindow> m_window;
    QLineEdit *m_edit = nullptr;
};

int main(int argc, char *argv[])
{
    IsolatedHome home;
    QApplication application(argc, argv);
    if (QCoreApplication::arguments().contains(t("--other-program")))
        return runOtherProgram();
    setProgramIdentity();
    TestWindowActivation test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_windowactivation.moc"
