#include "settings/MainWindowSkin.h"

#include "resources/LarkspireResources.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QRegularExpression>
#include <QStyleFactory>
#include <QTableWidget>
#include <QTextBrowser>
#include <QVBoxLayout>

namespace {

QString t(const char *text)
{
    return QString::fromLatin1(text);
}

struct Rule
{
    QString selector;
    QString body;
};

QVector<Rule> rulesOf(const QString &sheet)
{
    static const QRegularExpression rule(t("([^{}]+)\\{([^{}]*)\\}"));
    QVector<Rule> rules;
    auto match = rule.globalMatch(sheet);
    while (match.hasNext()) {
        const QRegularExpressionMatch found = match.next();
        rules.append({found.captured(1).simplified(), found.captured(2).simplified()});
    }
    return rules;
}

QStringList warnings;

void collectWarnings(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg)
        warnings.append(message);
}

/// Shows the widget and takes its picture.
QImage pictureOf(QWidget &widget)
{
    widget.show();
    return QTest::qWaitForWindowExposed(&widget) ? widget.grab().toImage() : QImage();
}

int pixelsOf(const QImage &image, const QColor &colour)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += image.pixelColor(x, y) == colour ? 1 : 0;
    }
    return count;
}

} // namespace

class TestMainWindowSkin : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        initLarkspireResources();
        QApplication::setStyle(QStyleFactory::create(t("Fusion")));
    }

    void init()
    {
        QApplication::setPalette(MainWindowSkin::darkPalette());
        qApp->setStyleSheet(MainWindowSkin::darkStyleSheet());
    }

    void cleanup()
    {
        qApp->setStyleSheet(QString());
        QApplication::setPalette(QApplication::style()->standardPalette());
    }

    void theDarkPaletteSetsTheColourOfARole_data()
    {
        QTest::addColumn<int>("role");
        QTest::addColumn<QColor>("colour");
        const auto add = [](const char *name, QPalette::ColorRole role, const QColor &colour) {
            QTest::newRow(name) << int(role) << colour;
        };
        add("Window", QPalette::Window, QColor(53, 53, 53));
        add("AlternateBase", QPalette::AlternateBase, QColor(53, 53, 53));
        add("Button", QPalette::Button, QColor(53, 53, 53));
        add("WindowText", QPalette::WindowText, QColor(255, 255, 255));
        add("ToolTipBase", QPalette::ToolTipBase, QColor(255, 255, 255));
        add("ToolTipText", QPalette::ToolTipText, QColor(255, 255, 255));
        add("Text", QPalette::Text, QColor(255, 255, 255));
        add("ButtonText", QPalette::ButtonText, QColor(255, 255, 255));
        add("Base", QPalette::Base, QColor(25, 25, 25));
        add("BrightText", QPalette::BrightText, QColor(255, 0, 0));
        add("Link", QPalette::Link, QColor(42, 130, 218));
        add("Highlight", QPalette::Highlight, QColor(42, 130, 218));
        add("HighlightedText", QPalette::HighlightedText, QColor(0, 0, 0));
    }

    void theDarkPaletteSetsTheColourOfARole()
    {
        QFETCH(int, role);
        QFETCH(QColor, colour);
        for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
            QCOMPARE(QApplication::palette().color(group, static_cast<QPalette::ColorRole>(role)), colour);
    }

    void theSelectorsStandInTheirOrder()
    {
        QStringList selectors;
        for (const Rule &rule : rulesOf(MainWindowSkin::darkStyleSheet()))
            selectors.append(rule.selector);
        QCOMPARE(selectors, (QStringList{t("QMainWindow"),
                                         t("QTableWidget"),
                                         t("QGroupBox"),
                                         t("QGroupBox::title"),
                                         t("QTextBrowser"),
                                         t("QLineEdit"),
                                         t("QPushButton"),
                                         t("QPushButton:hover"),
                                         t("QPushButton:pressed"),
                                         t("QCheckBox"),
                                         t("QCheckBox::indicator"),
                                         t("QCheckBox::indicator:checked"),
                                         t("QCheckBox::indicator:checked:hover"),
                                         t("QStatusBar"),
                                         t("QMenuBar"),
                                         t("QMenuBar::item"),
                                         t("QMenuBar::item:selected"),
                                         t("QMenu"),
                                         t("QMenu::item:selected"),
                                         t("QDialog"),
                                         t("QTabWidget::pane"),
                                         t("QTabBar::tab"),
                                         t("QTabBar::tab:selected"),
                                         t("QTabBar::tab:hover"),
                                         t("QLineEdit:focus"),
                                         t("QPushButton:default"),
                                         t("QPushButton:focus"),
                                         t("QLineEdit:disabled"),
                                         t("QPushButton:disabled"),
                                         t("QCheckBox:disabled"),
                                         t("QMenuBar::item:disabled"),
                                         t("QMenu::item:disabled")}));
    }

    void aSelectorSettlesItsProperties_data()
    {
        QTest::addColumn<QString>("selector");
        QTest::addColumn<QStringList>("declarations");
        const auto add = [](const char *selector, const QStringList &declarations) {
            QTest::newRow(selector) << t(selector) << declarations;
        };
        const QString white = t("color: white;");
        const QString frame = t("border: 1px solid #555555;");
        const auto background = [](const char *colour) {
            return t("background-color: ") + QLatin1String(colour) + t(";");
        };
        add("QMainWindow", {background("#353535"), white});
        add("QTableWidget", {background("#2D2D30"), t(" color: #DCDCDC;"), t("gridline-color: #555555;"),
                             t("selection-background-color: #3E606F;"), t("selection-color: #FFFFFF;")});
        add("QGroupBox", {white, t("border: 2px solid #555555;"), t("border-radius: 5px;"),
                          t("margin-top: 10px;"), t("padding-top: 10px;"), background("#353535")});
        add("QGroupBox::title", {t("left: 10px;"), t("padding: 0 5px 0 5px;")});
        add("QTextBrowser", {background("#2b2b2b"), white, frame});
        add("QLineEdit", {background("#2b2b2b"), white, frame, t("padding: 5px;")});
        add("QPushButton",
            {background("#404040"), white, frame, t("padding: 5px;"), t("border-radius: 3px;")});
        add("QPushButton:hover", {background("#505050")});
        add("QPushButton:pressed", {background("#353535")});
        add("QCheckBox", {white, background("transparent")});
        add("QCheckBox::indicator", {t("width: 13px;"), t("height: 13px;"), frame, background("#2b2b2b")});
        add("QCheckBox::indicator:checked",
            {t("border: 1px solid #42a5f5;"), background("#42a5f5"), t("data:image/svg+xml"),
             t("width='13' height='13'"), t("M10.5 3.5 L4.5 9.5 L2.5 7.5"), t("stroke-width='2'"),
             t("stroke-linecap='round'"), t("stroke='white'")});
        add("QCheckBox::indicator:checked:hover", {background("#64b5f6")});
        add("QStatusBar", {background("#353535"), white});
        add("QMenuBar", {background("#353535"), white});
        add("QMenuBar::item", {background("transparent")});
        add("QMenuBar::item:selected", {background("#404040")});
        add("QMenu", {background("#353535"), white, frame});
        add("QMenu::item:selected", {background("#404040")});
        add("QDialog", {background("#353535"), white});
        add("QTabWidget::pane", {frame, background("#353535")});
        add("QTabBar::tab", {background("#2b2b2b"), white, t("padding: 8px 12px;"), t("margin-right: 2px;")});
        add("QTabBar::tab:selected", {background("#404040"), t("border-bottom: 2px solid #42a5f5;")});
        add("QTabBar::tab:hover", {background("#505050")});
        // What the keyboard acts on can be seen.
        const QString highlight = t("border: 1px solid #42a5f5;");
        add("QLineEdit:focus", {highlight});
        add("QPushButton:default", {t("border: 1px solid #7394B0;")});
        add("QPushButton:focus", {highlight});
        for (const char *selector : {"QLineEdit:disabled", "QPushButton:disabled", "QCheckBox:disabled",
                                     "QMenuBar::item:disabled", "QMenu::item:disabled"})
            add(selector, {t("color: #9A9A9A;")});
    }

    void aSelectorSettlesItsProperties()
    {
        QFETCH(QString, selector);
        QFETCH(QStringList, declarations);
        QString body;
        for (const Rule &rule : rulesOf(MainWindowSkin::darkStyleSheet())) {
            if (rule.selector == selector)
                body = rule.body;
        }
        for (const QString &declaration : declarations)
            QVERIFY2(body.contains(declaration), qPrintable(declaration + t(" in ") + body));
    }

    void qtTakesTheWholeSheetWithoutAWord()
    {
        qApp->setStyleSheet(QString());
        QMainWindow window;
        window.setCentralWidget(new QCheckBox);
        QVERIFY(!pictureOf(window).isNull());
        warnings.clear();
        const QtMessageHandler before = qInstallMessageHandler(collectWarnings);
        qApp->setStyleSheet(MainWindowSkin::darkStyleSheet());
        window.grab();
        qInstallMessageHandler(before);
        QCOMPARE(warnings, QStringList());
    }

    void aWidgetIsPaintedInItsColour_data()
    {
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QColor>("colour");
        QTest::newRow("QMainWindow") << t("QMainWindow") << QColor(0x35, 0x35, 0x35);
        QTest::newRow("QDialog") << t("QDialog") << QColor(0x35, 0x35, 0x35);
        QTest::newRow("QGroupBox") << t("QGroupBox") << QColor(0x35, 0x35, 0x35);
        QTest::newRow("QTableWidget") << t("QTableWidget") << QColor(0x2D, 0x2D, 0x30);
        QTest::newRow("QTextBrowser") << t("QTextBrowser") << QColor(0x2b, 0x2b, 0x2b);
        QTest::newRow("QLineEdit") << t("QLineEdit") << QColor(0x2b, 0x2b, 0x2b);
        QTest::newRow("QPushButton") << t("QPushButton") << QColor(0x40, 0x40, 0x40);
    }

    void aWidgetIsPaintedInItsColour()
    {
        QFETCH(QString, kind);
        QFETCH(QColor, colour);
        const std::unique_ptr<QWidget> widget(made(kind));
        widget->resize(200, 100);
        const QImage picture = pictureOf(*widget);
        QVERIFY(!picture.isNull());
        QVERIFY2(pixelsOf(picture, colour) > picture.width() * picture.height() / 2,
                 qPrintable(QString::number(pixelsOf(picture, colour))));
    }

    void whatIsDisabledIsWrittenInGrey_data()
    {
        QTest::addColumn<QString>("kind");
        for (const char *kind : {"QLineEdit", "QPushButton", "QCheckBox", "QMenu", "QMenuBar"})
            QTest::newRow(kind) << t(kind);
    }

    void whatIsDisabledIsWrittenInGrey()
    {
        QFETCH(QString, kind);
        const std::unique_ptr<QWidget> widget(withText(kind, true));
        const QImage enabled = pictureOf(*widget);
        QVERIFY(!enabled.isNull());
        QVERIFY2(pixelsOf(enabled, Qt::white) > 0, "nothing white while enabled");
        const std::unique_ptr<QWidget> other(withText(kind, false));
        const QImage disabled = pictureOf(*other);
        QVERIFY(!disabled.isNull());
        QCOMPARE(pixelsOf(disabled, Qt::white), 0);
        QVERIFY2(pixelsOf(disabled, QColor(0x9A, 0x9A, 0x9A)) > 0, "nothing grey while disabled");
    }

    void focusIsSeen_data()
    {
        QTest::addColumn<bool>("isButton");
        QTest::newRow("field") << false;
        QTest::newRow("button") << true;
    }

    void focusIsSeen()
    {
        QFETCH(bool, isButton);
        QWidget window;
        auto *layout = new QVBoxLayout(&window);
        const auto make = [isButton]() -> QWidget * {
            return isButton ? static_cast<QWidget *>(new QPushButton(t("Button"))) : new QLineEdit;
        };
        QWidget *first = make();
        QWidget *second = make();
        layout->addWidget(first);
        layout->addWidget(second);
        window.show();
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const QColor highlight(0x42, 0xa5, 0xf5);
        for (QWidget *focused : {first, second}) {
            focused->setFocus();
            QWidget *other = focused == first ? second : first;
            const int frame = 2 * (focused->width() + focused->height()) - 30;
            QVERIFY(pixelsOf(focused->grab().toImage(), highlight) >= frame);
            QCOMPARE(pixelsOf(other->grab().toImage(), highlight), 0);
        }
    }

    void aCheckedBoxShowsAWhiteTickAndAnUncheckedOneNone()
    {
        QCheckBox box;
        box.setChecked(true);
        box.resize(box.sizeHint());
        const QImage ticked = pictureOf(box);
        QVERIFY(pixelsOf(ticked, QColor(0x42, 0xa5, 0xf5)) > 80);
        // Two pixels wide and about a dozen long, less its smoothed edges.
        QVERIFY2(pixelsOf(ticked, Qt::white) >= 5, qPrintable(QString::number(pixelsOf(ticked, Qt::white))));
        box.setChecked(false);
        const QImage plain = pictureOf(box);
        QVERIFY(pixelsOf(plain, QColor(0x2b, 0x2b, 0x2b)) > 120);
        QCOMPARE(pixelsOf(plain, Qt::white), 0);
    }

