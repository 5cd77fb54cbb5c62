#include "news/CustomNotification.h"
#include "news/NotificationPlacing.h"
#include "resources/LarkspireResources.h"
#include "settings/MainWindowSkin.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPixmap>
#include <QProcess>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <memory>

namespace {

const QString shortTitle = QStringLiteral("央行开展逆回购操作");
const QString longTitle =
    QStringLiteral("工信部等八部门联合印发《关于加快推进人工智能与制造业深度融合的实施意见》，提出到2027年，"
                   "我国人工智能关键核心技术实现安全可靠供给，产业规模稳居世界前列。");
constexpr int longMs = 600000;

} // namespace

// Runs on a real X server with a window manager; mouse and keyboard are the server's own, moved by xdotool.
class TestCustomNotification : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initLarkspireResources();
        QApplication::setStyle(QStringLiteral("Fusion"));
        m_lightPalette = QApplication::style()->standardPalette();
    }

    void init()
    {
        parkMouse();
        m_main = std::make_unique<QWidget>();
        m_main->resize(900, 600);
        m_edit = new QLineEdit(m_main.get());
        m_main->show();
        m_main->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_main.get()));
        m_edit->setFocus();
        QTRY_VERIFY(m_edit->hasFocus());

        m_card = new CustomNotification(m_main.get());
        m_icon = m_card->findChild<QLabel *>(QStringLiteral("iconLabel"));
        m_title = m_card->findChild<QLabel *>(QStringLiteral("titleLabel"));
        m_message = m_card->findChild<QLabel *>(QStringLiteral("messageLabel"));
        m_close = m_card->findChild<QPushButton *>(QStringLiteral("closeButton"));
        m_timer = m_card->findChild<QTimer *>(QStringLiteral("autoHideTimer"));
        m_fade = m_card->findChild<QPropertyAnimation *>(QStringLiteral("fadeAnimation"));
        QVERIFY(m_icon && m_title && m_message && m_close && m_timer && m_fade);
    }

    void cleanup() { m_main.reset(); }

    void theCardIsAFramelessToolAboveAllThatDoesNotActivate()
    {
        QVERIFY(m_card->isWindow());
        QCOMPARE(m_card->windowFlags() & Qt::WindowType_Mask, Qt::WindowFlags(Qt::Tool));
        QVERIFY(m_card->windowFlags().testFlag(Qt::FramelessWindowHint));
        QVERIFY(m_card->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        QVERIFY(m_card->testAttribute(Qt::WA_TranslucentBackground));
        QVERIFY(m_card->testAttribute(Qt::WA_ShowWithoutActivating));
        show(shortTitle);
        QTRY_VERIFY(windowState().contains("_NET_WM_STATE_ABOVE"));
        QVERIFY(!m_card->isHidden());
    }

    void theWidgetsAreAsDesigned()
    {
        QCOMPARE(m_icon->size(), QSize(24, 24));
        QVERIFY(m_icon->hasScaledContents());
        QCOMPARE(m_icon->pixmap(Qt::ReturnByValue).toImage(),
                 QPixmap(QStringLiteral(":/images/keyword.png")).toImage());
        QCOMPARE(m_title->font().pointSize(), 10);
        QCOMPARE(m_title->font().weight(), 75);
        QCOMPARE(m_title->styleSheet(), QStringLiteral("color: #333333;"));
        QCOMPARE(m_close->text(), QStringLiteral("×"));
        QCOMPARE(m_close->size(), QSize(20, 20));
        QCOMPARE(m_close->cursor().shape(), Qt::PointingHandCursor);
        QCOMPARE(
            m_close->styleSheet(),
            QStringLiteral("QPushButton {   border: none;   background: transparent;   color: #666666;"
                           "   font-size: 18px;   font-weight: bold;}QPushButton:hover {   color: #333333;"
                           "   background: #E0E0E0;   border-radius: 3px;}"));
        QCOMPARE(m_message->alignment(), Qt::AlignLeft | Qt::AlignTop);
        QCOMPARE(m_message->contentsMargins(), QMargins());
        QCOMPARE(m_message->margin(), 0);
        QCOMPARE(m_message->textFormat(), Qt::PlainText);
        QCOMPARE(m_message->font().pointSize(), 13);
        QCOMPARE(m_message->styleSheet(), QStringLiteral("color: #000000; padding: 0px;"));
        QVERIFY(m_message->wordWrap());
        QCOMPARE(m_message->textInteractionFlags(), Qt::TextInteractionFlags(Qt::TextSelectableByMouse));
        QVERIFY(m_timer->isSingleShot());
        QCOMPARE(m_fade->duration(), 300);
        QCOMPARE(m_fade->startValue().toDouble(), 1.0);
        QCOMPARE(m_fade->endValue().toDouble(), 0.0);
        QCOMPARE(m_fade->propertyName(), QByteArrayLiteral("windowOpacity"));
    }

    void theWidgetsLieInTheirOrder()
    {
        const auto *card = qobject_cast<QVBoxLayout *>(m_card->layout());
        QVERIFY(card);
        QCOMPARE(card->contentsMargins(), QMargins(15, 6, 15, 6));
        QCOMPARE(card->spacing(), 3);
        QCOMPARE(card->count(), 2);
        QCOMPARE(card->itemAt(1)->widget(), m_message);

        const auto *row = qobject_cast<QHBoxLayout *>(card->itemAt(0)->layout());
        QVERIFY(row);
        QCOMPARE(row->contentsMargins(), QMargins(0, 0, 0, 0));
        QCOMPARE(row->spacing(), 16);
        QCOMPARE(row->count(), 4);
        QCOMPARE(row->itemAt(0)->widget(), m_icon);
        QCOMPARE(row->itemAt(1)->widget(), m_title);
        QVERIFY(row->itemAt(2)->spacerItem());
        QVERIFY(row->itemAt(2)->expandingDirections().testFlag(Qt::Horizontal));
        QCOMPARE(row->itemAt(3)->widget(), m_close);
    }

    void theCardBeginsUnderTheProgramsName()
    {
        QCOMPARE(m_title->text(), QStringLiteral("Larkspire"));
        QCOMPARE(m_message->text(), QString());
    }

    void anEmptyTitleShowsTheProgramsName_data()
    {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QString>("shown");
        QTest::newRow("empty") << QString() << QStringLiteral("Larkspire");
        QTest::newRow("given") << QStringLiteral("关键词") << QStringLiteral("关键词");
    }

    void anEmptyTitleShowsTheProgramsName()
    {
        QFETCH(QString, title);
        m_card->showNotification(title, shortTitle, longMs);
        QTEST(m_title->text(), "shown");
        QCOMPARE(m_message->text(), shortTitle);
    }

    void theCardDoesNotTakeTheFocus()
    {
        show(shortTitle);
        m_card->showNotification(QString(), longTitle, longMs);
        // A key of the real keyboard goes where the focus is.
        xdotool({QStringLiteral("key"), QStringLiteral("7")});
        QTRY_COMPARE(m_edit->text(), QStringLiteral("7"));
        QCOMPARE(QApplication::activeWindow(), m_main.get());

        // Nor when it comes up again after it has gone.
        m_card->fadeOut();
        QTRY_VERIFY(m_card->isHidden());
        show(shortTitle);
        xdotool({QStringLiteral("key"), QStringLiteral("8")});
        QTRY_COMPARE(m_edit->text(), QStringLiteral("78"));
        QCOMPARE(QApplication::activeWindow(), m_main.get());
    }

    void theCardShowsWhateverBecameOfTheMainWindow_data()
    {
        QTest::addColumn<bool>("minimised");
        QTest::newRow("hidden to the tray") << false;
        QTest::newRow("minimised") << true;
    }

    void theCardShowsWhateverBecameOfTheMainWindow()
    {
        QFETCH(bool, minimised);
        if (minimised)
            m_main->showMinimized();
        else
            m_main->hide();
        QTRY_VERIFY(!m_main->windowHandle()->isExposed());
        m_card->showNotification(QString(), shortTitle, longMs);
        QVERIFY(QTest::qWaitForWindowExposed(m_card));
        QTRY_COMPARE(colourOnScreen(m_card->geometry().center() - QPoint(0, m_card->height() / 2 - 3)),
                     QColor(0xD9, 0xDB, 0xDC));
    }

    void theCardStandsWhereItsNameSays_data()
    {
        QTest::addColumn<QString>("position");
        for (const char *name :
             {"top_left", "top_center", "top_right", "center", "one_fifth", "one_third", "bottom_one_third",
              "bottom_one_fifth", "bottom_left", "bottom_center", "bottom_right", "nowhere", ""})
            QTest::newRow(name) << QString::fromLatin1(name);
    }

    void theCardStandsWhereItsNameSays()
    {
        QFETCH(QString, position);
        m_card->setPosition(position);
        show(longTitle);
        const QScreen *screen = QGuiApplication::primaryScreen();
        const QPoint expected = NotificationPlacing::topLeft(position, screen->availableGeometry(),
                                                             screen->geometry(), m_card->size());
        QCOMPARE(m_card->geometry().topLeft(), expected);
        QTRY_COMPARE(placeOnScreen(), expected); // and the window manager has left it there
    }

    void theBottomRightIsTheDefault()
    {
        show(shortTitle);
        const QRect area = QGuiApplication::primaryScreen()->availableGeometry();
        QCOMPARE(m_card->geometry().topLeft(),
                 QPoint(area.right() - 20 - 640, area.bottom() - 20 - m_card->height()));
    }

    void theCardIsAsHighAsItsText_data()
    {
        QTest::addColumn<QString>("message");
        QTest::newRow("short") << shortTitle;
        QTest::newRow("long") << longTitle;
        QTest::newRow("mixed scripts")
            << QStringLiteral("Apple 发布 iOS 26，涨幅 +3.25%，成交额 1,234.56 亿元 🚀 ").repeated(6);
        QTest::newRow("one word without end") << QString(400, QLatin1Char('w'));
        QTest::newRow("empty") << QString();
    }

    void theCardIsAsHighAsItsText()
    {
        QFETCH(QString, message);
        show(message);
        const QFontMetrics metrics(m_message->font());
        const int textHeight = metrics
                                   .boundingRect(QRect(0, 0, 610, 10000),
                                                 Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, message)
                                   .height();
        QCOMPARE(m_card->size(), QSize(640, textHeight + 52));
        QCOMPARE(m_message->size(), QSize(610, textHeight + 5));
        QCOMPARE(m_card->minimumSize(), QSize(210, textHeight + 52));
        QCOMPARE(m_card->maximumSize(), QSize(640, textHeight + 52));
    }

    void noLineOfALongTitleIsCut()
    {
        show(longTitle.repeated(4));
        const int given = m_message->height();
        m_message->setMinimumHeight(0);
        m_message->setMaximumHeight(QWIDGETSIZE_MAX);
        QVERIFY2(m_message->heightForWidth(610) <= given,
                 qPrintable(QStringLiteral("%1 of %2").arg(given).arg(m_message->heightForWidth(610))));
    }

    void aVeryLongTextStopsAt800()
    {
        show(longTitle.repeated(40));
        QCOMPARE(m_card->size(), QSize(640, 800));
        QCOMPARE(m_message->height(), 753);
        QCOMPARE(m_message->minimumHeight(), 753);
        QCOMPARE(m_message->maximumHeight(), 753);

        // The next one is as small as ever.
        m_card->showNotification(QString(), shortTitle, longMs);
        QVERIFY(m_card->height() < 100);
        QTRY_COMPARE(m_message->height(), m_card->height() - 47);
    }

    void theCardGoesByItselfWhenItsTimeIsUp()
    {
        QSignalSpy clicked(m_card, &CustomNotification::notificationClicked);
        QSignalSpy finished(m_fade, &QPropertyAnimation::finished);
        m_card->showNotification(QString(), shortTitle, 200);
        QCOMPARE(m_timer->interval(), 200);
        QVERIFY(finished.wait());
        QVERIFY(m_card->isHidden());
        QCOMPARE(m_title->text(), QString());
        QCOMPARE(m_message->text(), QString());
        QCOMPARE(clicked.size(), 0);
    }

    void theCardFadesFromOpaqueToClear()
    {
        show(shortTitle);
        QCOMPARE(m_card->windowOpacity(), 1.0);
        QVector<double> opacities;
        connect(m_fade, &QPropertyAnimation::valueChanged, m_card,
                [&opacities](const QVariant &value) { opacities.append(value.toDouble()); });
        m_card->fadeOut();
        QVERIFY(!m_timer->isActive());
        QTRY_VERIFY(m_card->isHidden());
        QVERIFY(!opacities.isEmpty());
        QVERIFY(std::is_sorted(opacities.rbegin(), opacities.rend()));
        QCOMPARE(opacities.last(), 0.0);
    }

    void aSecondPopupDuringTheFadeIsOpaqueAgainAndHasItsWholeTime()
    {
        show(shortTitle);
        QSignalSpy finished(m_fade, &QPropertyAnimation::finished);
        m_fade->setDuration(longMs);
        m_card->fadeOut();
        m_fade->setCurrentTime(longMs / 2);
        QVERIFY(m_card->windowOpacity() < 0.6);
        m_card->showNotification(QStringLiteral("新"), longTitle, 5000);
        QCOMPARE(m_card->windowOpacity(), 1.0);
        QCOMPARE(m_fade->state(), QAbstractAnimation::Stopped);
        QVERIFY(m_card->isVisible());
        QCOMPARE(m_title->text(), QStringLiteral("新"));
        QCOMPARE(m_message->text(), longTitle);
        QVERIFY(m_timer->isActive());
        QCOMPARE(m_timer->interval(), 5000);
        QVERIFY(m_timer->remainingTime() > 4000);
        QCOMPARE(finished.size(), 0);
    }

    void aCardThatHasGoneComesBackOpaque()
    {
        show(shortTitle);
        m_card->fadeOut();
        QTRY_VERIFY(m_card->isHidden());
        QCOMPARE(m_card->windowOpacity(), 0.0);
        show(longTitle);
        QCOMPARE(m_card->windowOpacity(), 1.0);
        QCOMPARE(m_message->text(), longTitle);
    }

    void theMouseHoldsTheCardAndLetsItGoOneSecondAfterItLeft()
    {
        show(shortTitle);
        QSignalSpy clicked(m_card, &CustomNotification::notificationClicked);
        moveMouse(m_card->geometry().center());
        QTRY_VERIFY(!m_timer->isActive());
        m_card->onAutoHideTimer(); // it knows that the mouse is there
        QCOMPARE(m_fade->state(), QAbstractAnimation::Stopped);
        // Going from the card to a child of it is no leaving.
        moveMouse(centreOnScreen(m_message));
        moveMouse(centreOnScreen(m_icon));
        QTRY_VERIFY(m_icon->underMouse());
        QVERIFY(!m_timer->isActive());

        parkMouse();
        QTRY_VERIFY(m_timer->isActive());
        QCOMPARE(m_timer->interval(), 1000);
        QTRY_VERIFY(m_card->isHidden());
        QCOMPARE(clicked.size(), 0);
    }

    void withoutTheMouseTheUnconnectedSlotStartsTheFade()
    {
        show(shortTitle);
        m_card->onAutoHideTimer();
        QCOMPARE(m_fade->state(), QAbstractAnimation::Running);
    }

    void theTimerIsConnectedToTheFadeItself()
    {
        m_card->showNotification(QString(), shortTitle, longMs);
        // Held by a mouse, and the timer runs out all the same: it does not ask.
        QEvent enter(QEvent::Enter);
        QApplication::sendEvent(m_card, &enter);
        m_timer->start(0);
        QTRY_COMPARE(m_fade->state(), QAbstractAnimation::Running);
    }

    void aSecondPopupUnderTheMouseIsNotHeld()
    {
        show(shortTitle);
        moveMouse(m_card->geometry().center());
        QTRY_VERIFY(!m_timer->isActive());
        m_card->showNotification(QString(), QStringLiteral("证监会：坚持稳中求进"), 5000);
        QVERIFY(m_timer->isActive());
        QCOMPARE(m_timer->interval(), 5000);

        // Only an enter holds the card; the next movement is none.
        moveMouse(m_card->geometry().center() + QPoint(40, 0));
        QTRY_COMPARE(QCursor::pos(), m_card->geometry().center() + QPoint(40, 0));
        QVERIFY(m_timer->isActive());
        m_card->onAutoHideTimer();
        QCOMPARE(m_fade->state(), QAbstractAnimation::Running);
    }

    void aMouseThatLeavesAFadingCardChangesNothing()
    {
        show(shortTitle);
        m_fade->setDuration(longMs);
        moveMouse(m_card->geometry().center());
        QTRY_VERIFY(!m_timer->isActive());
        m_card->fadeOut();
        parkMouse();
        QTRY_VERIFY(!m_card->underMouse());
        QVERIFY(!m_timer->isActive());
        QCOMPARE(m_fade->state(), QAbstractAnimation::Running);
    }

    void aMouseThatHasLeftHoldsNothing()
    {
        show(shortTitle);
        QEvent enter(QEvent::Enter);
        QApplication::sendEvent(m_card, &enter);
        m_card->onAutoHideTimer();
        QCOMPARE(m_fade->state(), QAbstractAnimation::Stopped);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(m_card, &leave);
        QCOMPARE(m_timer->interval(), 1000);
        m_card->onAutoHideTimer();
        QCOMPARE(m_fade->state(), QAbstractAnimation::Running);
    }

    void aMouseThatLeavesACardWhoseTimeRunsLeavesItThat()
    {
        m_card->showNotification(QString(), shortTitle, 5000);
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(m_card, &leave);
        QCOMPARE(m_timer->interval(), 5000);
    }

    void aMouseThatLeavesAHiddenCardChangesNothing()
    {
        QEvent leave(QEvent::Leave);
        QApplication::sendEvent(m_card, &leave);
        QVERIFY(!m_timer->isActive());
    }

    void aClickOnTheCardIsReportedOnceAndFadesIt()
    {
        show(shortTitle);
        QSignalSpy clicked(m_card, &CustomNotification::notificationClicked);
        click(m_card->mapToGlobal(QPoint(300, m_title->geometry().center().y())), 1);
        QTRY_COMPARE(clicked.size(), 1);
        QVERIFY(!m_timer->isActive());
        QTRY_VERIFY(m_card->isHidden());
        QCOMPARE(clicked.size(), 1);
    }

    void aClickWithAnotherButtonIsNotReported()
    {
        show(shortTitle);
        QSignalSpy clicked(m_card, &CustomNotification::notificationClicked);
        click(m_card->mapToGlobal(QPoint(300, m_title->geometry().center().y())), 3);
        click(centreOnScreen(m_title), 2);
        click(centreOnScreen(m_title), 1); // the left one comes last, and it alone counts
        QTRY_COMPARE(clicked.size(), 1);
        QTRY_VERIFY(m_card->isHidden());
        QCOMPARE(clicked.size(), 1);
    }

    void aClickOnTheTextSelectsItAndIsReported()
    {
        show(shortTitle);
        m_fade->setDuration(longMs);
        QSignalSpy clicked(m_card, &CustomNotification::notificationClicked);
        QWindow *window = m_card->windowHandle();
        const QPoint start = m_message->geometry().topLeft() + QPoint(1, m_message->height() / 2);
        QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, start);
        QCOMPARE(clicked.size(), 1);
        QCOMPARE(m_fade->state(), QAbstractAnimation::Running);
        QTest::mouseMove(window, start + QPoint(80, 0));
        QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, start + QPoint(80, 0));
        QVERIFY(m_message->hasSelectedText());
        QVERIFY(shortTitle.startsWith(m_message->selectedText()));
        QCOMPARE(clicked.size(), 1);
    }

    void aRealClickOnTheTextIsReportedToo()
    {
        show(longTitle);
        QSignalSpy clicked(m_card, &CustomNotification::notificationClicked);
        click(centreOnScreen(m_message), 1);
        QTRY_COMPARE(clicked.size(), 1);
        QTRY_VERIFY(m_card->isHidden());
    }

    void theCloseButtonFadesWithoutAReport()
    {
        show(shortTitle);
        QSignalSpy clicked(m_card, &CustomNotification::notificationClicked);
        click(centreOnScreen(m_close), 1);
        QTRY_VERIFY(m_card->isHidden());
        QCOMPARE(clicked.size(), 0);
    }

    void theCloseSlotFades()
    {
        show(shortTitle);
        m_card->onCloseButtonClicked();
        QCOMPARE(m_fade->state(), QAbstractAnimation::Running);
        QVERIFY(!m_timer->isActive());
    }

    void theCardLooksTheSameInBothSkins()
    {
        show(longTitle);
        const QImage light = m_card->grab().toImage();
        QApplication::setPalette(MainWindowSkin::darkPalette());
        qApp->setStyleSheet(MainWindowSkin::darkStyleSheet());
        m_card->showNotification(QString(), longTitle, longMs);
        const QImage dark = m_card->grab().toImage();
        qApp->setStyleSheet(QString());
        QApplication::setPalette(m_lightPalette);
        QCOMPARE(dark, light);
    }

    void theCardIsRoundedAndGrey()
    {
        show(shortTitle);
        const QImage card = m_card->grab().toImage();
        const int middle = card.width() / 2;
        QCOMPARE(card.pixelColor(0, 0).alpha(), 0);
        QCOMPARE(card.pixelColor(middle, 0), QColor(200, 200, 200));
        QCOMPARE(card.pixelColor(middle, 3), QColor(0xD9, 0xDB, 0xDC));
        QCOMPARE(card.pixelColor(3, card.height() / 2), QColor(0xD9, 0xDB, 0xDC));
        // The arc of the corner has a radius of 12: it runs right through this pixel.
        m_card->clearMask();
        const int cut = m_card->grab().toImage().pixelColor(3, 3).alpha();
        QVERIFY2(cut > 80 && cut < 150, qPrintable(QString::number(cut)));
    }

    void whatIsBehindShowsInTheCornersWithoutACompositor()
    {
        QWidget behind(nullptr, Qt::FramelessWindowHint);
        behind.setStyleSheet(QStringLiteral("background: #ff0000;"));
        const QRect screen = QGuiApplication::primaryScreen()->geometry();
        behind.setGeometry(screen.adjusted(screen.width() / 2, screen.height() / 2, 0, 0));
        behind.show();
        QVERIFY(QTest::qWaitForWindowExposed(&behind));
        show(shortTitle);
        const QRect card = m_card->geometry();
        QTRY_COMPARE(colourOnScreen(card.center() - QPoint(0, card.height() / 2 - 3)),
                     QColor(0xD9, 0xDB, 0xDC));
        for (const QPoint &corner : {card.topLeft(), card.topRight(), card.bottomLeft(), card.bottomRight()})
            QTRY_COMPARE(colourOnScreen(corner), QColor(Qt::red));
    }

    void aCardCanGoInTheMiddleOfItsFade()
    {
        show(shortTitle);
        m_card->fadeOut();
        QCOMPARE(m_fade->state(), QAbstractAnimation::Running);
        delete m_card;
        m_card = nullptr;
    }

