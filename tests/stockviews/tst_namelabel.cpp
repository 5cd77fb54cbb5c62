#include "stockviews/NameLabel.h"
#include "support/IsolatedHome.h"
#include "support/WindowInput.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QImage>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QTextDocument>
#include <QToolTip>
#include <QtTest>

#include <memory>

namespace {

constexpr int lineHeight = 30;

/// Two links with a word in between.
QString line(const QString &first, const QString &second)
{
    return QStringLiteral("<a href=\"first\" style=\"color: black; font-size: 14pt;\">%1</a> 和 "
                          "<a href=\"second\" style=\"color: black; font-size: 14pt;\">%2</a>")
        .arg(first, second);
}

} // namespace

class TestNameLabel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void lineThatFitsIsWrittenInFullSize();
    void longLineIsWrittenSmallerAsAWhole();
    void linksAreWhereTheyAreSeen_data();
    void linksAreWhereTheyAreSeen();
    void pressGoesOnToThePage();
    void lineThatIsTooLongEvenSoStandsInAToolTip();
    void toolTipIsNoMarkup();
    void ownToolTipIsShownFirst();
    void aLongTextTakesNoRoomOfItsNeighbours();
    void badgeHasRoomAndRoundCorners();
    void plateLiesBehindTheLinkAlone_data();
    void plateLiesBehindTheLinkAlone();

private:
    /// The columns from the first to the last that something is written in.
    int writtenWidth() const;
    int writtenHeight() const;
    QString toolTipShown() const;

    std::unique_ptr<QWidget> m_window;
    NameLabel *m_label = nullptr;
};

void TestNameLabel::init()
{
    m_window = std::make_unique<QWidget>();
    m_window->resize(500, 100);
    m_window->setStyleSheet(QStringLiteral("background-color: white; color: black;"));
    m_label = new NameLabel(m_window.get());
    QFont font = m_label->font();
    font.setPointSize(14);
    m_label->setFont(font);
    m_label->setGeometry(0, 20, 400, lineHeight);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TestNameLabel::cleanup()
{
    m_window.reset();
}

int TestNameLabel::writtenWidth() const
{
    const QImage image = m_label->grab().toImage();
    int last = -1;
    for (int x = 0; x < image.width(); ++x) {
        for (int y = 0; y < image.height(); ++y) {
            if (qGray(image.pixel(x, y)) < 160)
                last = x;
        }
    }
    return last + 1;
}

int TestNameLabel::writtenHeight() const
{
    const QImage image = m_label->grab().toImage();
    int first = image.height();
    int last = -1;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (qGray(image.pixel(x, y)) < 160) {
                first = qMin(first, y);
                last = y;
            }
        }
    }
    return last - first + 1;
}

QString TestNameLabel::toolTipShown() const
{
    const QPoint place = m_label->rect().center();
    QHelpEvent event(QEvent::ToolTip, place, m_label->mapToGlobal(place));
    QApplication::sendEvent(m_label, &event);
    return QToolTip::isVisible() ? QToolTip::text() : QString();
}

void TestNameLabel::lineThatFitsIsWrittenInFullSize()
{
    m_label->setText(line(QStringLiteral("贵州茅台"), QStringLiteral("平安银行")));
    const int width = writtenWidth();
    QVERIFY(width > 100);
    QVERIFY(width < 400);
    m_label->resize(499, lineHeight);
    QCOMPARE(writtenWidth(), width);
    QCOMPARE(toolTipShown(), QString());
}

void TestNameLabel::longLineIsWrittenSmallerAsAWhole()
{
    m_label->setText(line(QStringLiteral("贵州茅台"), QStringLiteral("平安银行")));
    const int width = writtenWidth();
    const int height = writtenHeight();
    const int narrow = width * 7 / 10;
    m_label->resize(narrow, lineHeight);
    const int fitted = writtenWidth();
    QVERIFY2(fitted <= narrow && fitted > narrow * 9 / 10, qPrintable(QString::number(fitted)));
    QVERIFY(writtenHeight() < height * 8 / 10);
    QCOMPARE(toolTipShown(), QString());
}

void TestNameLabel::linksAreWhereTheyAreSeen_data()
{
    QTest::addColumn<int>("percent"); // of the width that the line needs

    QTest::newRow("in full size") << 120;
    QTest::newRow("smaller") << 70;
}

void TestNameLabel::linksAreWhereTheyAreSeen()
{
    QFETCH(int, percent);
    m_label->setText(line(QStringLiteral("贵州茅台"), QStringLiteral("平安银行")));
    const int needed = writtenWidth();
    m_label->resize(needed * percent / 100, lineHeight);
    const int written = writtenWidth();
    const QSignalSpy activated(m_label, &QLabel::linkActivated);
    WindowInput::clickAt(m_label, QPoint(8, lineHeight / 2));
    WindowInput::clickAt(m_label, QPoint(written / 2, lineHeight / 2));
    WindowInput::clickAt(m_label, QPoint(written - 8, lineHeight / 2));
    QCOMPARE(activated.size(), 2);
    QCOMPARE(activated.first().first().toString(), QStringLiteral("first"));
    QCOMPARE(activated.last().first().toString(), QStringLiteral("second"));
}

