#include "settings/ConfigManager.h"

#include "settings/PasswordScrambling.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QFile>
#include <QSysInfo>

#include <functional>

namespace {

/// One accessor stem as its callers know it.
struct Row
{
    QString key;
    QVariant onRead;
    /// Invalid: a reset leaves the key alone.
    QVariant onReset;
    std::function<QVariant(ConfigManager &)> get;
    /// Writes the sample; empty where there is no set accessor.
    std::function<void(ConfigManager &)> setSample;
    QVariant sample;
};

template <typename T, typename Getter, typename Setter>
Row row(const char *key, const T &onRead, const QVariant &onReset, Getter get, Setter set, const T &sample)
{
    return {QLatin1String(key),
            QVariant::fromValue(onRead),
            onReset,
            [get](ConfigManager &config) { return QVariant::fromValue(T((config.*get)())); },
            [set, sample](ConfigManager &config) { (config.*set)(sample); },
            QVariant::fromValue(sample)};
}

QString t(const char *text)
{
    return QString::fromUtf8(text);
}

QVector<Row> rows()
{
    using C = ConfigManager;
    const QVariant kept;
    const QString endpoint = t("http://127.0.0.1:8888");
    return {
        row("API/ServerUrl", endpoint, endpoint, &C::getApiServerUrl, &C::setApiServerUrl, t("http://h:1")),
        row("API/Key", QString(), QString(), &C::getApiKey, &C::setApiKey, t("k-1")),
        row("API/Timeout", 10, 10, &C::getApiTimeout, &C::setApiTimeout, 17),
        row("Auth/AutoLogin", true, kept, &C::getAutoLogin, &C::setAutoLogin, false),
        row("Auth/DeviceId", QString(), kept, &C::getDeviceId, &C::setDeviceId, t("d-1")),
        row("Auth/Email", QString(), kept, &C::getAuthEmail, &C::setAuthEmail, t("云@larkspire.example")),
        row("Auth/LastLoginTime", QDateTime(), kept, &C::getLastLoginTime, &C::setLastLoginTime,
            QDateTime(QDate(2024, 3, 8), QTime(9, 30, 1, 250))),
        row("Auth/LoginMethod", 0, kept, &C::getLoginMethod, &C::setLoginMethod, 1),
        row("Auth/SessionTimeoutHours", 24, kept, &C::getSessionTimeoutHours, &C::setSessionTimeoutHours, 48),
        row("Auth/SessionToken", QString(), kept, &C::getSessionToken, &C::setSessionToken, t("t,\"=;%1")),
        row("Auth/Username", QString(), kept, &C::getAuthUsername, &C::setAuthUsername, t("云雀")),
        row("Features/RefreshInterval", 8, 60, &C::getRefreshInterval, &C::setRefreshInterval, 33),
        row("Features/EnableSepakStock", true, true, &C::getEnableSpeakStock, &C::setEnableSpeakStock, false),
        row("Features/EnableNotification", true, true, &C::getEnableNotification, &C::setEnableNotification,
            false),
        row("Features/EnableSound", true, true, &C::getEnableSound, &C::setEnableSound, false),
        row("Features/TTS", true, true, &C::getEnableTts, &C::setEnableTts, false),
        row("Features/TTSVolume", 0.9, 0.9, &C::getTtsVolume, &C::setTtsVolume, 0.35),
        row("Features/EnableAutoStart", false, false, &C::getEnableAutoStart, &C::setEnableAutoStart, true),
        row("Features/RememberWindowState", true, true, &C::getRememberWindowState,
            &C::setRememberWindowState, false),
        row("Features/EnableTopmost", false, false, &C::getEnableTopmost, &C::setEnableTopmost, true),
        row("Features/ShowNewsDetails", false, false, &C::getShowNewsDetails, &C::setShowNewsDetails, true),
        row("Features/NotificationPosition", t("bottom_right"), t("bottom_right"),
            &C::getNotificationPosition, &C::setNotificationPosition, t("one_fifth")),
        row("Theme/DarkMode", false, false, &C::getDarkMode, &C::setDarkMode, true),
        row("Window/Geometry", QByteArray(), kept, &C::getWindowGeometry, &C::setWindowGeometry,
            QByteArray("\x01\xd9\xd0\xcb\0\x03\0\0", 8)),
        row("Window/Position", QPoint(100, 100), QPoint(100, 100), &C::getWindowPosition,
            &C::setWindowPosition, QPoint(-1280, 40)),
        row("Window/Size", QSize(750, 980), QSize(1200, 800), &C::getWindowSize, &C::setWindowSize,
            QSize(640, 480)),
        row("StockAnalysis/MainBoardColor", t("orange"), t("red"), &C::getMainBoardColor,
            &C::setMainBoardColor, t("teal")),
        row("StockAnalysis/GemColor", t("cyan"), t("cyan"), &C::getGemColor, &C::setGemColor, t("navy")),
        row("StockAnalysis/StarMarketColor", t("blue"), t("blue"), &C::getStarMarketColor,
            &C::setStarMarketColor, t("lime")),
        row("StockAnalysis/BeijingExchangeColor", t("green"), t("green"), &C::getBeijingExchangeColor,
            &C::setBeijingExchangeColor, t("pink")),
        row("StockAnalysis/BasicInfoFontSize", 10, 14, &C::getBasicInfoFontSize, &C::setBasicInfoFontSize,
            21),
        row("StockAnalysis/HistoryStatsFontSize", 12, 12, &C::getHistoryStatsFontSize,
            &C::setHistoryStatsFontSize, 22),
        row("StockAnalysis/OpeningMarketFontSize", 12, 12, &C::getOpeningMarketFontSize,
            &C::setOpeningMarketFontSize, 23),
        row("StockAnalysis/StockCodeNameFontSize", 14, 16, &C::getStockCodeNameFontSize,
            &C::setStockCodeNameFontSize, 24),
        row("StockAnalysis/LimitUpDetailFontSize", 12, 12, &C::getLimitUpDetailFontSize,
            &C::setLimitUpDetailFontSize, 25),
        row("StockAnalysis/AutoRefresh", false, kept, &C::getStockAutoRefresh, &C::setStockAutoRefresh, true),
        row("StockAnalysis/LinkageMode", 0, kept, &C::getStockLinkageMode, &C::setStockLinkageMode, 3),
        row("StockAnalysis/RefreshInterval", 5, kept, &C::getStockRefreshInterval,
            &C::setStockRefreshInterval, 9),
        row("MarketStats/TitleFontSize", 10, 16, &C::getMarketTitleFontSize, &C::setMarketTitleFontSize, 26),
        row("MarketStats/LabelFontSize", 12, 12, &C::getMarketLabelFontSize, &C::setMarketLabelFontSize, 27),
        row("MarketStats/ValueFontSize", 12, 14, &C::getMarketValueFontSize, &C::setMarketValueFontSize, 28),
        row("MarketStats/BoardRankingFontSize", 11, 12, &C::getMarketBoardRankingFontSize,
            &C::setMarketBoardRankingFontSize, 29),
        row("MarketStats/RefreshInterval", 20, 20, &C::getMarketRefreshInterval, &C::setMarketRefreshInterval,
            31),
        row("StockHelper/CurrentSoftware", t("tdx"), kept, &C::getCurrentSoftware, &C::setCurrentSoftware,
            t("ths")),
        row("StockHelper/TdxVersion", QString(), kept, &C::getTdxVersion, &C::setTdxVersion, t("7.66")),
        row("StockHelper/ThsVersion", QString(), kept, &C::getThsVersion, &C::setThsVersion, t("9.40")),
        {t("DynamicAnalysis/EnableManualEdit"),
         false,
         false,
         [](C &config) { return config.getDynamicManualEdit(); },
         {},
         {}},
        row("DynamicAnalysis/Hotkey", t("Tab"), kept, &C::getDynamicHotkey, &C::setDynamicHotkey, t("F13")),
        row("ThemeDialog/BgColor", t("#2c3e50"), kept, &C::getThemeBgColor, &C::setThemeBgColor,
            t("#010203")),
        row("ThemeDialog/CardBgColor", t("#353535"), kept, &C::getThemeCardBgColor, &C::setThemeCardBgColor,
            t("#040506")),
        row("ThemeDialog/NameColor", t("#aaff00"), kept, &C::getThemeNameColor, &C::setThemeNameColor,
            t("#070809")),
        row("ThemeDialog/DescColor", t("#ffaa00"), kept, &C::getThemeDescColor, &C::setThemeDescColor,
            t("#0a0b0c")),
        row("ThemeDialog/NameFontSize", 26, kept, &C::getThemeNameFontSize, &C::setThemeNameFontSize, 18),
        row("ThemeDialog/DescFontSize", 24, kept, &C::getThemeDescFontSize, &C::setThemeDescFontSize, 19),
        row("ThemeDialog/SummaryFontSize", 16, kept, &C::getThemeSummaryFontSize, &C::setThemeSummaryFontSize,
            20),
        row("ThemeDialog/Width", 600, kept, &C::getThemeWidth, &C::setThemeWidth, 777),
        row("ThemeDialog/Position", 1, kept, &C::getThemePosition, &C::setThemePosition, 2),
        row("ThemeDialog/Hotkey", t("Tab"), kept, &C::getThemeHotkey, &C::setThemeHotkey, t("F24")),
    };
}

ConfigManager &config()
{
    return *ConfigManager::instance();
}

/// What the file holds once everything pending is written: read from a copy, since QSettings objects on one
/// path share their contents.
class FileContents
{
public:
    FileContents()
    {
        config().sync();
        const QString copy = m_dir.filePath(QStringLiteral("copy.ini"));
        QFile::copy(settingsFilePath(), copy);
        m_settings = std::make_unique<QSettings>(copy, QSettings::IniFormat);
        m_settings->setIniCodec("UTF-8");
    }

