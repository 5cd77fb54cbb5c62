#include "linkage/StandIn.h"
#include "linkage/TestPlatform.h"
#include "program/Layout.h"
#include "settings/ConfigManager.h"
#include "stockclient/StockApiConfig.h"
#include "stockviews/ScriptedStockService.h"
#include "stockviews/StockAnalysisWidget.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>

// The page between two trading programs that really run: what is opened in one is shown in the other.
class tst_StockLinkageThroughWine : public QObject
{
    Q_OBJECT

private slots:
    void aCodeOpenedInOneProgramIsShownInTheOther()
    {
        clearSettings();
        ScriptedStockService service;
        ConfigManager::instance()->setApiServerUrl(service.url());
        ConfigManager::instance()->setSessionToken(QStringLiteral("stored-token"));
        StockApiConfig *config = StockApiConfig::instance();
        config->refreshFromSettings();
        config->setTdxOffset(QString::number(Layout::tdxCodeOffset, 16));

        StockAnalysisWidget::Surroundings surroundings;
        surroundings.reading = TestPlatform::readingOperations();
        surroundings.sending = TestPlatform::sendingOperations();
        surroundings.clock = [] { return QDateTime::currentDateTime(); };
        PlatformOperations &reading = *surroundings.reading;
        const QString launcher = QStringLiteral(STANDIN_LAUNCHER);
        StandIn tdx(QStringLiteral(STANDIN_TDXW), {}, launcher);
        StandIn ths(QStringLiteral(STANDIN_HEXIN), {QStringLiteral("--code"), QStringLiteral("601318")},
                    launcher);
        QVERIFY(tdx.isUp(reading) && ths.isUp(reading));

        StockAnalysisWidget page(std::move(surroundings));
        page.show();
        page.findChild<QComboBox *>(QStringLiteral("linkageComboBox"))->setCurrentIndex(1);
        ths.orderWithoutWaiting("state");
        page.findChild<QCheckBox *>(QStringLiteral("autoRefreshCheckBox"))->click();
        const auto *status = page.findChild<QLabel *>(QStringLiteral("statusLabel"));
        for (const QByteArray &code : {QByteArray("300750"), QByteArray("688981"), QByteArray("000858")}) {
            QVERIFY(tdx.order("open " + code));
            QTRY_COMPARE_WITH_TIMEOUT(
                status->text(), QStringLiteral("已更新 %1 综合信息").arg(QString::fromLatin1(code)), 20000);
            QVERIFY(ths.waitForLine("received " + code));
            QVERIFY(ths.waitForLine("code " + code));
        }
    }
};

LARKSPIRE_TEST_MAIN(tst_StockLinkageThroughWine)
#include "tst_stocklinkagethroughwine.moc"
