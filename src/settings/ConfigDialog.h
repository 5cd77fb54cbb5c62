#pragma once

#include "settings/AppConfig.h"
#include "settings/ServiceAnswer.h"

#include <QColor>
#include <QDialog>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QNetworkRequest;
class QPushButton;
class QSpinBox;
class QTabWidget;

/// Edits what ConfigManager stores, on six tabs; tests the service and the key with requests of its own.
/// Made for one exec().
///
/// OK writes every setting to ConfigManager; whoever opened the dialog applies getConfig() to the running
/// program. A reset writes at once and leaves the dialog open, so it stands even when the dialog is cancelled
/// afterwards: wasReset() tells.
class ConfigDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \p config gives the dark mode's start value; everything else loads from ConfigManager.
    explicit ConfigDialog(const AppConfig &config, QWidget *parent = nullptr);
    ~ConfigDialog() override;
    Q_DISABLE_COPY_MOVE(ConfigDialog)

    /// What the widgets show, over the defaults of a new record: the fields without a widget (top-most flag,
    /// volume, place and size of the window) are defaults. The time limit is in seconds.
    AppConfig getConfig() const;

    /// Whether the settings have been reset since the dialog was made.
    bool wasReset() const { return m_wasReset; }

public slots:
    /// Writes the settings and closes; says what is wrong and stays open while an entry is faulty.
    void accept() override;

private slots:
    void onTestConnectionClicked();
    void onTestApiKeyClicked();
    void onRefreshDeviceInfoClicked();
    void onResetToDefaultsClicked();
    void onPreviewColorsClicked();

private:
    /// One edited setting between its three places.
    struct Edited
    {
        std::function<void()> load;                   ///< from the store to the widget
        std::function<void()> save;                   ///< from the widget to the store
        std::function<void(AppConfig &)> read;        ///< from the widget to a record
        std::function<void(const AppConfig &)> reset; ///< from a record to the widget; empty: left alone
    };
    enum class OnReset
    {
        Default, ///< the widget takes the record's default
        Kept
    };
    /// Adds an edited setting. \p shown returns the widget's value, \p show sets it.
    template <typename Getter, typename Setter, typename Field, typename Shown, typename Show>
    void edit(Getter getter, Setter setter, Field field, Shown shown, Show show,
              OnReset onReset = OnReset::Default);

    QWidget *buildFeaturesTab();
    QWidget *buildStockTab();
    QWidget *buildMarketTab();
    QWidget *buildConceptTab();
    QWidget *buildServerTab();
    QWidget *buildDeviceTab();
    static QCheckBox *addCheckBox(QFormLayout *form, const QString &name, const QString &text);
    static QSpinBox *addSpinBox(QFormLayout *form, const QString &name, const QString &label, int minimum,
                                int maximum, const QString &suffix);
    static QComboBox *addStockColorBox(QFormLayout *form, const QString &name, const QString &label);
    static QComboBox *addHotkeyBox(QFormLayout *form, const QString &name, const QString &label);
    static QPushButton *addButton(const QString &name, const QString &text);
    /// A button that opens the colour dialog, beside a preview of the colour.
    QLabel *addColorButton(QFormLayout *form, const QString &name, const QString &label, QColor &color,
                           const QString &previewStyle, const QString &dialogTitle);
    static QLabel *addDeviceLabel(QFormLayout *form, const QString &name, const QString &label);

    void save();
    void showDeviceInfo();
    static void showColor(QLabel *preview, const QColor &color, const QString &previewStyle);
    void chooseColor(QColor &color, QLabel *preview, const QString &previewStyle, const QString &dialogTitle);
    QString serverAddress() const;
    QString apiKey() const;
    /// Sends the request of a test while its button is disabled and says so. No answer when the dialog was
    /// closed meanwhile.
    std::optional<ServiceAnswer> ask(QPushButton *button, const QString &busyText, const QString &path,
                                     const std::function<void(QNetworkRequest &)> &identify);

    std::vector<Edited> m_edited; ///< in the order of the tabs
    bool m_wasReset = false;

    QTabWidget *m_tabs;
    QCheckBox *m_darkModeCheckBox = nullptr;
    QComboBox *m_mainBoardColorComboBox = nullptr;
    QComboBox *m_gemColorComboBox = nullptr;
    QComboBox *m_starMarketColorComboBox = nullptr;
    QComboBox *m_beijingExchangeColorComboBox = nullptr;
    QLineEdit *m_serverUrlEdit = nullptr;
    QLineEdit *m_apiKeyEdit = nullptr;
    QSpinBox *m_timeoutSpinBox = nullptr;
    QPushButton *m_testConnectionButton = nullptr;
    QPushButton *m_testApiKeyButton = nullptr;
    QLabel *m_deviceIdLabel = nullptr;
    QLabel *m_deviceNameLabel = nullptr;
    QLabel *m_deviceTypeLabel = nullptr;
    QLabel *m_osInfoLabel = nullptr;

    QColor m_cardBgColor;
    QColor m_descColor;
    QColor m_bgColor;
    QColor m_nameColor;
};
