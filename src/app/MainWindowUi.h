#pragma once

class CustomTableWidget;
class QAction;
class QCheckBox;
class QFrame;
class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QMainWindow;
class QMenu;
class QMenuBar;
class QProgressBar;
class QPushButton;
class QSlider;
class QSplitter;
class QStatusBar;
class QTabWidget;
class QTextBrowser;
class QVBoxLayout;
class QWidget;

/// The widgets of the main window, each under the object name of its member. A plain structure: the widgets
/// belong to the window by Qt's parent ownership.
struct MainWindowUi
{
    /// Builds all widgets into the window and gives it the form's initial size. Call once. A status bar that
    /// the window already has is taken over, with the message it shows.
    void setupUi(QMainWindow *window);

    // The menus.
    QMenuBar *menubar = nullptr;
    QMenu *menuFile = nullptr;
    QMenu *menuTool = nullptr;
    QMenu *menuUser = nullptr;
    QMenu *menuHelp = nullptr;
    QAction *actionExit = nullptr;
    QAction *actionConfig = nullptr;
    QAction *actionKeywordManager = nullptr;
    QAction *actionLogin = nullptr;
    QAction *actionUserInfo = nullptr;
    QAction *actionCustomerService = nullptr;
    QAction *actionToggleTheme = nullptr;
    QAction *actionSelectLoginMethod = nullptr;
    QAction *actionWebsite = nullptr;
    QAction *actionUpdate = nullptr;
    QAction *actionAbout = nullptr;

    // The frame of the pages.
    QWidget *centralwidget = nullptr;
    QVBoxLayout *verticalLayout = nullptr;
    QTabWidget *mainTabWidget = nullptr;

    // The live news.
    QWidget *mainPage = nullptr;
    QVBoxLayout *mainPageLayout = nullptr;
    QSplitter *mainVerticalSplitter = nullptr;
    QGroupBox *detailsGroupBox = nullptr;
    QTextBrowser *detailsTextEdit = nullptr;
    QWidget *newsWidget = nullptr;
    CustomTableWidget *newsTableWidget = nullptr;

    // The places of the market page and the stock page.
    QWidget *marketStatisticsPage = nullptr;
    QVBoxLayout *marketStatisticsPageLayout = nullptr;
    QWidget *marketStatisticsWidget = nullptr;
    QWidget *stockAnalysisPage = nullptr;
    QVBoxLayout *stockAnalysisPageLayout = nullptr;
    QWidget *stockAnalysisWidget = nullptr;

    // The news of the interactive platform.
    QWidget *interactivePlatformPage = nullptr;
    QSplitter *interactivePlatformSplitter = nullptr;
    QGroupBox *interactivePlatformDetailsGroupBox = nullptr;
    QTextBrowser *interactivePlatformDetailsTextEdit = nullptr;
    QWidget *interactivePlatformListWidget = nullptr;
    CustomTableWidget *interactivePlatformTableWidget = nullptr;
    QGroupBox *interactivePlatformControlGroupBox = nullptr;
    QLabel *interactivePlatformCountLabel = nullptr;
    QLineEdit *interactivePlatformCountLineEdit = nullptr;
    QPushButton *refreshInteractivePlatformButton = nullptr;

    // The news of the selected keywords.
    QWidget *selectedNewsPage = nullptr;
    QSplitter *selectedNewsSplitter = nullptr;
    QGroupBox *selectedNewsDetailsGroupBox = nullptr;
    QTextBrowser *selectedNewsDetailsTextEdit = nullptr;
    QWidget *selectedNewsResultsWidget = nullptr;
    CustomTableWidget *selectedNewsTableWidget = nullptr;
    QGroupBox *selectedNewsControlGroupBox = nullptr;
    QLabel *selectedNewsCountLabel = nullptr;
    QLineEdit *selectedNewsCountLineEdit = nullptr;
    QPushButton *refreshSelectedNewsButton = nullptr;
    QPushButton *manageSelectedKeywordsButton = nullptr;

    // The search results.
    QWidget *searchPage = nullptr;
    QSplitter *searchRightSplitter = nullptr;
    QGroupBox *searchDetailsGroupBox = nullptr;
    QTextBrowser *searchDetailsTextEdit = nullptr;
    QWidget *searchResultsWidget = nullptr;
    CustomTableWidget *searchResultsTableWidget = nullptr;

    // The row of controls beneath the pages.
    QGroupBox *searchGroupBox = nullptr;
    QHBoxLayout *searchLayout = nullptr;
    QLineEdit *searchLineEdit = nullptr;
    QPushButton *searchButton = nullptr;
    QFrame *line = nullptr;
    QCheckBox *topMostCheckBox = nullptr;
    QCheckBox *ttsCheckBox = nullptr;
    QLabel *volumeLabel = nullptr;
    QLabel *volumeValueLabel = nullptr;
    QSlider *volumeSlider = nullptr;
    QPushButton *refreshButton = nullptr;

    // The status bar.
    QStatusBar *statusbar = nullptr;
    QLabel *statusLabel = nullptr;
    QLabel *newsCountLabel = nullptr;
    QLabel *connectionLabel = nullptr;
    QProgressBar *progressBar = nullptr;
    QLabel *userStatusLabel = nullptr;
    QPushButton *userInfoButton = nullptr;

private:
    void buildMenus(QMainWindow *window);
    void buildMainPage();
    void buildPlaces();
    void buildInteractivePlatformPage();
    void buildSelectedNewsPage();
    void buildSearchPage();
    void buildControlRow();
    void buildStatusBar(QMainWindow *window);
};
