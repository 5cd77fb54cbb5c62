#include "accounts/AccountDialogSkin.h"

#include <QColor>

namespace {

/// The boxes that a dialog raises: buttons of a size to aim at, without the desktop's icons in them.
QString messageBoxes()
{
    return QStringLiteral("QMessageBox QPushButton { qproperty-icon: none; min-width: 72px; min-height: "
                          "22px; padding: 3px 8px; }");
}

} // namespace

QString AccountDialogSkin::loginDialogs(bool dark)
{
    const QString surface = dark ? QStringLiteral("#2c2f33") : QStringLiteral("#ffffff");
    const QString raised = dark ? QStringLiteral("#36393F") : QStringLiteral("#f8f9fa");
    const QString text = dark ? QStringLiteral("#DCDDDE") : QStringLiteral("#2c3e50");
    const QString muted = dark ? QStringLiteral("#B9BBBE") : QStringLiteral("#5d6975");
    const QString border = dark ? QStringLiteral("#72767D") : QStringLiteral("#c4cad0");
    const QString hover = dark ? QStringLiteral("#404449") : QStringLiteral("#eef2f4");
    // White on the plain accent would be too faint to read; this is the accent, darkened until it is not.
    const QString primary = QStringLiteral("#00806a");
    return QStringLiteral(
               "QDialog { background-color: %1; color: %3; }"
               "QLabel, QRadioButton { color: %3; background: transparent; }"
               "QLabel[role=\"muted\"] { color: %4; }"
               "QGroupBox { color: %3; background-color: %2; border: 1px solid %5; border-radius: 6px;"
               " margin-top: 12px; padding-top: 8px; }"
               "QGroupBox::title { subcontrol-origin: margin; left: 12px; padding: 0 4px; }"
               "QTabWidget::pane { background-color: %1; border: 1px solid %5; border-radius: 4px; }"
               "QTabWidget > QWidget > QWidget { background-color: %1; }"
               "QTabBar::tab { background-color: %2; color: %4; padding: 8px 18px; border: 1px solid %5;"
               " border-bottom: none; border-top-left-radius: 4px; border-top-right-radius: 4px; }"
               "QTabBar::tab:selected { background-color: %1; color: %3; font-weight: bold;"
               " border-top: 2px solid #00D4AA; }"
               "QLineEdit, QTextEdit { background-color: %2; color: %3; border: 1px solid %5; border-radius: "
               "4px;"
               " padding: 4px 8px; selection-background-color: %7; selection-color: #ffffff; }"
               "QLineEdit:focus, QTextEdit:focus { border: 1px solid #00D4AA; }"
               "InputField { qproperty-placeholderColor: %4; }"
               "QPushButton { background-color: %2; color: %3; border: 1px solid %5; border-radius: 5px;"
               " padding: 4px 6px; }"
               "QPushButton:hover { background-color: %6; }"
               "QPushButton:pressed { background-color: %5; }"
               "QPushButton:focus { border: 1px solid #00D4AA; }"
               "QPushButton[primary=\"true\"], QMessageBox QPushButton:default"
               " { background-color: %7; color: #ffffff; border: 1px solid %7; }"
               "QPushButton[primary=\"true\"]:hover, QMessageBox QPushButton:default:hover"
               " { background-color: #009379; }"
               "QPushButton[primary=\"true\"]:focus, QMessageBox QPushButton:default:focus"
               " { border: 1px solid %3; }"
               "QPushButton:disabled { background-color: %2; color: #8d949b; border: 1px solid %5; }"
               "QRadioButton[card=\"true\"] { background-color: %1; border: 1px solid %5; border-radius: 6px;"
               " padding-left: 12px; }"
               "QRadioButton[card=\"true\"]:hover { background-color: %6; }"
               "QRadioButton[card=\"true\"]:checked, QRadioButton[card=\"true\"]:focus"
               " { border: 1px solid #00D4AA; }"
               "QRadioButton[card=\"true\"]::indicator { width: 16px; height: 16px; border: 1px solid %4;"
               " border-radius: 9px; background-color: %1; }"
               "QRadioButton[card=\"true\"]::indicator:checked { border: 5px solid #00D4AA; width: 8px;"
               " height: 8px; background-color: %1; }")
               .arg(surface, raised, text, muted, border, hover, primary) +
           messageBoxes();
}