private:
    static QWidget *made(const QString &kind)
    {
        if (kind == t("QMainWindow"))
            return new QMainWindow;
        if (kind == t("QDialog"))
            return new QDialog;
        if (kind == t("QGroupBox"))
            return new QGroupBox;
        if (kind == t("QTableWidget"))
            return new QTableWidget;
        if (kind == t("QTextBrowser"))
            return new QTextBrowser;
        if (kind == t("QLineEdit"))
            return new QLineEdit;
        return new QPushButton;
    }

    /// A widget with strokes that are wide enough to hold the plain colour of its text.
    static QWidget *withText(const QString &kind, bool enabled)
    {
        const QString text(8, QChar(u'H'));
        QWidget *widget = nullptr;
        if (kind == t("QLineEdit")) {
            widget = new QLineEdit(text);
        } else if (kind == t("QCheckBox")) {
            widget = new QCheckBox(text);
        } else if (kind == t("QMenu")) {
            auto *menu = new QMenu;
            menu->addAction(text)->setEnabled(enabled);
            widget = menu;
        } else if (kind == t("QMenuBar")) {
            auto *bar = new QMenuBar;
            bar->addAction(text)->setEnabled(enabled);
            widget = bar;
        } else {
            widget = new QPushButton(text);
        }
        if (kind != t("QMenu") && kind != t("QMenuBar"))
            widget->setEnabled(enabled);
        QFont font = widget->font();
        font.setPixelSize(40);
        widget->setFont(font);
        widget->resize(widget->sizeHint());
        return widget;
    }
};

LARKSPIRE_TEST_MAIN(TestMainWindowSkin)
#include "tst_mainwindowskin.moc"
