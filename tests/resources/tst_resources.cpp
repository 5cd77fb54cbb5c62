#include "resources/LarkspireResources.h"
#include "support/IsolatedHome.h"

#include <QDirIterator>
#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QImageReader>
#include <QtEndian>

namespace {

const QColor accent(0x00, 0xD4, 0xAA);
const QColor slate(0x2C, 0x2F, 0x33);
const QColor grey(0x7A, 0x82, 0x88);

// Pixels of the image that are opaque and of about this colour: anti-aliased edges are left out.
int pixelsOf(const QImage &image, const QColor &colour)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            if (pixel.alpha() == 255 && qAbs(pixel.red() - colour.red()) <= 8 &&
                qAbs(pixel.green() - colour.green()) <= 8 && qAbs(pixel.blue() - colour.blue()) <= 8)
                ++count;
        }
    }
    return count;
}

} // namespace

class TestResources : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { initLarkspireResources(); }

    void everyResourceCanBeRead_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("icon of the program") << QStringLiteral(":/icons/app.ico");
        QTest::newRow("picture of a popup") << QStringLiteral(":/images/keyword.png");
        QTest::newRow("picture of an alert") << QStringLiteral(":/images/alert.png");
        QTest::newRow("picture on the user card") << QStringLiteral(":/images/user_pro.png");
        QTest::newRow("code of the customer service") << QStringLiteral(":/images/wxqrcode.png");
        QTest::newRow("chime") << QStringLiteral(":/media/tip.wav");
    }

    void everyResourceCanBeRead()
    {
        QFETCH(QString, path);
        QFile file(path);
        QVERIFY2(file.open(QIODevice::ReadOnly), qPrintable(file.errorString()));
        QVERIFY(!file.readAll().isEmpty());
    }

    void everyCompiledInPictureCanBeDecoded()
    {
        int pictures = 0;
        for (const char *folder : {":/icons", ":/images"}) {
            QDirIterator files(QString::fromLatin1(folder), QDir::Files);
            while (files.hasNext()) {
                QImageReader reader(files.next());
                QVERIFY2(!reader.read().isNull(), qPrintable(files.filePath() + reader.errorString()));
                ++pictures;
            }
        }
        QVERIFY(pictures >= 3);
    }

    void aSecondInitialisationChangesNothing()
    {
        initLarkspireResources();
        QVERIFY(QFile::exists(QStringLiteral(":/icons/app.ico")));
    }

    void theProgramsIconHoldsEverySize_data()
    {
        QTest::addColumn<int>("size");
        for (const int size : {16, 20, 24, 32, 40, 48, 64, 128, 256})
            QTest::addRow("%d", size) << size;
    }

    void theProgramsIconHoldsEverySize()
    {
        QFETCH(int, size);
        QImageReader reader(QStringLiteral(":/icons/app.ico"));
        QCOMPARE(reader.format(), QByteArrayLiteral("ico"));
        QCOMPARE(reader.imageCount(), 9);
        QImage image;
        for (int i = 0; i < reader.imageCount(); ++i) {
            QVERIFY(reader.jumpToImage(i));
            const QImage candidate = reader.read();
            QVERIFY2(!candidate.isNull(), qPrintable(reader.errorString()));
            if (candidate.size() == QSize(size, size))
                image = candidate;
        }
        QVERIFY(!image.isNull());
        // A rounded slate tile with the lark in the accent: at no size does either drown in the other.
        QCOMPARE(image.pixelColor(0, 0).alpha() < 128, true);
        QCOMPARE(image.pixelColor(size / 2, size - 1).alpha(), 255);
        const int area = size * size;
        QVERIFY2(pixelsOf(image, slate) > area / 4, qPrintable(QString::number(pixelsOf(image, slate))));
        QVERIFY2(pixelsOf(image, accent) > area / 20, qPrintable(QString::number(pixelsOf(image, accent))));
    }

    void aTrayGetsTheIconAtItsOwnSize()
    {
        const QIcon icon(QStringLiteral(":/icons/app.ico"));
        QList<QSize> sizes = icon.availableSizes();
        QCOMPARE(sizes.size(), 9);
        for (const int size : {16, 20, 24, 32, 48})
            QCOMPARE(icon.actualSize(QSize(size, size)), QSize(size, size));
    }

    void aPictureIsSharpAtTwiceItsSizeAndOfTheHousesColours_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("keyword") << QStringLiteral(":/images/keyword.png");
        QTest::newRow("alert") << QStringLiteral(":/images/alert.png");
    }

    void aPictureIsSharpAtTwiceItsSizeAndOfTheHousesColours()
    {
        QFETCH(QString, path);
        const QImage image(path);
        QVERIFY(image.width() >= 48);
        QCOMPARE(image.height(), image.width());
        QVERIFY(image.hasAlphaChannel());
        QCOMPARE(image.pixelColor(0, 0).alpha(), 0);
        const int greyPixels = pixelsOf(image, grey);
        const int accentPixels = pixelsOf(image, accent);
        QVERIFY(greyPixels > 0);
        QVERIFY(accentPixels > 0);
        QVERIFY2(accentPixels < greyPixels, "the accent marks one thing only");
    }

    void theChimeIsTwoSecondsOfStereo()
    {
        QFile file(QStringLiteral(":/media/tip.wav"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray data = file.readAll();
        QCOMPARE(data.size(), 347552);
        QCOMPARE(data.left(4), QByteArrayLiteral("RIFF"));
        QCOMPARE(data.mid(8, 8), QByteArrayLiteral("WAVEfmt "));
        const char *bytes = data.constData();
        QCOMPARE(int(qFromLittleEndian<quint16>(bytes + 20)), 1);     // PCM
        QCOMPARE(int(qFromLittleEndian<quint16>(bytes + 22)), 2);     // channels
        QCOMPARE(int(qFromLittleEndian<quint32>(bytes + 24)), 44100); // frames in a second
        QCOMPARE(int(qFromLittleEndian<quint16>(bytes + 34)), 16);    // bits of a sample

        // It begins and ends in silence, so that it never clicks, and it is never clipped.
        int peak = 0;
        for (int at = 44; at + 2 <= data.size(); at += 2)
            peak = qMax(peak, qAbs(int(qFromLittleEndian<qint16>(bytes + at))));
        QVERIFY2(peak > 8000 && peak < 30000, qPrintable(QString::number(peak)));
        QVERIFY(qAbs(int(qFromLittleEndian<qint16>(bytes + 44))) < 50);
        QVERIFY(qAbs(int(qFromLittleEndian<qint16>(bytes + data.size() - 2))) < 50);
    }
};

LARKSPIRE_TEST_MAIN_WITH(QGuiApplication, TestResources)

#include "tst_resources.moc"
