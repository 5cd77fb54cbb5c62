#include "settings/MainWindowSkin.h"

#include <QColor>

QPalette MainWindowSkin::darkPalette()
{
    const QColor grey(53, 53, 53);
    const QColor blue(42, 130, 218);
    QPalette palette;
    palette.setColor(QPalette::Window, grey);
    palette.setColor(QPalette::WindowText, Qt::white);
    palette.setColor(QPalette::Base, QColor(25, 25, 25));
    palette.setColor(QPalette::AlternateBase, grey);
    palette.setColor(QPalette::ToolTipBase, Qt::white);
    palette.setColor(QPalette::ToolTipText, Qt::white);
    palette.setColor(QPalette::Text, Qt::white);
    palette.setColor(QPalette::Button, grey);
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::BrightText, Qt::red);
    palette.setColor(QPalette::Link, blue);
    palette.setColor(QPalette::Highlight, blue);
    palette.setColor(QPalette::HighlightedText, Qt::black);
    return palette;
}

QPalette MainWindowSkin::darkToolTipPalette()
{
    QPalette palette = darkPalette();
    palette.setColor(QPalette::ToolTipBase, QColor(43, 43, 43));
    return palette;
}

QString MainWindowSkin::darkStyleSheet()
{
    // Qt 5's style sheets load images from files only, so the inline tick never shows by itself: the same
    // drawing from the compiled-in files takes its place.
    return QStringLiteral(R"(
QMainWindow { background-color: #353535; color: white; }
QTableWidget {
    background-color: #2D2D30;
    color: #DCDCDC;
    gridline-color: #555555;
    selection-background-color: #3E606F;
    selection-color: #FFFFFF;
}
QGroupBox {
    color: white;
    border: 2px solid #555555;
    border-radius: 5px;
    margin-top: 10px;
    padding-top: 10px;
    background-color: #353535;
}
QGroupBox::title { subcontrol-origin: margin; left: 10px; padding: 0 5px 0 5px; }
QTextBrowser { background-color: #2b2b2b; color: white; border: 1px solid #555555; }
QLineEdit { background-color: #2b2b2b; color: white; border: 1px solid #555555; padding: 5px; }
QPushButton {
    background-color: #404040;
    color: white;
    border: 1px solid #555555;
    padding: 5px;
    border-radius: 3px;
}
QPushButton:hover { background-color: #505050; }
QPushButton:pressed { background-color: #353535; }
QCheckBox { color: white; background-color: transparent; }
QCheckBox::indicator { width: 13px; height: 13px; border: 1px solid #555555; background-color: #2b2b2b; }
QCheckBox::indicator:checked {
    border: 1px solid #42a5f5;
    background-color: #42a5f5;
    image: url("data:image/svg+xml;utf8,<svg xmlns='http://www.w3.org/2000/svg' width='13' height='13' viewBox='0 0 13 13'><path d='M10.5 3.5 L4.5 9.5 L2.5 7.5' stroke='white' stroke-width='2' fill='none' stroke-linecap='round'/></svg>");
    image: url(":/images/tick.png");
}
QCheckBox::indicator:checked:hover { background-color: #64b5f6; }
QStatusBar { background-color: #353535; color: white; }
QMenuBar { background-color: #353535; color: white; }
QMenuBar::item { background-color: transparent; }
QMenuBar::item:selected { background-color: #404040; }
QMenu { background-color: #353535; color: white; border: 1px solid #555555; }
QMenu::item:selected { background-color: #404040; }
QDialog { background-color: #353535; color: white; }
QTabWidget::pane { border: 1px solid #555555; background-color: #353535; }
QTabBar::tab { background-color: #2b2b2b; color: white; padding: 8px 12px; margin-right: 2px; }
QTabBar::tab:selected { background-color: #404040; border-bottom: 2px solid #42a5f5; }
QTabBar::tab:hover { background-color: #505050; }
QLineEdit:focus { border: 1px solid #42a5f5; }
QPushButton:default { border: 1px solid #7394B0; }
QPushButton:focus { border: 1px solid #42a5f5; }
QLineEdit:disabled { color: #9A9A9A; }
QPushButton:disabled { color: #9A9A9A; }
QCheckBox:disabled { color: #9A9A9A; }
QMenuBar::item:disabled { color: #9A9A9A; }
QMenu::item:disabled { color: #9A9A9A; }
)");
}
