#include "settings/ConfigManager.h"
#include "stockviews/ParagraphLabel.h"
#include "stockviews/ThemeStocksDialog.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QHelpEvent>
#include <QLabel>
#include <QLayout>
#include <QPointer>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTextDocument>
#include <QTimer>
#include <QToolTip>
#include <QWindow>

#include <memory>

namespace {

const QString code = QStringLiteral("002031");
const QString name = QStringLiteral("巨轮智能");
constexpr int frame = 32; // the title bar and the line around the panel

ThemeStockInfo theme(const QString &sectorName, const QString &desc)
{
    ThemeStockInfo info;
    info.stockCode = code;
    info.stockName = name;
    info.sectorName = sectorName;
    info.desc = desc;
    return info;
}

QList<ThemeStockInfo> manyThemes(int count)
{
    static const QStringList names = {
        QStringLiteral("芯片"),        QStringLiteral("人形机器人"), QStringLiteral("新能源汽车零部件"),
        QStringLiteral("AI"),          QStringLiteral("工业母机"),   QStringLiteral("一带一路与出口"),
        QStringLiteral("ChatGPT概念"), QStringLiteral("国产替代"),   QStringLiteral("低空经济"),
    };
    QList<ThemeStockInfo> themes;
    for (int i = 0; i < count; ++i)
        themes.append(
            theme(names.at(i % names.size()),
                  QStringLiteral("公司在互动平台表示，相关产品已向客户批量供货。").repeated(i % 5)));
    return themes;
}

QRect screen()
{
    return QApplication::primaryScreen()->availableGeometry();
}

} // namespace

// Runs on a real X server with a window manager.
class tst_ThemeStocksDialog : public QObject
{
    Q_OBJECT

    std::unique_ptr<ThemeStocksDialog> m_panel;

    ConfigManager *settings() const { return ConfigManager::instance(); }
    void open(const QList<ThemeStockInfo> &themes, int position = 1)
    {
        m_panel = std::make_unique<ThemeStocksDialog>(code, name, position);
        m_panel->setThemes(themes);
        m_panel->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_panel.get()));
    }
    QList<QLabel *> labels(const char *objectName) const
    {
        return m_panel->findChildren<QLabel *>(QString::fromLatin1(objectName));
    }
    QStringList texts(const char *objectName) const
    {
        QStringList result;
        for (const QLabel *label : labels(objectName))
            result.append(label->text());
        return result;
    }
    QScrollArea *area() const { return m_panel->findChild<QScrollArea *>(); }
    QWidget *content() const { return area()->widget(); }
    bool hasBar() const { return area()->verticalScrollBar()->isVisible(); }
    /// Heights of what is shown, as it is laid out.
    int sumOfCards() const
    {
        int sum = 4; // above and below
        for (int i = 0; i < content()->layout()->count() - 1; ++i)
            sum += content()->layout()->itemAt(i)->geometry().height();
        return sum;
    }
    /// Nothing is cut off: each paragraph has the height that its text needs, in a card inside the panel.
    void verifyAllTextShown() const
    {
        QCOMPARE(content()->width(), area()->viewport()->width());
        for (const char *kind : {"themeHeaderLabel", "themeNameLabel", "themeDescLabel"}) {
            for (const QLabel *label : labels(kind)) {
                QCOMPARE(label->height(), label->heightForWidth(label->width()));
                const int right = label->mapTo(m_panel.get(), QPoint(label->width(), 0)).x();
                QVERIFY(right <= m_panel->width());
            }
        }
    }

