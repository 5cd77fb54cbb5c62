#pragma once

#include <QString>

/// Style sheets of the account dialogs, by skin. Where ThemeManager has a sheet that fits, the dialogs take
/// that one; here stand the sheets of the dialogs that have colours of their own.
///
/// They look for dynamic properties: "primary" marks the one button of a window (or tab) that stands out,
/// apart from which button Enter presses; "secondary" a quiet one; "eye" a small one beside a password.
namespace AccountDialogSkin {

/// Sheet of the two login dialogs: surfaces, fields, tabs, groups and buttons.
QString loginDialogs(bool dark);

/// Sheet of the registration dialog.
QString registration(bool dark);

/// What the password reset dialog lays over ThemeManager's sheets: one button stands out, the others are
/// quiet.
QString passwordReset(bool dark);

/// Colours of the customer service dialog, as "#rrggbb".
struct ServiceColors
{
    QString background;
    QString text;
    QString title;
    QString accent;
    QString link;
    QString instruction;
};
ServiceColors customerService(bool dark);

/// Sheet of the customer service dialog in these colours.
QString customerServiceSheet(const ServiceColors &colors);

} // namespace AccountDialogSkin
