#pragma once

#include "stockviews/LabelContent.h"

#include <QMap>
#include <QString>

class ElidingLabel;
class NameLabel;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;
class QWidget;
class ValueLabel;

/// The widgets of the stock page, under their object names. It builds them and lays them out; it holds no
/// rule and no connection.
struct StockAnalysisUi
{
    void setupUi(QWidget *page);

    /// The sizes in points that the settings ask for.
    struct FontSizes
    {
        int name = 14;
        int basic = 10;
        int history = 12;
        int opening = 12;
    };
    /// Gives the cells their sizes. Call again whenever sizes, skin or the page's width have changed.
    void setFontSizes(const FontSizes &sizes);
    /// Writes the values as large as the room allows, up to the sizes of setFontSizes().
    void fitValues();
    /// Puts these texts, styles and tool tips into the labels of these names.
    void showContents(const LabelContents &contents);
    void showContent(const QString &name, const LabelContent &content);
    /// Writes the captions in a grey that reads well on this skin.
    void setDarkSkin(bool dark);

    QVBoxLayout *pageLayout = nullptr;

    QGroupBox *controlGroup = nullptr;
    QPushButton *themeButton = nullptr;
    QPushButton *settingsButton = nullptr;
    QPushButton *currentSoftwareButton = nullptr;
    QComboBox *linkageComboBox = nullptr;
    QComboBox *tdxInstanceComboBox = nullptr;
    QComboBox *thsInstanceComboBox = nullptr;
    QCheckBox *autoRefreshCheckBox = nullptr;
    QLabel *autoRefreshIndicator = nullptr;
    ElidingLabel *statusLabel = nullptr;

    QHBoxLayout *stockActionButtonsLayout = nullptr;
    QPushButton *searchStockButton = nullptr;
    QPushButton *blacklistButton = nullptr;
    QPushButton *softwareSwitchButton = nullptr;
    QPushButton *compactModeButton = nullptr;

    QGridLayout *grid = nullptr;
    NameLabel *companyNameLabel = nullptr;
    ElidingLabel *regionLabel = nullptr;
    ElidingLabel *industryLabel = nullptr;
    ElidingLabel *businessLabel = nullptr;
    ElidingLabel *netProfitLabel = nullptr;
    ElidingLabel *ma5ConsecutiveDaysLabel = nullptr;
    ValueLabel *ma5StatusLabel = nullptr;
    QLabel *trendSignalsLabel = nullptr;
    QProgressBar *marketActivityProgressBar = nullptr;
    ValueLabel *recentLimitUpValueLabel = nullptr;

    /// The value cells by object name: those of the basic information, of the history, and of the opening.
    QMap<QString, ValueLabel *> basicValues;
    QMap<QString, ValueLabel *> historyValues;
    QMap<QString, ValueLabel *> openingValues;

    QGridLayout *stockNavigationLayout = nullptr;
    /// The portal buttons by object name.
    QMap<QString, QPushButton *> portalButtons;

private:
    void buildControlGroup(QWidget *page);
    void buildHeader(QWidget *page);
    void buildGrid(QWidget *page);
    void buildNavigation(QWidget *page);
    ElidingLabel *addCaption(QWidget *page, int row, int column, const QString &objectName,
                             const QString &text);

    QMap<QString, ElidingLabel *> m_captions;
    QMap<QString, QLabel *> m_labels; ///< all that show something of a stock, by object name
    FontSizes m_sizes;
};