private slots:
    void init() { clearSettings(); }
    void cleanup() { m_panel.reset(); }

    void withoutConceptsThereIsTheHeadingAndAWord()
    {
        open({});
        QCOMPARE(texts("themeHeaderLabel"), QStringList(QStringLiteral("巨轮智能 002031")));
        QCOMPARE(texts("themeNothingLabel"), QStringList(QStringLiteral("暂无相关信息")));
        const QLabel *nothing = labels("themeNothingLabel").first();
        QCOMPARE(nothing->alignment(), Qt::AlignCenter);
        QVERIFY(nothing->font().bold());
        QCOMPARE(nothing->palette().color(nothing->foregroundRole()), QColor(QStringLiteral("#aaff00")));
        QVERIFY(labels("themeChip").isEmpty());
        QVERIFY(labels("themeNameLabel").isEmpty());
        QCOMPARE(m_panel->width(), 600);
        QCOMPARE(m_panel->height(), sumOfCards() + frame);
        QVERIFY(!hasBar());
        verifyAllTextShown();
    }

    void eachConceptHasAChipAndACardInItsOrder()
    {
        open({theme(QStringLiteral("机器人"), QStringLiteral("减速器已小批量供货。")),
              theme(QStringLiteral("一带一路"), QString())});
        const QStringList names{QStringLiteral("机器人"), QStringLiteral("一带一路")};
        QCOMPARE(texts("themeChip"), names);
        QCOMPARE(texts("themeNameLabel"), names);
        QCOMPARE(texts("themeDescLabel"),
                 (QStringList{QStringLiteral("减速器已小批量供货。"), QStringLiteral("暂无描述")}));
        const auto *layout = content()->layout();
        QCOMPARE(layout->contentsMargins(), QMargins(0, 2, 0, 2));
        QCOMPARE(layout->spacing(), 0);
        QCOMPARE(layout->count(), 4); // the last one is what is left over
        const QLayout *header = layout->itemAt(0)->widget()->layout();
        QCOMPARE(header->contentsMargins(), QMargins(12, 10, 12, 10));
        QCOMPARE(header->spacing(), 8);
        for (int i = 1; i < 3; ++i) {
            const QWidget *card = layout->itemAt(i)->widget();
            QCOMPARE(card->objectName(), QStringLiteral("themeCard"));
            QCOMPARE(card->layout()->contentsMargins(), QMargins(10, 6, 10, 6));
            QCOMPARE(card->layout()->spacing(), 0);
            QCOMPARE(card->layout()->itemAt(0)->widget(), labels("themeNameLabel").at(i - 1));
            QCOMPARE(card->layout()->itemAt(1)->widget(), labels("themeDescLabel").at(i - 1));
        }
        QCOMPARE(m_panel->height(), sumOfCards() + frame);
        QVERIFY(!hasBar());
    }

    void theDefaultsGiveItsLook()
    {
        open({theme(QStringLiteral("机器人"), QStringLiteral("减速器已小批量供货。"))});
        const auto look = [this](const char *kind) {
            const QLabel *label = labels(kind).first();
            return QStringLiteral("%1 %2px%3")
                .arg(label->palette().color(label->foregroundRole()).name())
                .arg(label->fontInfo().pixelSize())
                .arg(label->font().bold() ? QStringLiteral(" bold") : QString());
        };
        QCOMPARE(look("themeHeaderLabel"), QStringLiteral("#ffa500 26px bold")); // orange, the main board
        QCOMPARE(look("themeChip"), QStringLiteral("#ffaa00 16px"));
        QCOMPARE(look("themeNameLabel"), QStringLiteral("#aaff00 26px bold"));
        QCOMPARE(look("themeDescLabel"), QStringLiteral("#ffaa00 24px"));
        for (const char *kind : {"themeNameLabel", "themeDescLabel"}) {
            const QLabel *label = labels(kind).first();
            QVERIFY(label->wordWrap());
            QCOMPARE(label->contentsRect(), label->rect());
            QCOMPARE(label->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
            QCOMPARE(label->width(), content()->width() - 20);
        }
        const QLabel *chip = labels("themeChip").first();
        QVERIFY(!chip->wordWrap());
        QCOMPARE(chip->minimumHeight(), chip->fontMetrics().height() + 8);
        QCOMPARE(chip->maximumHeight(), chip->minimumHeight());
        QCOMPARE(chip->width(), chip->fontMetrics().horizontalAdvance(chip->text()) + 18);

        const QImage picture = m_panel->grab().toImage();
        QCOMPARE(picture.pixelColor(0, 0), QColor(QStringLiteral("#34495e")));
        QCOMPARE(picture.pixelColor(2, 2), QColor(QStringLiteral("#2c3e50")));
        QCOMPARE(picture.pixelColor(3, 31), QColor(QStringLiteral("#2c3e50"))); // above the cards
        QCOMPARE(picture.pixelColor(3, 32), QColor(QStringLiteral("#2c3e50")));
        QCOMPARE(picture.pixelColor(3, 33), QColor(QStringLiteral("#353535")));
        QCOMPARE(picture.pixelColor(3, m_panel->height() - 2), QColor(QStringLiteral("#2c3e50")));
        QCOMPARE(picture.pixelColor(3, m_panel->height() - 4), QColor(QStringLiteral("#353535")));
        const QPoint chipEdge = chip->mapTo(m_panel.get(), QPoint(chip->width() / 2, 0));
        QCOMPARE(picture.pixelColor(chipEdge), QColor(QStringLiteral("#ffaa00")));
    }

    void theHeadingHasTheColourOfItsBoard_data()
    {
        QTest::addColumn<QString>("stock");
        QTest::addColumn<QString>("color");
        QTest::newRow("00") << QStringLiteral("002031") << QStringLiteral("#ffa500");
        QTest::newRow("60") << QStringLiteral("600519") << QStringLiteral("#ffa500");
        QTest::newRow("30") << QStringLiteral("300750") << QStringLiteral("#00ffff");
        QTest::newRow("68") << QStringLiteral("688981") << QStringLiteral("#0000ff");
        QTest::newRow("92") << QStringLiteral("920029") << QStringLiteral("#008000");
        QTest::newRow("unknown") << QStringLiteral("835001") << QStringLiteral("#ffa502");
        QTest::newRow("none") << QString() << QStringLiteral("#ffa502");
    }
    void theHeadingHasTheColourOfItsBoard()
    {
        QFETCH(QString, stock);
        m_panel = std::make_unique<ThemeStocksDialog>(stock, name, 1);
        m_panel->setThemes({});
        const QLabel *heading = labels("themeHeaderLabel").first();
        heading->ensurePolished();
        QTEST(heading->palette().color(heading->foregroundRole()).name(), "color");
    }

    void aHeadingThatIsHardToReadOnItsCardStandsOnAPlate()
    {
        open(manyThemes(1));
        const auto *heading = m_panel->findChild<ParagraphLabel *>(QStringLiteral("themeHeaderLabel"));
        QVERIFY(!heading->plate().isValid());
        m_panel->setStockInfo(QStringLiteral("688981"), QStringLiteral("中芯国际"));
        m_panel->setThemes(manyThemes(1));
        heading = m_panel->findChild<ParagraphLabel *>(QStringLiteral("themeHeaderLabel"));
        QVERIFY(heading->plate().isValid());
        const QColor plate = heading->plate();
        const QPoint inside = heading->mapTo(m_panel.get(), QPoint(3, heading->height() / 2));
        const QPoint beyond = heading->mapTo(m_panel.get(), QPoint(400, heading->height() / 2));
        QCOMPARE(m_panel->grab().toImage().pixelColor(inside), plate);
        QCOMPARE(m_panel->grab().toImage().pixelColor(beyond), QColor(QStringLiteral("#353535")));
        // On a light card the colour is told well enough by itself.
        settings()->setThemeCardBgColor(QStringLiteral("#f4f4f4"));
        m_panel->setThemes(manyThemes(1));
        heading = m_panel->findChild<ParagraphLabel *>(QStringLiteral("themeHeaderLabel"));
        QVERIFY(!heading->plate().isValid());
    }

    void aCodeWithoutANameOfItsOwnStandsAlone()
    {
        open({});
        for (const QString &noName : {QString(), QStringLiteral("510300")}) {
            m_panel->setStockInfo(QStringLiteral("510300"), noName);
            m_panel->setThemes({});
            QCOMPARE(texts("themeHeaderLabel"), QStringList(QStringLiteral("510300")));
        }
    }

    void theSettingsAreReadWithEachList()
    {
        open(manyThemes(2));
        settings()->setThemeBgColor(QStringLiteral("#101820"));
        settings()->setThemeCardBgColor(QStringLiteral("#202830"));
        settings()->setThemeNameColor(QStringLiteral("#ff0000"));
        settings()->setThemeDescColor(QStringLiteral("#00ff00"));
        settings()->setThemeNameFontSize(20);
        settings()->setThemeDescFontSize(15);
        settings()->setThemeSummaryFontSize(12);
        settings()->setThemeWidth(420);
        m_panel->setThemes(manyThemes(3));
        QCOMPARE(m_panel->width(), 420);
        QTRY_COMPARE(m_panel->height(), sumOfCards() + frame);
        const QLabel *themeName = labels("themeNameLabel").first();
        QCOMPARE(themeName->palette().color(themeName->foregroundRole()), QColor(Qt::red));
        QCOMPARE(themeName->fontInfo().pixelSize(), 20);
        const QLabel *desc = labels("themeDescLabel").first();
        QCOMPARE(desc->palette().color(desc->foregroundRole()), QColor(Qt::green));
        QCOMPARE(desc->fontInfo().pixelSize(), 15);
        QCOMPARE(labels("themeChip").first()->fontInfo().pixelSize(), 12);
        const QImage picture = m_panel->grab().toImage();
        QCOMPARE(picture.pixelColor(3, 3), QColor(QStringLiteral("#101820")));
        QCOMPARE(picture.pixelColor(3, 33), QColor(QStringLiteral("#202830")));
    }

    void whatComesFromTheServiceIsNoMarkup()
    {
        const QString markup = QStringLiteral("<b>粗</b><img src='file:///etc/passwd'>&amp;%1");
        open({theme(markup, markup)});
        m_panel->setStockInfo(code, markup);
        m_panel->setThemes({theme(markup, markup)});
        for (const char *kind : {"themeHeaderLabel", "themeChip", "themeNameLabel", "themeDescLabel"}) {
            const QLabel *label = labels(kind).first();
            QCOMPARE(label->textFormat(), Qt::PlainText);
            QVERIFY2(label->text().contains(markup), kind);
        }
    }

    void aChipThatIsCutTellsItsNameAsItWasSent_data()
    {
        QTest::addColumn<QString>("sent");
        QTest::newRow("ampersand") << QStringLiteral("A&B > C 的供给侧结构性改革与高端装备国产替代概念");
        QTest::newRow("markup") << QStringLiteral("<b>供给侧结构性改革</b>与高端装备国产替代及配套概念");
    }

    void aChipThatIsCutTellsItsNameAsItWasSent()
    {
        QFETCH(const QString, sent);
        settings()->setThemeWidth(300);
        open({theme(sent, QString())});
        QLabel *chip = labels("themeChip").first();
        const QPoint place = chip->rect().center();
        QHelpEvent event(QEvent::ToolTip, place, chip->mapToGlobal(place));
        QApplication::sendEvent(chip, &event);
        const QString tip = QToolTip::text();
        QTextDocument seen;
        if (Qt::mightBeRichText(tip))
            seen.setHtml(tip);
        else
            seen.setPlainText(tip);
        QCOMPARE(seen.toPlainText(), sent);
    }

    void chipsWrapWithTheWidthOfThePanel()
    {
        open(manyThemes(24));
        for (int width = 300; width <= 1800; width += 75) {
            settings()->setThemeWidth(width);
            m_panel->setThemes(manyThemes(24));
            QCOMPARE(m_panel->width(), width);
            const QList<QLabel *> chips = labels("themeChip");
            QCOMPARE(chips.size(), 24);
            // The header card's margins, the line around the panel and the scroll bar take their part.
            QTRY_COMPARE(content()->width(), width - 2 - (hasBar() ? 10 : 0));
            const int rowWidth = content()->width() - 24;
            const QPoint first = chips.first()->mapTo(content(), QPoint(0, 0));
            QCOMPARE(first.x(), 12);
            int x = 0;
            int y = 0;
            for (const QLabel *chip : chips) {
                const int chipWidth = chip->sizeHint().width();
                if (x + chipWidth > rowWidth) {
                    x = 0;
                    y += chip->height() + 4;
                }
                QCOMPARE(chip->mapTo(content(), QPoint(0, 0)), first + QPoint(x, y));
                QCOMPARE(chip->width(), chipWidth);
                x += chipWidth + 4;
            }
        }
    }

    void aChipTooLongForItsRowIsCutToIt()
    {
        settings()->setThemeWidth(300);
        const QString longName = QStringLiteral("供给侧结构性改革与高端装备国产替代及其配套产业链概念");
        open({theme(QStringLiteral("芯片"), QString()), theme(longName, QString()),
              theme(QStringLiteral("军工"), QString())});
        const QList<QLabel *> chips = labels("themeChip");
        QCOMPARE(chips.at(1)->width(), 300 - 2 - 24);
        QCOMPARE(chips.at(1)->x(), chips.at(0)->x());
        QCOMPARE(chips.at(2)->x(), chips.at(0)->x());
        QVERIFY(chips.at(1)->y() > chips.at(0)->y());
        QVERIFY(chips.at(2)->y() > chips.at(1)->y());
        // The card tells the name whole.
        QCOMPARE(texts("themeNameLabel").at(1), longName);
        verifyAllTextShown();
    }

    void theHeightFollowsLongTextsAtAnyWidth()
    {
        const QList<ThemeStockInfo> themes{
            theme(QStringLiteral("机器人"), QStringLiteral("公司的减速器已向客户批量供货。").repeated(12)),
            theme(QStringLiteral("一带一路"), QStringLiteral("第一行\n第二行\r\n\r\n第四行")),
            theme(QStringLiteral("工业母机"), QStringLiteral("W").repeated(160)),
        };
        open(themes);
        for (int width = 300; width <= 1800; width += 75) {
            settings()->setThemeWidth(width);
            m_panel->setThemes(themes);
            QTRY_COMPARE(m_panel->height(), qMin(sumOfCards() + frame, screen().height()));
            QCOMPARE(hasBar(), sumOfCards() + frame > screen().height());
            verifyAllTextShown();
            const QLabel *lines = labels("themeDescLabel").at(1);
            QVERIFY(lines->height() >= 4 * lines->fontMetrics().height());
        }
    }

    void manyConceptsReachTheHeightOfTheScreenAndScroll()
    {
        open(manyThemes(60));
        QCOMPARE(m_panel->height(), screen().height());
        QCOMPARE(m_panel->y(), screen().y());
        QTRY_VERIFY(hasBar());
        QCOMPARE(area()->verticalScrollBar()->width(), 10);
        QVERIFY(!area()->horizontalScrollBar()->isVisible());
        QTRY_COMPARE(content()->height(), sumOfCards());
        verifyAllTextShown();

        // A short list shrinks it again, and shows its beginning.
        area()->verticalScrollBar()->setValue(area()->verticalScrollBar()->maximum());
        m_panel->setThemes(manyThemes(1));
        QTRY_VERIFY(!hasBar());
        QCOMPARE(m_panel->height(), sumOfCards() + frame);
        QVERIFY(m_panel->height() < 400);
        m_panel->setThemes(manyThemes(60));
        QTRY_VERIFY(hasBar());
        QCOMPARE(area()->verticalScrollBar()->value(), 0);
    }

    void whatTurnsOutLowerAfterAMomentShrinksThePanel()
    {
        open(manyThemes(4));
        const int high = m_panel->height();
        m_panel->setThemes(manyThemes(4));
        QCOMPARE(m_panel->height(), high);
        QWidget *last = content()->layout()->itemAt(4)->widget();
        const int less = last->height();
        last->hide();
        QTRY_COMPARE(m_panel->height(), high - less);
        QCOMPARE(content()->maximumHeight(), high - less - frame);
        QCOMPARE(m_panel->y(), screen().y() + (screen().height() - m_panel->height()) / 2);
        // The next list starts afresh.
        m_panel->setThemes(manyThemes(4));
        QTRY_COMPARE(m_panel->height(), high);
        QCOMPARE(content()->height(), high - frame);
    }

    void theOptionSaysWhereItStands_data()
    {
        QTest::addColumn<int>("option");
        QTest::addColumn<int>("x");
        QTest::newRow("left") << 0 << screen().x() + 50;
        QTest::newRow("middle") << 1 << screen().x() + (screen().width() - 600) / 2;
        QTest::newRow("right") << 2 << screen().x() + screen().width() - 650;
    }
    void theOptionSaysWhereItStands()
    {
        QFETCH(int, option);
        QFETCH(int, x);
        open(manyThemes(2), option);
        const int y = screen().y() + (screen().height() - m_panel->height()) / 2;
        QTRY_COMPARE(m_panel->pos(), QPoint(x, y));
    }

    void theStoredPlaceIsTaken_data()
    {
        QTest::addColumn<QPoint>("stored");
        QTest::addColumn<bool>("taken");
        QTest::newRow("inside") << QPoint(40, 60) << true;
        QTest::newRow("upper edge") << QPoint(40, 0) << true;
        QTest::newRow("corner") << QPoint(0, 0) << false;
        QTest::newRow("none") << QPoint(-1, -1) << false;
    }
    void theStoredPlaceIsTaken()
    {
        QFETCH(QPoint, stored);
        QFETCH(bool, taken);
        settings()->setThemeCustomPosition(stored);
        open(manyThemes(2));
        QCOMPARE(m_panel->hasCustomPosition(), taken);
        const QPoint middle((screen().width() - m_panel->width()) / 2,
                            (screen().height() - m_panel->height()) / 2);
        QTRY_COMPARE(m_panel->pos(), taken ? stored : screen().topLeft() + middle);
    }

    void aPlaceOutsideTheScreenIsPulledBackToItsEdge()
    {
        settings()->setThemeCustomPosition(QPoint(screen().width() + 700, 120));
        open(manyThemes(2));
        QTRY_COMPARE(m_panel->pos(), QPoint(screen().x() + screen().width() - 600, 120));
        // A higher list moves it up as far as it has to.
        settings()->setThemeCustomPosition(QPoint(30, screen().height() - 10));
        open(manyThemes(2));
        QTRY_COMPARE(m_panel->pos(), QPoint(30, screen().y() + screen().height() - m_panel->height()));
    }

    void draggedItKeepsItsPlaceOverARestart()
    {
        open(manyThemes(2));
        const QPoint before = m_panel->pos();
        QWindow *window = m_panel->windowHandle();
        QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, QPoint(60, 15));
        QTest::mouseMove(window, QPoint(160, 95));
        QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, QPoint(60, 15));
        const QPoint after = before + QPoint(100, 80);
        QCOMPARE(m_panel->pos(), after);
        QCOMPARE(settings()->getThemeCustomPosition(), after);
        m_panel->setThemes(manyThemes(1));
        QCOMPARE(m_panel->pos(), after);
        settings()->sync();
        open(manyThemes(2), 0);
        QTRY_COMPARE(m_panel->pos(), after);
    }

    void itMayEndWhileItsLayoutSettles()
    {
        auto *panel = new ThemeStocksDialog(code, name, 1);
        const QPointer<ThemeStocksDialog> alive(panel);
        QTimer::singleShot(0, panel, [panel] { delete panel; });
        panel->setThemes(manyThemes(3));
        QVERIFY(!alive);
    }

    void aListThatComesInMeanwhileTakesItsPlace()
    {
        open(manyThemes(1));
        QTimer::singleShot(0, m_panel.get(), [this] { m_panel->setThemes(manyThemes(3)); });
        m_panel->setThemes(manyThemes(5));
        QCOMPARE(labels("themeNameLabel").size(), 3);
        QTRY_COMPARE(m_panel->height(), sumOfCards() + frame);
        QVERIFY(m_panel->updatesEnabled());
    }
};

LARKSPIRE_TEST_MAIN(tst_ThemeStocksDialog)
#include "tst_themestocksdialog.moc"
