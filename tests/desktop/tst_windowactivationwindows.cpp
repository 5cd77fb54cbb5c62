#include "desktop/WindowActivation.h"

#include "desktop/HotkeyHolder.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QLineEdit>
#include <QMainWindow>

#include <memory>

#include <qt_windows.h>

/// By the calls of Windows, with the window of another program in front.
class TestWindowActivationWindows : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QVERIFY(m_other.says(QStringLiteral("focused"))); }

    void init()
    {
        const HWND other = FindWindowW(nullptr, L"hotkey-holder");
        QVERIFY(other);
        m_window = std::make_unique<QMainWindow>();
        m_edit = new QLineEdit;
        m_window->setCentralWidget(m_edit);
        m_window->setGeometry(200, 200, 400, 300);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        // Asked again and again: under Wine the focus that a new window gets from the window manager may come
        // late.
        QTRY_VERIFY((SetForegroundWindow(other), GetForegroundWindow() == other));
        QTRY_VERIFY(!m_window->isActiveWindow());
    }

    void cleanup() { m_window.reset(); }

    void aWindowBehindAnotherProgramsWindowEndsInFrontAndFocused_data()
    {
        QTest::addColumn<bool>("byAWidgetInside");
        QTest::newRow("the window itself") << false;
        QTest::newRow("a widget inside stands for it") << true;
    }

    void aWindowBehindAnotherProgramsWindowEndsInFrontAndFocused()
    {
        QFETCH(bool, byAWidgetInside);
        WindowActivation::bringToFrontNatively(byAWidgetInside ? static_cast<QWidget *>(m_edit)
                                                               : m_window.get());
        verifyInFront();
    }

    void aMinimisedWindowEndsInFrontAndFocusedAsItWas_data()
    {
        QTest::addColumn<bool>("maximised");
        QTest::newRow("normal") << false;
        QTest::newRow("maximised") << true;
    }

    void aMinimisedWindowEndsInFrontAndFocusedAsItWas()
    {
        QFETCH(bool, maximised);
        if (maximised)
            m_window->showMaximized();
        QTRY_COMPARE(IsZoomed(window()) != FALSE, maximised);
        m_window->setWindowState(m_window->windowState() | Qt::WindowMinimized);
        QTRY_VERIFY(IsIconic(window()));
        WindowActivation::bringToFrontNatively(m_window.get());
        verifyInFront();
        QTRY_COMPARE(m_window->isMaximized(), maximised);
        QTRY_COMPARE(IsZoomed(window()) != FALSE, maximised);
    }

    void aHiddenWindowThatIsShownAgainEndsInFrontAndFocused()
    {
        m_window->hide();
        m_window->show();
        WindowActivation::bringToFrontNatively(m_window.get());
        verifyInFront();
    }

private:
    HWND window() const { return reinterpret_cast<HWND>(m_window->winId()); }

    void verifyInFront() const
    {
        QTRY_COMPARE(GetForegroundWindow(), window());
        QTRY_VERIFY(m_window->isActiveWindow());
        QCOMPARE(GetFocus(), window());
        QVERIFY(!IsIconic(window()) && IsWindowVisible(window()));
    }

    std::unique_ptr<QMainWindow> m_window;
    QLineEdit *m_edit = nullptr;
    HotkeyHolder m_other{{QStringLiteral("window")}};
};

LARKSPIRE_TEST_MAIN(TestWindowActivationWindows)
#include "tst_windowactivationwindows.moc"
