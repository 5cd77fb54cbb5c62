#include "app/MainWindowUi.h"

#include "app/MainTabs.h"
#include "news/CustomTableWidget.h"
#include "settings/InputField.h"

#include <QAction>
#include <QCheckBox>
#include <QFrame>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QSplitter>
#include <QStatusBar>
#include <QTabWidget>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {

constexpr int FormWidth = 343;
constexpr int FormHeight = 697;
constexpr int DetailsMinimumHeight = 250;
constexpr int ControlRowMaximumHeight = 80;
constexpr int CountFieldMaximumWidth = 80;
constexpr int PageButtonAir = 28;
constexpr int StatusItemTop = 2;
constexpr int StatusItemHeight = 20;
constexpr int StatusTextIndent = 6;

template <typename Kind, typename... Arguments>
Kind *make(const QString &objectName, Arguments... arguments)
{
    auto *object = new Kind(arguments...);
    object->setObjectName(objectName);
    return object;
}

QAction *makeAction(const QString &objectName, const QString &text, QMainWindow *window)
{
    return make<QAction>(objectName, text, window);
}

QSplitter *makeListSplitter(const QString &objectName)
{
    auto *splitter = make<QSplitter>(objectName, Qt::Vertical);
    return splitter;
}

QGroupBox *makeDetailsGroupBox(const QString &objectName, const QString &title)
{
    auto *groupBox = make<QGroupBox>(objectName, title);
    groupBox->setMinimumHeight(DetailsMinimumHeight);
    return groupBox;
}

QTextBrowser *makeDetailsView(const QString &objectName, QGroupBox *groupBox)
{
    auto *view = make<QTextBrowser>(objectName);
    auto *layout = new QVBoxLayout(groupBox);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->addWidget(view);
    return view;
}

CustomTableWidget *makeTable(const QString &objectName, QWidget *holder)
{
    auto *table = make<CustomTableWidget>(objectName, holder);
    auto *layout = new QVBoxLayout(holder);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(table);
    return table;
}

/// A field that shows a count: read-only, figures on the right edge, out of the tab order.
QLineEdit *makeCountField(const QString &objectName, const QString &text)
{
    auto *field = make<QLineEdit>(objectName);
    field->setReadOnly(true);
    field->setMaximumWidth(CountFieldMaximumWidth);
    field->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    field->setFocusPolicy(Qt::ClickFocus);
    field->setAccessibleName(text);
    return field;
}

/// A button whose text does not touch its frame; the style leaves a text of six characters no air.
QPushButton *makePageButton(const QString &objectName, const QString &text)
{
    auto *button = make<QPushButton>(objectName, text);
    button->setMinimumWidth(button->fontMetrics().horizontalAdvance(text) + PageButtonAir);
    return button;
}

} // namespace

void MainWindowUi::setupUi(QMainWindow *window)
{
    window->resize(FormWidth, FormHeight);
    buildMenus(window);

    centralwidget = make<QWidget>(QStringLiteral("centralwidget"), window);
    verticalLayout = make<QVBoxLayout>(QStringLiteral("verticalLayout"), centralwidget);
    verticalLayout->setSpacing(2);
    verticalLayout->setContentsMargins(4, 4, 4, 2);

    mainTabWidget = make<MainTabs>(QStringLiteral("mainTabWidget"), centralwidget);
    mainTabWidget->setTabPosition(QTabWidget::South);
    verticalLayout->addWidget(mainTabWidget);

    buildMainPage();
    buildPlaces();
    buildInteractivePlatformPage();
    buildSelectedNewsPage();
    buildSearchPage();
    mainTabWidget->addTab(mainPage, QStringLiteral("实时新闻"));
    mainTabWidget->addTab(marketStatisticsPage, QStringLiteral("行情统计"));
    mainTabWidget->addTab(stockAnalysisPage, QStringLiteral("股票分析"));
    mainTabWidget->addTab(interactivePlatformPage, QStringLiteral("互动平台"));
    mainTabWidget->addTab(selectedNewsPage, QStringLiteral("自选新闻"));
    mainTabWidget->addTab(searchPage, QStringLiteral("搜索结果"));
    mainTabWidget->setCurrentIndex(0);

    buildControlRow();
    window->setCentralWidget(centralwidget);
    buildStatusBar(window);
}

