#include "settings/AppConfig.h"

#include "support/IsolatedHome.h"

#include <QCoreApplication>

class TestAppConfig : public QObject
{
    Q_OBJECT

private slots:
    void aNewRecordCarriesItsOwnDefaults_data()
    {
        QTest::addColumn<QVariant>("actual");
        QTest::addColumn<QVariant>("expected");
        const AppConfig config;
        const auto add = [](const char *field, const QVariant &actual, const QVariant &expected) {
            QTest::newRow(field) << actual << expected;
        };
        const auto t = [](const char *text) { return QString::fromLatin1(text); };
        add("serverUrl", config.serverUrl, t("http://127.0.0.1:8888"));
        add("apiKey", config.apiKey, QString());
        add("timeout, in milliseconds", config.timeout, 10000);
        add("refreshInterval", config.refreshInterval, 60);
        add("enableSepakStock", config.enableSepakStock, true);
        add("enableNotification", config.enableNotification, true);
        add("enableTopmost", config.enableTopmost, false);
        add("enableSound", config.enableSound, true);
        add("enableTts", config.enableTts, true);
        add("ttsVolume", config.ttsVolume, 0.5);
        add("enableAutoStart", config.enableAutoStart, false);
        add("notificationPosition", config.notificationPosition, t("bottom_right"));
        add("windowPosition", config.windowPosition, QPoint(100, 100));
        add("windowSize", config.windowSize, QSize(1200, 800));
        add("rememberWindowState", config.rememberWindowState, true);
        add("darkMode", config.darkMode, false);
        add("showNewsDetails", config.showNewsDetails, false);
        add("mainBoardColor", config.mainBoardColor, t("red"));
        add("gemColor", config.gemColor, t("cyan"));
        add("starMarketColor", config.starMarketColor, t("blue"));
        add("beijingExchangeColor", config.beijingExchangeColor, t("green"));
        add("basicInfoFontSize", config.basicInfoFontSize, 14);
        add("historyStatsFontSize", config.historyStatsFontSize, 12);
        add("openingMarketFontSize", config.openingMarketFontSize, 12);
        add("stockCodeNameFontSize", config.stockCodeNameFontSize, 16);
        add("limitUpDetailFontSize", config.limitUpDetailFontSize, 12);
        add("marketTitleFontSize", config.marketTitleFontSize, 16);
        add("marketLabelFontSize", config.marketLabelFontSize, 12);
        add("marketValueFontSize", config.marketValueFontSize, 14);
        add("marketBoardRankingFontSize", config.marketBoardRankingFontSize, 12);
        add("marketRefreshInterval", config.marketRefreshInterval, 20);
        add("themeBgColor", config.themeBgColor, t("#2c3e50"));
        add("themeWidth", config.themeWidth, 380);
        add("themePosition", config.themePosition, 1);
        add("themeCardBgColor", config.themeCardBgColor, t("#34495e"));
        add("themeSummaryFontSize", config.themeSummaryFontSize, 13);
        add("themeNameColor", config.themeNameColor, t("#e74c3c"));
        add("themeNameFontSize", config.themeNameFontSize, 15);
        add("themeDescColor", config.themeDescColor, t("#ecf0f1"));
        add("themeDescFontSize", config.themeDescFontSize, 13);
        add("themeHotkey", config.themeHotkey, QString());
        add("dynamicHotkey", config.dynamicHotkey, t("F14"));
    }

    void aNewRecordCarriesItsOwnDefaults()
    {
        QFETCH(QVariant, actual);
        QFETCH(QVariant, expected);
        QCOMPARE(actual, expected);
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestAppConfig)
#include "tst_appconfig.moc"