    QVariant value(const QString &key) const { return m_settings->value(key); }
    bool contains(const QString &key) const { return m_settings->contains(key); }
    QStringList keys() const { return m_settings->allKeys(); }

private:
    QTemporaryDir m_dir;
    std::unique_ptr<QSettings> m_settings;
};

/// Stores a raw value under a key, past the accessors, as a hand would in the file.
void store(const QString &key, const QVariant &value)
{
    QSettings settings(settingsFilePath(), QSettings::IniFormat);
    settings.setValue(key, value);
}

} // namespace

class TestConfigManager : public QObject
{
    Q_OBJECT

private slots:
    void init() { clearSettings(); }

    void thereIsOneInstanceInItsOwnFileOfTheUsersDataFolder()
    {
        QCOMPARE(ConfigManager::instance(), ConfigManager::instance());
        QVERIFY(settingsFilePath().endsWith(QStringLiteral("/Fernhollow/Larkspire/larkspire.ini")));
        config().setAuthUsername(t("云雀"));
        config().sync();
        QFile file(settingsFilePath());
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        QVERIFY2(file.readAll().contains("[Auth]\nUsername=云雀\n"), "plain UTF-8, not escaped");
    }

    void clearingTheSettingsReachesALiveInstance()
    {
        config().setAuthUsername(t("written"));
        config().sync();
        config().setAuthEmail(t("pending"));
        clearSettings();
        QCOMPARE(config().getAuthUsername(), QString());
        QCOMPARE(config().getAuthEmail(), QString());
        QCOMPARE(FileContents().keys(), QStringList());
    }