void MainWindowUi::buildMenus(QMainWindow *window)
{
    actionExit = makeAction(QStringLiteral("actionExit"), QStringLiteral("退出"), window);
    actionConfig = makeAction(QStringLiteral("actionConfig"), QStringLiteral("系统配置"), window);
    actionKeywordManager =
        makeAction(QStringLiteral("actionKeywordManager"), QStringLiteral("关键词管理"), window);
    actionLogin = makeAction(QStringLiteral("actionLogin"), QStringLiteral("登录"), window);
    actionUserInfo = makeAction(QStringLiteral("actionUserInfo"), QStringLiteral("用户信息"), window);
    actionCustomerService =
        makeAction(QStringLiteral("actionCustomerService"), QStringLiteral("客服(C)"), window);
    actionToggleTheme = makeAction(QStringLiteral("actionToggleTheme"), QStringLiteral("换肤(T)"), window);
    actionSelectLoginMethod =
        makeAction(QStringLiteral("actionSelectLoginMethod"), QStringLiteral("切换登录方式(L)"), window);
    actionWebsite = makeAction(QStringLiteral("actionWebsite"), QStringLiteral("软件官网"), window);
    actionUpdate = makeAction(QStringLiteral("actionUpdate"), QStringLiteral("软件更新"), window);
    actionAbout = makeAction(QStringLiteral("actionAbout"), QStringLiteral("关于"), window);

    menubar = make<QMenuBar>(QStringLiteral("menubar"), window);
    menuFile = make<QMenu>(QStringLiteral("menuFile"), QStringLiteral("文件(F)"), menubar);
    menuTool = make<QMenu>(QStringLiteral("menuTool"), QStringLiteral("工具(T)"), menubar);
    menuUser = make<QMenu>(QStringLiteral("menuUser"), QStringLiteral("用户(U)"), menubar);
    menuHelp = make<QMenu>(QStringLiteral("menuHelp"), QStringLiteral("帮助(H)"), menubar);

    menuFile->addAction(actionExit);
    menuTool->addAction(actionConfig);
    menuTool->addAction(actionKeywordManager);
    menuUser->addAction(actionLogin);
    menuUser->addAction(actionUserInfo);
    menuHelp->addAction(actionSelectLoginMethod);
    menuHelp->addSeparator();
    menuHelp->addAction(actionWebsite);
    menuHelp->addAction(actionUpdate);
    menuHelp->addAction(actionAbout);

    menubar->addMenu(menuFile);
    menubar->addMenu(menuTool);
    menubar->addMenu(menuUser);
    menubar->addAction(actionCustomerService);
    menubar->addAction(actionToggleTheme);
    menubar->addMenu(menuHelp);
    window->setMenuBar(menubar);
}

void MainWindowUi::buildMainPage()
{
    mainPage = make<QWidget>(QStringLiteral("mainPage"));
    mainPageLayout = make<QVBoxLayout>(QStringLiteral("mainPageLayout"), mainPage);
    mainPageLayout->setContentsMargins(0, 0, 0, 0);
    mainPageLayout->setSpacing(0);
    mainVerticalSplitter = makeListSplitter(QStringLiteral("mainVerticalSplitter"));
    mainPageLayout->addWidget(mainVerticalSplitter);

    detailsGroupBox = makeDetailsGroupBox(QStringLiteral("detailsGroupBox"), QStringLiteral("新闻详情"));
    detailsTextEdit = makeDetailsView(QStringLiteral("detailsTextEdit"), detailsGroupBox);
    newsWidget = make<QWidget>(QStringLiteral("newsWidget"));
    newsTableWidget = makeTable(QStringLiteral("newsTableWidget"), newsWidget);
    mainVerticalSplitter->addWidget(detailsGroupBox);
    mainVerticalSplitter->addWidget(newsWidget);
}

