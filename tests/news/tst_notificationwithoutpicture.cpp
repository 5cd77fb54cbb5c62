#include "news/CustomNotification.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QLabel>
#include <QPixmap>

// A program that lacks the compiled-in picture of the popup.
class TestNotificationWithoutPicture : public QObject
{
    Q_OBJECT

private slots:
    void theCardShowsTheProgramsIconInstead()
    {
        QVERIFY(!QFile::exists(QStringLiteral(":/images/keyword.png")));
        QPixmap green(24, 24);
        green.fill(Qt::green);
        QApplication::setWindowIcon(QIcon(green));
        const CustomNotification card;
        const auto *icon = card.findChild<QLabel *>(QStringLiteral("iconLabel"));
        QVERIFY(icon);
        const QImage shown = icon->pixmap(Qt::ReturnByValue).toImage();
        QCOMPARE(shown.size(), QSize(24, 24));
        QCOMPARE(shown.pixelColor(12, 12), QColor(Qt::green));
    }
};

LARKSPIRE_TEST_MAIN(TestNotificationWithoutPicture)

#include "tst_notificationwithoutpicture.moc"