    void anAbsentKeyReadsItsDefaultAndIsNotWritten_data() { addRows(); }
    void anAbsentKeyReadsItsDefaultAndIsNotWritten()
    {
        QFETCH(int, index);
        const Row row = rows().at(index);
        QCOMPARE(row.get(config()), row.onRead);
        QVERIFY(!FileContents().contains(row.key));
    }

    void anAccessorPairKeepsItsValueUnderItsKeyInTheFile_data() { addRows(); }
    void anAccessorPairKeepsItsValueUnderItsKeyInTheFile()
    {
        QFETCH(int, index);
        const Row row = rows().at(index);
        if (!row.setSample) {
            store(row.key, !row.onRead.toBool());
            QCOMPARE(row.get(config()), QVariant(!row.onRead.toBool()));
            return;
        }
        QVERIFY2(row.sample != row.onRead, "a sample like the default would prove nothing");
        row.setSample(config());
        QCOMPARE(row.get(config()), row.sample);
        const FileContents file;
        QCOMPARE(file.keys(), QStringList{row.key});
        QVariant stored = file.value(row.key);
        QVERIFY(stored.convert(row.sample.userType()));
        QCOMPARE(stored, row.sample);
    }

    void aResetWritesItsColumnAndLeavesTheRest_data() { addRows(); }
    void aResetWritesItsColumnAndLeavesTheRest()
    {
        QFETCH(int, index);
        const Row row = rows().at(index);
        if (row.setSample)
            row.setSample(config());
        config().resetToDefaults();
        QCOMPARE(row.get(config()), row.onReset.isValid() ? row.onReset : row.sample);
    }

    void aResetOfAnEmptyFileWritesExactlyItsColumn()
    {
        QStringList expected;
        for (const Row &row : rows()) {
            if (row.onReset.isValid())
                expected.append(row.key);
        }
        expected.sort();
        config().resetToDefaults();
        QStringList written = FileContents().keys();
        written.sort();
        QCOMPARE(written, expected);
        QCOMPARE(written.size(), 32);
    }