void MainWindowUi::buildPlaces()
{
    marketStatisticsPage = make<QWidget>(QStringLiteral("marketStatisticsPage"));
    marketStatisticsPageLayout =
        make<QVBoxLayout>(QStringLiteral("marketStatisticsPageLayout"), marketStatisticsPage);
    marketStatisticsPageLayout->setContentsMargins(0, 0, 0, 0);
    marketStatisticsWidget = make<QWidget>(QStringLiteral("marketStatisticsWidget"));
    marketStatisticsPageLayout->addWidget(marketStatisticsWidget);

    stockAnalysisPage = make<QWidget>(QStringLiteral("stockAnalysisPage"));
    stockAnalysisPageLayout = make<QVBoxLayout>(QStringLiteral("stockAnalysisPageLayout"), stockAnalysisPage);
    stockAnalysisPageLayout->setContentsMargins(0, 0, 0, 0);
    stockAnalysisWidget = make<QWidget>(QStringLiteral("stockAnalysisWidget"));
    stockAnalysisPageLayout->addWidget(stockAnalysisWidget);
}

void MainWindowUi::buildInteractivePlatformPage()
{
    interactivePlatformPage = make<QWidget>(QStringLiteral("interactivePlatformPage"));
    auto *pageLayout = new QVBoxLayout(interactivePlatformPage);
    pageLayout->setContentsMargins(0, 0, 0, 0);
    pageLayout->setSpacing(0);
    interactivePlatformSplitter = makeListSplitter(QStringLiteral("interactivePlatformSplitter"));
    pageLayout->addWidget(interactivePlatformSplitter);

    interactivePlatformDetailsGroupBox = makeDetailsGroupBox(
        QStringLiteral("interactivePlatformDetailsGroupBox"), QStringLiteral("互动平台详情"));
    interactivePlatformDetailsTextEdit = makeDetailsView(QStringLiteral("interactivePlatformDetailsTextEdit"),
                                                         interactivePlatformDetailsGroupBox);
    interactivePlatformListWidget = make<QWidget>(QStringLiteral("interactivePlatformListWidget"));
    interactivePlatformTableWidget =
        makeTable(QStringLiteral("interactivePlatformTableWidget"), interactivePlatformListWidget);
    interactivePlatformSplitter->addWidget(interactivePlatformDetailsGroupBox);
    interactivePlatformSplitter->addWidget(interactivePlatformListWidget);

    interactivePlatformControlGroupBox =
        make<QGroupBox>(QStringLiteral("interactivePlatformControlGroupBox"), interactivePlatformListWidget);
    interactivePlatformControlGroupBox->setMaximumHeight(ControlRowMaximumHeight);
    interactivePlatformListWidget->layout()->addWidget(interactivePlatformControlGroupBox);
    const QString countText = QStringLiteral("互动平台新闻数量:");
    interactivePlatformCountLabel = make<QLabel>(QStringLiteral("interactivePlatformCountLabel"), countText);
    interactivePlatformCountLineEdit =
        makeCountField(QStringLiteral("interactivePlatformCountLineEdit"), countText);
    refreshInteractivePlatformButton =
        makePageButton(QStringLiteral("refreshInteractivePlatformButton"), QStringLiteral("刷新互动平台"));
    auto *row = new QHBoxLayout(interactivePlatformControlGroupBox);
    row->addWidget(interactivePlatformCountLabel);
    row->addWidget(interactivePlatformCountLineEdit);
    row->addWidget(refreshInteractivePlatformButton);
    row->addStretch();
}