void TestNameLabel::pressGoesOnToThePage()
{
    // Which drags the window by it.
    m_label->setText(line(QStringLiteral("贵州茅台"), QStringLiteral("平安银行")));
    m_label->resize(writtenWidth() * 7 / 10, lineHeight);
    for (const int x : {8, m_label->width() / 2}) {
        QMouseEvent press(QEvent::MouseButtonPress, QPointF(x, lineHeight / 2.0), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(m_label, &press);
        QVERIFY(!press.isAccepted());
    }
}

void TestNameLabel::lineThatIsTooLongEvenSoStandsInAToolTip()
{
    m_label->setText(line(QStringLiteral("贵州茅台"), QStringLiteral("平安银行")));
    m_label->resize(writtenWidth() / 3, lineHeight);
    QCOMPARE(toolTipShown(), QStringLiteral("贵州茅台 和 平安银行"));
}

void TestNameLabel::toolTipIsNoMarkup()
{
    m_label->setText(line(QStringLiteral("AT&amp;T &gt; 5"), QStringLiteral("平安银行")));
    m_label->resize(writtenWidth() / 3, lineHeight);
    QCOMPARE(toolTipShown(), QStringLiteral("AT&T > 5 和 平安银行"));
    m_label->setText(line(QStringLiteral("&lt;b&gt;贵州茅台&lt;/b&gt;"), QStringLiteral("平安银行")));
    QTextDocument seen;
    seen.setHtml(toolTipShown());
    QCOMPARE(seen.toPlainText(), QStringLiteral("<b>贵州茅台</b> 和 平安银行"));
}

void TestNameLabel::ownToolTipIsShownFirst()
{
    m_label->setText(line(QStringLiteral("贵州茅台"), QStringLiteral("平安银行")));
    m_label->resize(writtenWidth() / 3, lineHeight);
    m_label->setToolTip(QStringLiteral("已在黑名单中"));
    QCOMPARE(toolTipShown(), QStringLiteral("已在黑名单中"));
}

void TestNameLabel::aLongTextTakesNoRoomOfItsNeighbours()
{
    auto *row = new QHBoxLayout(m_window.get());
    auto *neighbour = new QPushButton(QStringLiteral("黑"), m_window.get());
    row->addWidget(m_label, 1);
    row->addWidget(neighbour);
    m_label->setText(line(QStringLiteral("贵"), QStringLiteral("平")));
    row->activate();
    const QRect place = neighbour->geometry();
    m_label->setText(
        line(QStringLiteral("贵州茅台贵州茅台贵州茅台"), QStringLiteral("平安银行平安银行平安银行")));
    row->activate();
    QCOMPARE(neighbour->geometry(), place);
    QCOMPARE(m_window->width(), 500);
}

void TestNameLabel::badgeHasRoomAndRoundCorners()
{
    const QColor red(0xE7, 0x4C, 0x3C);
    m_label->setText(QStringLiteral("<a href=\"search\" style=\"color: black; font-size: 14pt;\">贵州茅台</a>"
                                    "<span style='background-color: #e74c3c; color: white; font-size: 12pt;'>"
                                    "黑名单</span> 600519"));
    const QImage image = m_label->grab().toImage();
    const auto count = [&image](int x, const QColor &color) {
        int pixels = 0;
        for (int y = 0; y < image.height(); ++y)
            pixels += image.pixelColor(x, y) == color ? 1 : 0;
        return pixels;
    };
    int first = 0;
    while (first < image.width() && count(first, red) == 0)
        ++first;
    int last = first;
    while (last + 1 < image.width() && count(last + 1, red) > 0)
        ++last;
    QVERIFY(last - first > 3 * 12);
    // Lower at its ends than behind them; columns without letters, but for the soft upper and lower edge; and
    // free ground beside it.
    QVERIFY(count(first, red) < count(first + 2, red));
    QVERIFY(count(last, red) < count(last - 2, red));
    for (const int x : {first + 2, last - 2})
        QVERIFY(count(x, red) + count(x, Qt::white) >= image.height() - 2);
    for (const int x : {first - 2, last + 2})
        QCOMPARE(count(x, Qt::white), image.height());
    // The text itself is as it was given.
    QVERIFY(!m_label->text().contains(QChar(QChar::Nbsp)));
}

void TestNameLabel::plateLiesBehindTheLinkAlone_data()
{
    QTest::addColumn<int>("percent"); // of the width that the line needs

    QTest::newRow("in full size") << 120;
    QTest::newRow("smaller") << 75;
}

void TestNameLabel::plateLiesBehindTheLinkAlone()
{
    QFETCH(int, percent);
    const QString link =
        QStringLiteral("<a href=\"search\" style=\"color: yellow; font-size: 14pt;\">贵州茅台</a>");
    m_label->setText(link + QStringLiteral(" 600519 600519"));
    QVERIFY(m_label->plateColor().isValid());
    QTextDocument line;
    line.setDocumentMargin(0);
    line.setDefaultFont(m_label->font());
    line.setHtml(m_label->text());
    const int needed = int(line.idealWidth());
    line.setHtml(link);
    const int name = int(line.idealWidth());
    m_label->resize(needed * percent / 100, lineHeight);
    // The round corners leave the first columns free.
    const QImage image = m_label->grab().toImage();
    int last = 0;
    for (int x = 0; x < image.width(); ++x) {
        if (image.pixelColor(x, 1) == m_label->plateColor())
            last = x;
    }
    const int expected = qMin(name, name * percent / 100) + 4;
    QVERIFY2(qAbs(last - expected) <= 8, qPrintable(QStringLiteral("%1, %2").arg(last).arg(expected)));
    // Without the link no plate.
    m_label->setText(QStringLiteral("600519"));
    QVERIFY(!m_label->plateColor().isValid());
}

LARKSPIRE_TEST_MAIN(TestNameLabel)
#include "tst_namelabel.moc"
