#include "settings/ThemeManager.h"

#include "support/IsolatedHome.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

namespace {

QString t(const char *text)
{
    return QString::fromLatin1(text);
}

} // namespace

class TestThemeManager : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QApplication::setStyle(QStyleFactory::create(t("Fusion")));
        m_ownPalette = QApplication::palette();
    }

    // The first test: the instance is as it comes.
    void theDarkThemeIsTheFirstAndSettingItAppliesNothing()
    {
        ThemeManager *const manager = ThemeManager::instance();
        QCOMPARE(manager, ThemeManager::instance());
        QCOMPARE(manager->currentTheme(), ThemeManager::DarkTheme);
        QSignalSpy changed(manager, &ThemeManager::themeChanged);
        const QPalette before = QApplication::palette();
        manager->setTheme(ThemeManager::DarkTheme);
        QCOMPARE(changed.count(), 0);
        QCOMPARE(QApplication::palette(), before);
    }

    void aSwitchThereAndBackTellsTwice()
    {
        ThemeManager *const manager = ThemeManager::instance();
        QSignalSpy changed(manager, &ThemeManager::themeChanged);
        manager->setTheme(ThemeManager::LightTheme);
        QCOMPARE(manager->currentTheme(), ThemeManager::LightTheme);
        QCOMPARE(changed.count(), 1);
        manager->setTheme(ThemeManager::LightTheme);
        QCOMPARE(changed.count(), 1);
        manager->setTheme(ThemeManager::DarkTheme);
        QCOMPARE(manager->currentTheme(), ThemeManager::DarkTheme);
        QCOMPARE(changed.count(), 2);
    }

    void thePaletteIsInPlaceWhenTheSignalComes()
    {
        ThemeManager *const manager = ThemeManager::instance();
        manager->setTheme(ThemeManager::DarkTheme);
        QColor seen;
        QObject context;
        connect(manager, &ThemeManager::themeChanged, &context,
                [&seen] { seen = QApplication::palette().color(QPalette::Window); });
        manager->setTheme(ThemeManager::LightTheme);
        QCOMPARE(seen, QColor(0xF8, 0xF9, 0xFA));
    }

    void aThemeSetsTheColourOfARole_data()
    {
        QTest::addColumn<int>("role");
        QTest::addColumn<QString>("dark");
        QTest::addColumn<QString>("light");
        const auto add = [](const char *name, QPalette::ColorRole role, const char *dark, const char *light) {
            QTest::newRow(name) << int(role) << t(dark) << t(light);
        };
        add("Window", QPalette::Window, "#2C2F33", "#F8F9FA");
        add("WindowText", QPalette::WindowText, "#DCDDDE", "#2C2F33");
        add("Base", QPalette::Base, "#36393F", "#FFFFFF");
        add("AlternateBase", QPalette::AlternateBase, "#2C2F33", "#F8F9FA");
        add("ToolTipBase", QPalette::ToolTipBase, "#2C2F33", "#FFFFFF");
        add("ToolTipText", QPalette::ToolTipText, "#DCDDDE", "#2C2F33");
        add("Text", QPalette::Text, "#DCDDDE", "#2C2F33");
        add("Button", QPalette::Button, "#36393F", "#FFFFFF");
        add("ButtonText", QPalette::ButtonText, "#DCDDDE", "#2C2F33");
        add("BrightText", QPalette::BrightText, "#FFFFFF", "#FFFFFF");
        add("Link", QPalette::Link, "#00D4AA", "#00D4AA");
        // Not set on the light skin: the colours of style and system show.
        add("Highlight", QPalette::Highlight, "#00D4AA", "");
        add("HighlightedText", QPalette::HighlightedText, "#FFFFFF", "");
    }

    void aThemeSetsTheColourOfARole()
    {
        QFETCH(int, role);
        QFETCH(QString, dark);
        QFETCH(QString, light);
        const auto colour = static_cast<QPalette::ColorRole>(role);
        ThemeManager *const manager = ThemeManager::instance();
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled}) {
            manager->setTheme(ThemeManager::LightTheme);
            manager->setTheme(ThemeManager::DarkTheme);
            QCOMPARE(QApplication::palette().color(group, colour), QColor(dark));
            manager->setTheme(ThemeManager::LightTheme);
            QCOMPARE(QApplication::palette().color(group, colour),
                     light.isEmpty() ? m_ownPalette.color(group, colour) : QColor(light));
        }
    }

    void aThemeHandsOutItsStyleSheets_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("dialog");
        QTest::addColumn<QString>("lineEdit");
        QTest::addColumn<QString>("label");
        QTest::newRow("dark")
            << int(ThemeManager::DarkTheme)
            << t("QDialog {    background-color: #2C2F33;    color: #DCDDDE;    border-radius: 10px;}"
                 "QDialog QLabel {    color: #DCDDDE;}")
            << t("QLineEdit {    background-color: #36393F;    color: #DCDDDE;    border: 1px solid #72767D;"
                 "    border-radius: 5px;    padding: 12px 16px;    font-size: 14px;"
                 "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;    min-height: 20px;}"
                 "QLineEdit:focus {    border-color: #00D4AA;    background-color: #36393F;}"
                 "QLineEdit::placeholder {    color: #B9BBBE;}")
            << t("QLabel {    color: #DCDDDE;    font-size: 14px;"
                 "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;    font-weight: normal;}"
                 "QLabel.secondary {    color: #B9BBBE;    font-size: 13px;"
                 "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;    font-weight: normal;}");
        QTest::newRow("light")
            << int(ThemeManager::LightTheme)
            << t("QDialog {    background-color: #F8F9FA;    color: #2C2F33;    border-radius: 10px;}"
                 "QDialog QLabel {    color: #2C2F33;}")
            << t("QLineEdit {    background-color: #FFFFFF;    color: #2C2F33;    border: 1px solid #B9BBBE;"
                 "    border-radius: 5px;    padding: 12px 16px;    font-size: 14px;"
                 "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;    min-height: 20px;}"
                 "QLineEdit:focus {    border-color: #00D4AA;    background-color: #FFFFFF;}"
                 "QLineEdit::placeholder {    color: #72767D;}")
            << t("QLabel {    color: #2C2F33;    font-size: 14px;"
                 "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;    font-weight: normal;}"
                 "QLabel.secondary {    color: #72767D;    font-size: 13px;"
                 "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;    font-weight: normal;}");
    }

    void aThemeHandsOutItsStyleSheets()
    {
        QFETCH(int, mode);
        QFETCH(QString, dialog);
        QFETCH(QString, lineEdit);
        QFETCH(QString, label);
        ThemeManager *const manager = ThemeManager::instance();
        manager->setTheme(static_cast<ThemeManager::ThemeMode>(mode));
        QCOMPARE(manager->getDialogStyle(), dialog);
        QCOMPARE(manager->getLineEditStyle(), lineEdit);
        QCOMPARE(manager->getLabelStyle(), label);
        // The accent serves both; pressed and hovered it is a fifth darker.
        QCOMPARE(manager->getButtonStyle(),
                 t("QPushButton {    background-color: #00D4AA;    color: #FFFFFF;    border: none;"
                   "    border-radius: 5px;    padding: 12px 24px;    font-size: 14px;"
                   "    font-family: 'Microsoft YaHei', 'SimHei', Arial, sans-serif;    font-weight: bold;}"
                   "QPushButton:hover {    background-color: #00b18e;}"
                   "QPushButton:pressed {    background-color: #00b18e;}"
                   "QPushButton:disabled {    background-color: #cccccc;    color: #666666;}"));
    }

private:
    /// As it is before anybody sets one.
    QPalette m_ownPalette;
};

LARKSPIRE_TEST_MAIN(TestThemeManager)
#include "tst_thememanager.moc"
