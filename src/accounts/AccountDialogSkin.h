#pragma once

#include <QString>

/// Style sheets of the account dialogs, by skin. Where ThemeManager has a sheet that fits, the dialogs take
/// that one; here stand the sheets of the dialogs that have colours of their own.
namespace AccountDialogSkin {

/// Sheet of the two login dialogs: surfaces, fields, tabs, groups and buttons.
QString loginDialogs(bool dark);

/// Sheet of the registration dialog.
QString registration(bool dark);

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

/// The families that every account dialog asks for.
QString fontFamilies();

} // namespace AccountDialogSkin