QString AccountDialogSkin::registration(bool dark)
{
    const QString background = dark ? QStringLiteral("#2b2b2b") : QStringLiteral("#FFFFFF");
    const QString text = dark ? QStringLiteral("#e0e0e0") : QStringLiteral("#2c3e50");
    const QString field = dark ? QStringLiteral("#3c3f41") : QStringLiteral("transparent");
    const QString border = dark ? QStringLiteral("#5f6568") : QStringLiteral("#bdc3c7");
    const QString muted = dark ? QStringLiteral("#a9adb0") : QStringLiteral("#6b7680");
    const QString accent = QStringLiteral("#3498db");
    const QString darkerAccent = QColor(accent).darker(145).name();
    return QStringLiteral(
               "QDialog { background-color: %1; color: %2; }"
               "QLabel { color: %2; background: transparent; }"
               "QLineEdit { background-color: %3; color: %2; border: 1px solid %4; border-radius: 4px;"
               " padding: 0 8px; selection-background-color: %5; selection-color: #ffffff; }"
               "QLineEdit:focus { border: 1px solid %5; }"
               "InputField { qproperty-placeholderColor: %7; }"
               "QPushButton { background-color: %3; color: %2; border: 1px solid %4; border-radius: 4px;"
               " padding: 2px 6px; }"
               "QPushButton:hover, QPushButton:focus { border: 1px solid %5; }"
               "QPushButton[primary=\"true\"]:enabled, QMessageBox QPushButton:default"
               " { background-color: %6; color: #ffffff; border: 1px solid %6; }"
               "QPushButton[primary=\"true\"]:enabled:hover, QMessageBox QPushButton:default:hover"
               " { background-color: %5; border: 1px solid %5; }"
               "QPushButton[primary=\"true\"]:enabled:focus, QMessageBox QPushButton:default:focus"
               " { border: 1px solid %2; }"
               "QPushButton:disabled { color: #8d949b; background-color: %3; border: 1px solid %4; }")
               .arg(background, text, field, border, accent, darkerAccent, muted) +
           messageBoxes();
}

QString AccountDialogSkin::passwordReset(bool dark)
{
    const QString text = dark ? QStringLiteral("#DCDDDE") : QStringLiteral("#2C2F33");
    const QString border = dark ? QStringLiteral("#72767D") : QStringLiteral("#B9BBBE");
    const QString placeholder = dark ? QStringLiteral("#B9BBBE") : QStringLiteral("#72767D");
    return QStringLiteral("QLabel#headingLabel { font-size: 24px; font-weight: bold; }"
                          // The buttons beside the fields are small; the sheet's padding is for large ones.
                          "QLineEdit { padding: 4px 10px; min-height: 26px; max-height: 26px; "
                          "selection-background-color: #00806a;"
                          " selection-color: #ffffff; }"
                          "InputField { qproperty-placeholderColor: %3; }"
                          "QPushButton { padding: 8px 6px; border: 1px solid transparent; }"
                          "QPushButton:focus { border: 1px solid %1; }"
                          "QPushButton[secondary=\"true\"] { background-color: transparent; color: %1;"
                          " border: 1px solid %2; font-weight: normal; }"
                          "QPushButton[secondary=\"true\"]:hover, QPushButton[secondary=\"true\"]:focus"
                          " { border: 1px solid #00D4AA; }"
                          "QPushButton[secondary=\"true\"]:disabled { color: #8d949b; }"
                          "QPushButton[eye=\"true\"] { padding: 0px; }")
               .arg(text, border, placeholder) +
           messageBoxes();
}

AccountDialogSkin::ServiceColors AccountDialogSkin::customerService(bool dark)
{
    if (dark)
        return {QStringLiteral("#2b2b2b"), QStringLiteral("#ffffff"), QStringLiteral("#ffffff"),
                QStringLiteral("#ff6b6b"), QStringLiteral("#4fc3f7"), QStringLiteral("#cccccc")};
    return {QStringLiteral("#ffffff"), QStringLiteral("#333333"), QStringLiteral("#1a1a1a"),
            QStringLiteral("#c62828"), QStringLiteral("#1976d2"), QStringLiteral("#555555")};
}

QString AccountDialogSkin::customerServiceSheet(const ServiceColors &colors)
{
    return QStringLiteral("QDialog { background-color: %1; color: %2; }"
                          "QLabel { color: %2; background: transparent; }"
                          "QLabel#titleLabel { color: %3; }"
                          "QLabel#qrCodeTitleLabel { color: %4; }"
                          "QLabel#qrCodeLabel { background-color: #ffffff; color: #333333;"
                          " border: 1px solid #bdbdbd; border-radius: 10px; padding: 8px; }"
                          "QLabel#weChatInstructionLabel { color: %5; }"
                          "QPushButton { background-color: transparent; color: %2; border: 1px solid #9e9e9e;"
                          " border-radius: 5px; padding: 6px 18px; }"
                          "QPushButton:hover, QPushButton:focus { border: 1px solid %2; }"
                          "QPushButton#weChatButton { background-color: %4; color: %1;"
                          " border: 1px solid %4; font-weight: bold; }"
                          "QPushButton#weChatButton:hover, QPushButton#weChatButton:focus"
                          " { border: 1px solid %2; }")
               .arg(colors.background, colors.text, colors.title, colors.accent, colors.instruction) +
           messageBoxes();
}
