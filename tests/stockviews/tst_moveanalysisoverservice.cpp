#include "settings/ConfigManager.h"
#include "stockclient/StockServiceSettings.h"
#include "stockviews/DynamicAnalysisDialog.h"
#include "stockviews/StockPageFixture.h"
#include "support/BoxAnswer.h"
#include "support/DialogVisit.h"
#include "support/IsolatedHome.h"
#include "support/ServiceProcess.h"
#include "support/WindowInput.h"

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QSettings>
#include <QTextBrowser>
#include <QtTest>

namespace {

/// A page that asks the real service, on a morning on which 000661 has reached its limit and 600519 has not.
struct ServedPage : StockPageFixture
{
    explicit ServedPage(const ServiceProcess &served)
    {
        now = QDateTime(QDate(2024, 8, 8), QTime(10, 30));
        useStockService(served.baseUrl(), served.openSession(QStringLiteral("desk")));
        QSettings(settingsFilePath(), QSettings::IniFormat)
            .setValue(QStringLiteral("DynamicAnalysis/EnableManualEdit"), true);
    }

    /// Opens the page on a stock, and the panel.
    void openOn(const char *code)
    {
        openInTdx(code);
        openPage();
        switchOn();
        tick();
        QTRY_COMPARE(status(), QStringLiteral("已更新 %1 综合信息").arg(QString::fromLatin1(code)));
        find<QPushButton>("searchStockButton")->click();
        QTRY_VERIFY(panel() && panel()->isVisible());
    }
    DynamicAnalysisDialog *panel() const { return page->findChild<DynamicAnalysisDialog *>(); }
    QString shown() const
    {
        return panel()->findChild<QTextBrowser *>(QStringLiteral("analysisBrowser"))->toPlainText();
    }
    /// Pastes a text as the analysis of the stock on show.
    bool enter(const QString &text) const
    {
        QApplication::clipboard()->setText(text);
        const DialogVisit visit(QStringLiteral("录入异动信息"), [](QDialog &dialog) {
            WindowInput::click(dialog.findChild<QPushButton *>(QStringLiteral("pasteButton")));
            WindowInput::click(dialog.findChild<QPushButton *>(QStringLiteral("confirmButton")));
        });
        WindowInput::click(panel()->findChild<QPushButton *>(QStringLiteral("manualInputButton")));
        return QTest::qWaitFor([&] { return visit.ended(); }, 20000);
    }
};

} // namespace

/// The move analysis from the real page through the real service and back.
class tst_MoveAnalysisOverService : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        ServiceProcess::Settings settings;
        settings.clock = QStringLiteral("2024-08-08 10:30:00");
        settings.databaseFile = m_folder.filePath(QString::fromLatin1(QTest::currentTestFunction()));
        m_service = std::make_unique<ServiceProcess>(settings);
        QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
    }
    void cleanup() { m_service.reset(); }

    void theServicesAnalysisIsShown()
    {
        ServedPage page(*m_service);
        page.openOn("000661");
        QCOMPARE(page.status(), QStringLiteral("已更新异动解析"));
        const QStringList lines = page.shown().split(QLatin1Char('\n'));
        QVERIFY2(lines.at(0).startsWith(QStringLiteral("长春高新 000661")), qPrintable(lines.at(0)));
        QCOMPARE(lines.at(1), QStringLiteral("生物医药+医疗器械"));
        QVERIFY2(lines.at(2).startsWith(QStringLiteral("发布时间：2024-08-0")), qPrintable(lines.at(2)));
        QVERIFY(lines.contains(QStringLiteral("个股异动解析：")));
        QCOMPARE(lines.filter(QRegularExpression(QStringLiteral("^\\d、"))).size(), 5);
    }

    void anEnteredAnalysisIsThereAtOnceAndAfterRestarts()
    {
        {
            ServedPage page(*m_service);
            page.openOn("600519");
            QCOMPARE(page.status(), QStringLiteral("暂无异动解析数据"));
            QVERIFY(page.shown().endsWith(QStringLiteral("暂无异动信息")));
            QVERIFY(page.enter(QStringLiteral("个股异动解析：提价传闻\r\n公司原因：1、渠道提价。2、回购。")));
            QTRY_VERIFY(page.shown().contains(QStringLiteral("2、回购。")));
            QCOMPARE(page.shown().split(QLatin1Char('\n')).at(1), QStringLiteral("提价传闻"));
        }
        // The service and the page anew.
        QVERIFY(m_service->stop());
        QVERIFY2(m_service->start(), qPrintable(m_service->errorText()));
        ServedPage page(*m_service);
        page.openOn("600519");
        QCOMPARE(page.status(), QStringLiteral("已更新异动解析"));
        QCOMPARE(page.panel()->analysis().title, QStringLiteral("提价传闻"));
        QCOMPARE(page.panel()->analysis().tradeDate, QStringLiteral("2024-08-08"));
        QCOMPARE(page.panel()->analysis().sourceUrl, QStringLiteral("manual"));
        QVERIFY(page.shown().contains(QStringLiteral("2、回购。")));
    }

    void whatTheServiceRefusesIsSaid()
    {
        ServedPage page(*m_service);
        page.openOn("600519");
        m_service->addFault(QStringLiteral("/newsapi/dynamic_analysis/save"), QStringLiteral("status"),
                            {{QStringLiteral("status"), 503}, {QStringLiteral("count"), 1}});
        const BoxAnswer box(QStringLiteral("OK"));
        QVERIFY(page.enter(QStringLiteral("提价\n正文")));
        QTRY_VERIFY(box.shown());
        QCOMPARE(box.title(), QStringLiteral("错误"));
        QVERIFY(!box.text().isEmpty());
        QVERIFY(page.shown().endsWith(QStringLiteral("暂无异动信息")));
        // Once more, and it goes.
        QVERIFY(page.enter(QStringLiteral("提价\n正文")));
        QTRY_VERIFY(page.shown().contains(QStringLiteral("正文")));
    }

    void aServiceThatEndsIsSaid()
    {
        ServedPage page(*m_service);
        page.openOn("000661");
        const QString before = page.shown();
        auto *button = page.find<QPushButton>("searchStockButton");
        button->click();
        m_service->kill();
        button->click();
        QTRY_VERIFY2(page.status().startsWith(QStringLiteral("查询失败: ")), qPrintable(page.status()));
        QVERIFY(!page.panel()->isVisible());
        QCOMPARE(page.shown(), before);
    }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<ServiceProcess> m_service;
};

LARKSPIRE_TEST_MAIN(tst_MoveAnalysisOverService)
#include "tst_moveanalysisoverservice.moc"