void MainWindowUi::buildSelectedNewsPage()
{
    selectedNewsPage = make<QWidget>(QStringLiteral("selectedNewsPage"));
    auto *pageLayout = new QVBoxLayout(selectedNewsPage);
    pageLayout->setContentsMargins(0, 0, 0, 0);
    pageLayout->setSpacing(0);
    selectedNewsSplitter = makeListSplitter(QStringLiteral("selectedNewsSplitter"));
    pageLayout->addWidget(selectedNewsSplitter);

    selectedNewsDetailsGroupBox =
        makeDetailsGroupBox(QStringLiteral("selectedNewsDetailsGroupBox"), QStringLiteral("自选新闻详情"));
    selectedNewsDetailsTextEdit =
        makeDetailsView(QStringLiteral("selectedNewsDetailsTextEdit"), selectedNewsDetailsGroupBox);
    selectedNewsResultsWidget = make<QWidget>(QStringLiteral("selectedNewsResultsWidget"));
    selectedNewsTableWidget = makeTable(QStringLiteral("selectedNewsTableWidget"), selectedNewsResultsWidget);
    selectedNewsSplitter->addWidget(selectedNewsDetailsGroupBox);
    selectedNewsSplitter->addWidget(selectedNewsResultsWidget);

    selectedNewsControlGroupBox =
        make<QGroupBox>(QStringLiteral("selectedNewsControlGroupBox"), selectedNewsResultsWidget);
    selectedNewsControlGroupBox->setMaximumHeight(ControlRowMaximumHeight);
    selectedNewsResultsWidget->layout()->addWidget(selectedNewsControlGroupBox);
    const QString countText = QStringLiteral("自选新闻数量:");
    selectedNewsCountLabel = make<QLabel>(QStringLiteral("selectedNewsCountLabel"), countText);
    selectedNewsCountLineEdit = makeCountField(QStringLiteral("selectedNewsCountLineEdit"), countText);
    refreshSelectedNewsButton =
        makePageButton(QStringLiteral("refreshSelectedNewsButton"), QStringLiteral("刷新自选新闻"));
    manageSelectedKeywordsButton =
        makePageButton(QStringLiteral("manageSelectedKeywordsButton"), QStringLiteral("管理自选关键词"));
    auto *row = new QHBoxLayout(selectedNewsControlGroupBox);
    row->addWidget(selectedNewsCountLabel);
    row->addWidget(selectedNewsCountLineEdit);
    row->addWidget(refreshSelectedNewsButton);
    row->addWidget(manageSelectedKeywordsButton);
    row->addStretch();
}

void MainWindowUi::buildSearchPage()
{
    searchPage = make<QWidget>(QStringLiteral("searchPage"), mainTabWidget);
    auto *pageLayout = new QVBoxLayout(searchPage);
    pageLayout->setContentsMargins(0, 0, 0, 0);
    pageLayout->setSpacing(0);
    searchRightSplitter = makeListSplitter(QStringLiteral("searchRightSplitter"));
    pageLayout->addWidget(searchRightSplitter);

    searchDetailsGroupBox =
        makeDetailsGroupBox(QStringLiteral("searchDetailsGroupBox"), QStringLiteral("搜索结果详情"));
    searchDetailsTextEdit = makeDetailsView(QStringLiteral("searchDetailsTextEdit"), searchDetailsGroupBox);
    searchResultsWidget = make<QWidget>(QStringLiteral("searchResultsWidget"));
    searchResultsTableWidget = makeTable(QStringLiteral("searchResultsTableWidget"), searchResultsWidget);
    searchRightSplitter->addWidget(searchDetailsGroupBox);
    searchRightSplitter->addWidget(searchResultsWidget);
}