    void aResetIsOnDiskWithoutAFurtherSync()
    {
        config().resetToDefaults();
        QFile file(settingsFilePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().contains("MainBoardColor=red"));
    }

    void aFirstRunDiffersFromAReset()
    {
        QCOMPARE(config().getWindowSize(), QSize(750, 980));
        QCOMPARE(config().getRefreshInterval(), 8);
        QCOMPARE(config().getMainBoardColor(), t("orange"));
        config().resetToDefaults();
        QCOMPARE(config().getWindowSize(), QSize(1200, 800));
        QCOMPARE(config().getRefreshInterval(), 60);
        QCOMPARE(config().getMainBoardColor(), t("red"));
    }

    void aResetKeepsTheUserLoggedIn()
    {
        config().setDeviceId(t("device"));
        config().setSessionToken(t("token"));
        config().setAuthUsername(t("name"));
        config().setAuthPassword(t("secret"));
        config().resetToDefaults();
        QCOMPARE(config().getSessionToken(), t("token"));
        QCOMPARE(config().getAuthUsername(), t("name"));
        QCOMPARE(config().getAuthPassword(), t("secret"));
    }

    void theRequestTimeLimitIsRepairedOnReading_data()
    {
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<int>("seconds");
        const auto add = [](const char *name, const QVariant &stored, int seconds) {
            QTest::newRow(name) << stored << seconds;
        };
        add("negative", -3, 10);
        add("lowest number", std::numeric_limits<int>::min(), 10);
        add("nothing", 0, 10);
        add("smallest", 1, 1);
        add("usual", 45, 45);
        add("largest in seconds", 100, 100);
        add("smallest in milliseconds", 101, 5);
        add("some milliseconds", 2500, 5);
        add("just under six seconds", 5999, 5);
        add("six seconds", 6000, 6);
        add("the record's own default", 10000, 10);
        add("thirty seconds", 30999, 30);
        add("beyond thirty seconds", 31000, 30);
        add("far beyond", 45000, 30);
        add("a minute", 60000, 30);
        add("highest number", std::numeric_limits<int>::max(), 30);
        add("no number", t("soon"), 10);
        add("a fraction", t("7.5"), 10);
    }

    void theRequestTimeLimitIsRepairedOnReading()
    {
        QFETCH(QVariant, stored);
        QFETCH(int, seconds);
        store(t("API/Timeout"), stored);
        QCOMPARE(config().getApiTimeout(), seconds);
        QCOMPARE(FileContents().value(t("API/Timeout")).toInt(), seconds);
    }

    void aRefreshIntervalBelowFiveIsStoredAsFive_data()
    {
        QTest::addColumn<int>("given");
        QTest::addColumn<int>("stored");
        QTest::newRow("negative") << -1 << 5;
        QTest::newRow("three") << 3 << 5;
        QTest::newRow("five") << 5 << 5;
        QTest::newRow("six") << 6 << 6;
        QTest::newRow("long") << 86400 << 86400;
    }

    void aRefreshIntervalBelowFiveIsStoredAsFive()
    {
        QFETCH(int, given);
        QFETCH(int, stored);
        config().setRefreshInterval(given);
        QCOMPARE(FileContents().value(t("Features/RefreshInterval")).toInt(), stored);
    }

    void aRefreshIntervalFromAHandEditedFileReadsAsItStands()
    {
        store(t("Features/RefreshInterval"), 1);
        QCOMPARE(config().getRefreshInterval(), 1);
    }

    void aCustomPositionReadsAndWritesItsTwoKeysTogether_data()
    {
        QTest::addColumn<QString>("group");
        QTest::newRow("stock move analysis") << t("DynamicAnalysisDialog");
        QTest::newRow("concepts") << t("ThemeDialog");
    }

    void aCustomPositionReadsAndWritesItsTwoKeysTogether()
    {
        QFETCH(QString, group);
        const bool ofConcepts = group == t("ThemeDialog");
        const auto get = [ofConcepts] {
            return ofConcepts ? config().getThemeCustomPosition() : config().getDynamicCustomPosition();
        };
        QCOMPARE(get(), QPoint(-1, -1));
        if (ofConcepts)
            config().setThemeCustomPosition({31, -7});
        else
            config().setDynamicCustomPosition({31, -7});
        QCOMPARE(get(), QPoint(31, -7));
        const FileContents file;
        QCOMPARE(file.keys().size(), 2);
        QCOMPARE(file.value(group + t("/CustomPositionX")).toInt(), 31);
        QCOMPARE(file.value(group + t("/CustomPositionY")).toInt(), -7);
        config().resetToDefaults();
        QCOMPARE(get(), QPoint(31, -7));
    }

