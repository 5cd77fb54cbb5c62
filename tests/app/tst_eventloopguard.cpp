#include "app/EventLoopGuard.h"
#include "support/IsolatedHome.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTimer>
#include <QtTest>

#include <stdexcept>

class TestEventLoopGuard : public QObject
{
    Q_OBJECT

private slots:
    void aCleanEndReturnsTheLoopsCode();
    void anExceptionIsShownAndEndsWithOne_data();
    void anExceptionIsShownAndEndsWithOne();
};

void TestEventLoopGuard::aCleanEndReturnsTheLoopsCode()
{
    QTimer::singleShot(0, QCoreApplication::instance(), [] { QCoreApplication::exit(5); });
    QCOMPARE(EventLoopGuard::exec(), 5);
}

void TestEventLoopGuard::anExceptionIsShownAndEndsWithOne_data()
{
    QTest::addColumn<bool>("standard");
    QTest::addColumn<QString>("text");

    QTest::newRow("a standard exception") << true << QStringLiteral("程序运行过程中发生异常:\n行情中断");
    QTest::newRow("anything else") << false << QStringLiteral("程序运行过程中发生未知异常");
}

void TestEventLoopGuard::anExceptionIsShownAndEndsWithOne()
{
    QFETCH(bool, standard);

    QTimer::singleShot(0, QCoreApplication::instance(), [standard] {
        if (standard)
            throw std::runtime_error("行情中断");
        throw 5;
    });
    struct
    {
        QString title;
        QString text;
        QMessageBox::Icon icon = QMessageBox::NoIcon;
        QMessageBox::StandardButtons buttons = QMessageBox::NoButton;
        QWidget *parent = nullptr;
    } shown;
    QTimer watch;
    connect(&watch, &QTimer::timeout, this, [&shown] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        shown.title = box->windowTitle();
        shown.text = box->text();
        shown.icon = box->icon();
        shown.buttons = box->standardButtons();
        shown.parent = box->parentWidget();
        box->button(QMessageBox::Ok)->click();
    });
    watch.start(10);

    QCOMPARE(EventLoopGuard::exec(), 1);
    QCOMPARE(shown.title, QStringLiteral("程序异常"));
    QTEST(shown.text, "text");
    QCOMPARE(shown.icon, QMessageBox::Critical);
    QCOMPARE(shown.buttons, QMessageBox::Ok);
    QVERIFY(!shown.parent);
}

LARKSPIRE_TEST_MAIN(TestEventLoopGuard)
#include "tst_eventloopguard.moc"