void MainWindowUi::buildControlRow()
{
    searchGroupBox = make<QGroupBox>(QStringLiteral("searchGroupBox"), centralwidget);
    searchGroupBox->setMaximumHeight(ControlRowMaximumHeight);
    verticalLayout->addWidget(searchGroupBox);
    searchLayout = make<QHBoxLayout>(QStringLiteral("searchLayout"), searchGroupBox);

    searchLineEdit = make<InputField>(QStringLiteral("searchLineEdit"));
    searchLineEdit->setPlaceholderText(QStringLiteral("输入关键词搜索..."));
    searchButton = make<QPushButton>(QStringLiteral("searchButton"), QStringLiteral("搜索"));
    searchButton->setMaximumWidth(60);
    line = make<QFrame>(QStringLiteral("line"));
    line->setFrameShape(QFrame::HLine);
    line->setFrameShadow(QFrame::Sunken);
    topMostCheckBox = make<QCheckBox>(QStringLiteral("topMostCheckBox"), QStringLiteral("置顶"));
    ttsCheckBox = make<QCheckBox>(QStringLiteral("ttsCheckBox"), QStringLiteral("语音"));
    volumeLabel = make<QLabel>(QStringLiteral("volumeLabel"), QStringLiteral("音量:"));
    volumeLabel->setMaximumWidth(40);
    volumeSlider = make<QSlider>(QStringLiteral("volumeSlider"), Qt::Horizontal);
    volumeSlider->setRange(0, 100);
    volumeSlider->setValue(50);
    volumeSlider->setMaximumWidth(100);
    volumeSlider->setAccessibleName(QStringLiteral("音量"));
    volumeLabel->setBuddy(volumeSlider);
    volumeValueLabel = make<QLabel>(QStringLiteral("volumeValueLabel"), QStringLiteral("50"), searchGroupBox);
    volumeValueLabel->setFixedSize(40, 25);
    volumeValueLabel->setAlignment(Qt::AlignCenter);
    volumeValueLabel->setStyleSheet(QStringLiteral(
        "QLabel {\n    background-color: rgba(0, 0, 0, 0.8);\n    border: 1px solid #666;\n    "
        "border-radius: 4px;\n    font-weight: bold;\n    color: white;\n    font-size: 12px;\n}"));
    volumeValueLabel->hide();
    refreshButton = make<QPushButton>(QStringLiteral("refreshButton"), QStringLiteral("刷新"));

    searchLayout->addWidget(searchLineEdit);
    searchLayout->addWidget(searchButton);
    searchLayout->addWidget(line);
    searchLayout->addWidget(topMostCheckBox);
    searchLayout->addWidget(ttsCheckBox);
    searchLayout->addWidget(volumeLabel);
    searchLayout->addWidget(volumeValueLabel);
    searchLayout->addWidget(volumeSlider);
    searchLayout->addWidget(refreshButton);
}

void MainWindowUi::buildStatusBar(QMainWindow *window)
{
    statusbar = window->statusBar();
    statusbar->setObjectName(QStringLiteral("statusbar"));
    statusbar->setMinimumHeight(StatusItemTop * 2 + StatusItemHeight);

    const auto place = [](QWidget *item, int x, int width) {
        item->setGeometry(x, StatusItemTop, width, StatusItemHeight);
    };
    statusLabel = make<QLabel>(QStringLiteral("statusLabel"), QStringLiteral("就绪"), statusbar);
    // Parts of it come from the user and from the service.
    statusLabel->setTextFormat(Qt::PlainText);
    place(statusLabel, 0, 200);
    newsCountLabel =
        make<QLabel>(QStringLiteral("newsCountLabel"), QStringLiteral("新闻: 0 (关键词: 0)"), statusbar);
    place(newsCountLabel, 210, 260);
    connectionLabel = make<QLabel>(QStringLiteral("connectionLabel"), QStringLiteral("未连接"), statusbar);
    place(connectionLabel, 480, 300);
    progressBar = make<QProgressBar>(QStringLiteral("progressBar"), statusbar);
    place(progressBar, 760, 150);
    progressBar->hide();
    userStatusLabel = make<QLabel>(QStringLiteral("userStatusLabel"), QStringLiteral("未登录"), statusbar);
    place(userStatusLabel, 920, 200);
    userInfoButton = make<QPushButton>(QStringLiteral("userInfoButton"), QStringLiteral("用户"), statusbar);
    place(userInfoButton, 1130, 60);

    // They show texts of the service and of the user as they are.
    for (QLabel *label : {statusLabel, userStatusLabel})
        label->setTextFormat(Qt::PlainText);

    // Text stands off the window's left edge, and off its neighbour.
    for (QLabel *label : {statusLabel, newsCountLabel, connectionLabel, userStatusLabel})
        label->setIndent(StatusTextIndent);

    // The bar paints a passing message where statusLabel stands; the label gives way while it lasts.
    QObject::connect(statusbar, &QStatusBar::messageChanged, statusLabel,
                     [label = statusLabel](const QString &message) { label->setVisible(message.isEmpty()); });
    statusLabel->setVisible(statusbar->currentMessage().isEmpty());
}
