#include "linkage/ProcessUtils.h"
#include "linkage/linux/LinuxPlatformOperations.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QProcess>
#include <QWidget>
#include <QWindow>

#include <cstdlib>

#include <xcb/xcb.h>

namespace {

/// An X server of its own, without a window manager; DISPLAY names it while it lives.
class BareServer final
{
public:
    BareServer() : m_display(qgetenv("DISPLAY"))
    {
        m_server.start(QStringLiteral("Xvfb"), {QStringLiteral("-displayfd"), QStringLiteral("1"),
                                                QStringLiteral("-nolisten"), QStringLiteral("tcp")});
        if (!m_server.waitForReadyRead(20000))
            qFatal("Xvfb did not start");
        qputenv("DISPLAY", ":" + m_server.readLine().trimmed());
    }
    ~BareServer()
    {
        end();
        qputenv("DISPLAY", m_display);
    }
    Q_DISABLE_COPY_MOVE(BareServer)

    void end()
    {
        m_server.kill();
        m_server.waitForFinished();
    }

    /// A program with windows on that server.
    class Client final
    {
    public:
        Client() : m_connection(xcb_connect(nullptr, nullptr)) {}
        ~Client() { xcb_disconnect(m_connection); }
        Q_DISABLE_COPY_MOVE(Client)

        xcb_connection_t *connection() const { return m_connection; }

        xcb_window_t createWindow(const QByteArray &title) const
        {
            const xcb_window_t window = xcb_generate_id(m_connection);
            const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data->root;
            xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, root, 0, 0, 50, 50, 0,
                              XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
            xcb_change_property(m_connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME,
                                XCB_ATOM_STRING, 8, quint32(title.size()), title.constData());
            return window;
        }

        /// Returns once the server has done everything asked of it so far.
        void sync() const
        {
            std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
        }

    private:
        xcb_connection_t *m_connection;
    };

private:
    QByteArray m_display;
    QProcess m_server;
};

} // namespace

class tst_X11Windows : public QObject
{
    Q_OBJECT

    struct Found
    {
        quint32 pid = 0;
        QString title;
        QString className;
        bool visible = false;
    };

    static QList<Found> allWindows(LinuxPlatformOperations &operations)
    {
        QList<Found> windows;
        operations.walkWindows([&](WindowHandle window) {
            Found found;
            found.pid = operations.windowProcessId(window);
            found.title = QString::fromStdU16String(operations.windowTitle(window));
            found.className = QString::fromStdU16String(operations.windowClassName(window));
            found.visible = operations.isWindowVisible(window);
            windows.append(found);
            return true;
        });
        return windows;
    }

    static Found find(LinuxPlatformOperations &operations, const QString &title)
    {
        for (const Found &window : allWindows(operations)) {
            if (window.title == title)
                return window;
        }
        return {};
    }

private slots:
    void aWindowIsFoundWithItsProcessTitleAndClass()
    {
        const QString title = QStringLiteral("通达信金融终端V7.60 - [分时走势]");
        QWidget widget;
        widget.setWindowTitle(title);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        LinuxPlatformOperations operations;
        QTRY_COMPARE(find(operations, title).pid, quint32(QCoreApplication::applicationPid()));
        const Found found = find(operations, title);
        QVERIFY(found.visible);
        QCOMPARE(found.className, QStringLiteral("Larkspire"));
    }

    void aMinimisedWindowIsVisibleAndAHiddenOneIsNot()
    {
        const QString title = QStringLiteral("同花顺 minimised");
        QWidget widget;
        widget.setWindowTitle(title);
        widget.show();
        QVERIFY(QTest::qWaitForWindowExposed(&widget));
        LinuxPlatformOperations operations;
        QTRY_VERIFY(find(operations, title).visible);
        widget.showMinimized();
        QTRY_VERIFY(!widget.windowHandle()->isExposed());
        QVERIFY(find(operations, title).visible);
        widget.hide();
        QTRY_VERIFY(!find(operations, title).visible);
    }

    void aLongTitleIsCutAsOnWindows()
    {
        QWidget widget;
        widget.setWindowTitle(QStringLiteral("通").repeated(300));
        widget.show();
        LinuxPlatformOperations operations;
        QTRY_VERIFY(find(operations, QStringLiteral("通").repeated(255)).visible);
    }

    void theWalkEndsWhenTheVisitorHasSeenEnough()
    {
        QWidget first;
        QWidget second;
        first.show();
        second.show();
        LinuxPlatformOperations operations;
        QTRY_VERIFY(allWindows(operations).size() >= 2);
        int visits = 0;
        operations.walkWindows([&visits](WindowHandle) { return ++visits < 1; });
        QCOMPARE(visits, 1);
    }

    void aWindowThatIsGoneHasNothing()
    {
        LinuxPlatformOperations operations;
        const auto gone = WindowHandle(0x7FFFFFF);
        QCOMPARE(operations.windowProcessId(gone), 0U);
        QVERIFY(operations.windowTitle(gone).empty());
        QVERIFY(operations.windowClassName(gone).empty());
        QVERIFY(!operations.isWindowVisible(gone));
    }

    void withoutADisplayThereAreNoWindows()
    {
        const QByteArray display = qgetenv("DISPLAY");
        qputenv("DISPLAY", ":59999");
        LinuxPlatformOperations operations;
        QVERIFY(allWindows(operations).isEmpty());
        QCOMPARE(operations.windowProcessId(WindowHandle(1)), 0U);
        QVERIFY(!operations.isWindowVisible(WindowHandle(1)));
        qputenv("DISPLAY", display);
        QWidget widget;
        widget.show();
        QTRY_VERIFY(!allWindows(operations).isEmpty());
    }

    void withoutAWindowManagerTheRootsChildrenCount()
    {
        const BareServer server;
        const BareServer::Client client;
        const xcb_window_t shown = client.createWindow("a shown one");
        const xcb_window_t hidden = client.createWindow("a hidden one");
        xcb_map_window(client.connection(), shown);
        client.sync();
        QVERIFY(hidden != shown);

        LinuxPlatformOperations operations;
        QCOMPARE(allWindows(operations).size(), 2);
        QVERIFY(find(operations, QStringLiteral("a shown one")).visible);
        const Found found = find(operations, QStringLiteral("a hidden one"));
        QVERIFY(!found.visible);
        QCOMPARE(found.title, QStringLiteral("a hidden one"));
        QCOMPARE(found.pid, 0U);
    }

    void aDisplayThatIsLostIsCopedWithAndReplaced()
    {
        LinuxPlatformOperations operations;
        {
            BareServer server;
            const BareServer::Client client;
            client.createWindow("only here");
            client.sync();
            QCOMPARE(find(operations, QStringLiteral("only here")).title, QStringLiteral("only here"));
            server.end();
            QVERIFY(allWindows(operations).isEmpty());
            QVERIFY(operations.windowTitle(WindowHandle(1)).empty());
        }
        QWidget widget;
        widget.setWindowTitle(QStringLiteral("on the old display"));
        widget.show();
        QTRY_VERIFY(find(operations, QStringLiteral("on the old display")).visible);
    }
};

LARKSPIRE_TEST_MAIN(tst_X11Windows)
#include "tst_x11windows.moc"