private:
    void show(const QString &message)
    {
        m_card->showNotification(QString(), message, longMs);
        QVERIFY(QTest::qWaitForWindowExposed(m_card));
        QTRY_COMPARE(placeOnScreen(), m_card->geometry().topLeft());
    }

    static QByteArray output(const QString &program, const QStringList &arguments)
    {
        QProcess process;
        process.start(program, arguments);
        if (!process.waitForFinished() || process.exitCode() != 0)
            qWarning("%s: %s", qPrintable(program), process.readAllStandardError().constData());
        return process.readAllStandardOutput();
    }

    static QByteArray xdotool(const QStringList &arguments)
    {
        return output(QStringLiteral("xdotool"), arguments);
    }

    static void moveMouse(const QPoint &place)
    {
        xdotool({QStringLiteral("mousemove"), QString::number(place.x()), QString::number(place.y())});
    }

    static void parkMouse() { moveMouse({3, 500}); }

    static void click(const QPoint &place, int button)
    {
        moveMouse(place);
        xdotool({QStringLiteral("click"), QString::number(button)});
    }

    static QPoint centreOnScreen(const QWidget *widget)
    {
        return widget->mapToGlobal(widget->rect().center());
    }

    static QColor colourOnScreen(const QPoint &place)
    {
        return QGuiApplication::primaryScreen()
            ->grabWindow(0, place.x(), place.y(), 1, 1)
            .toImage()
            .pixelColor(0, 0);
    }

    // Where the X server has the card.
    QPoint placeOnScreen() const
    {
        const QByteArray shell = xdotool({QStringLiteral("getwindowgeometry"), QStringLiteral("--shell"),
                                          QString::number(m_card->winId())});
        QPoint place;
        for (const QByteArray &line : shell.split('\n')) {
            if (line.startsWith("X="))
                place.setX(line.mid(2).toInt());
            else if (line.startsWith("Y="))
                place.setY(line.mid(2).toInt());
        }
        return place;
    }

    QByteArray windowState() const
    {
        return output(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(m_card->winId()),
                                                QStringLiteral("_NET_WM_STATE")});
    }

    QPalette m_lightPalette;
    std::unique_ptr<QWidget> m_main;
    QLineEdit *m_edit = nullptr;
    CustomNotification *m_card = nullptr;
    QLabel *m_icon = nullptr;
    QLabel *m_title = nullptr;
    QLabel *m_message = nullptr;
    QPushButton *m_close = nullptr;
    QTimer *m_timer = nullptr;
    QPropertyAnimation *m_fade = nullptr;
};

LARKSPIRE_TEST_MAIN(TestCustomNotification)

#include "tst_customnotification.moc"