    void aPasswordSurvivesAndIsNotStoredInClear()
    {
        const QString password = t("密码 pässwörd 🔑 0123456789 0123456789 0123456789");
        config().setDeviceId(t("3f1c07ab"));
        config().setAuthPassword(password);
        QCOMPARE(config().getAuthPassword(), password);
        QCOMPARE(FileContents().value(t("Auth/Password")).toString(),
                 PasswordScrambling::scrambled(password, t("3f1c07ab")));
        QFile file(settingsFilePath());
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(!file.readAll().contains("0123456789"));
    }

    void aPasswordUnderAnotherDeviceIdIsGarbageWithoutError()
    {
        config().setDeviceId(t("one"));
        config().setAuthPassword(t("secret"));
        config().setDeviceId(t("two"));
        QVERIFY(config().getAuthPassword() != t("secret"));
        QVERIFY(!config().getAuthPassword().isEmpty());
        config().setDeviceId(t("one"));
        QCOMPARE(config().getAuthPassword(), t("secret"));
    }

    void withoutADeviceIdTheMachinesUniqueIdIsTheKey()
    {
        const QString machineId = QString::fromUtf8(QSysInfo::machineUniqueId());
        config().setAuthPassword(t("secret"));
        QCOMPARE(FileContents().value(t("Auth/Password")).toString(),
                 PasswordScrambling::scrambled(t("secret"), machineId));
        // A machine without an id has no key: nothing is stored rather than the clear text.
        QCOMPARE(config().getAuthPassword(), machineId.isEmpty() ? QString() : t("secret"));
    }

    void anEmptyPasswordIsStoredEmpty()
    {
        config().setDeviceId(t("device"));
        config().setAuthPassword(t("secret"));
        config().setAuthPassword(QString());
        const FileContents file;
        QVERIFY(file.contains(t("Auth/Password")));
        QCOMPARE(file.value(t("Auth/Password")).toString(), QString());
        QCOMPARE(config().getAuthPassword(), QString());
    }

    void aValueOfAWrongTypeConvertsAsFarAsItGoes()
    {
        store(t("StockAnalysis/BasicInfoFontSize"), t("large"));
        QCOMPARE(config().getBasicInfoFontSize(), 0);
        store(t("Features/TTSVolume"), t("loud"));
        QCOMPARE(config().getTtsVolume(), 0.0);
        store(t("Theme/DarkMode"), t("yes"));
        QCOMPARE(config().getDarkMode(), true);
        store(t("Theme/DarkMode"), t("0"));
        QCOMPARE(config().getDarkMode(), false);
        store(t("Window/Position"), t("left"));
        QCOMPARE(config().getWindowPosition(), QPoint());
        store(t("Window/Size"), t("big"));
        QCOMPARE(config().getWindowSize(), QSize());
        store(t("Auth/LastLoginTime"), t("yesterday"));
        QVERIFY(!config().getLastLoginTime().isValid());
        store(t("API/Key"), 12);
        QCOMPARE(config().getApiKey(), t("12"));
    }

    void theReservedKeysAreNeverWritten()
    {
        for (const Row &row : rows()) {
            if (row.setSample)
                row.setSample(config());
        }
        config().resetToDefaults();
        const FileContents file;
        for (const char *const key :
             {"StockAnalysis/TopMost", "StockHelper/TdxOffsetAddr", "StockHelper/ThsOffsetAddr"})
            QVERIFY(!file.contains(QLatin1String(key)));
        QCOMPARE(SettingsTable::reservedTopMostKey, t("StockAnalysis/TopMost"));
        QCOMPARE(SettingsTable::reservedTdxOffsetAddrKey, t("StockHelper/TdxOffsetAddr"));
        QCOMPARE(SettingsTable::reservedThsOffsetAddrKey, t("StockHelper/ThsOffsetAddr"));
    }

private:
    static void addRows()
    {
        QTest::addColumn<int>("index");
        const QVector<Row> all = rows();
        for (int i = 0; i < all.size(); ++i)
            QTest::newRow(qPrintable(all.at(i).key)) << i;
    }
};

LARKSPIRE_GUILESS_TEST_MAIN(TestConfigManager)
#include "tst_configmanager.moc"
