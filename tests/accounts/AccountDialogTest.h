#pragma once

#include "support/BoxAnswer.h"
#include "support/RawHttpServer.h"
#include "support/WindowInput.h"

#include <QAbstractButton>
#include <QColor>
#include <QDialog>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QWidget>

/// What the tests of the account dialogs share. Link larkspire_account_dialog_test_support.
namespace AccountDialogTest {

inline QString ok()
{
    return QStringLiteral("OK");
}

inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

template <class Kind>
Kind *part(const QWidget &window, const char *name)
{
    return window.findChild<Kind *>(QLatin1String(name));
}

/// The body of a request as an object; empty when it is none.
QJsonObject bodyOf(const RawRequest &request);

/// The service's answers: done, and refused for this reason.
RawAnswer success(const QString &message);
RawAnswer refusal(const QString &error, int httpStatus = 400);

/// The button with this caption or accessible name that can be seen; null when there is none.
QAbstractButton *button(const QWidget &window, const QString &caption);

/// Shows a dialog and waits until it has the keyboard.
bool opens(QDialog &dialog);

/// Waits until a dialog has the keyboard again, after a box on top of it has gone.
bool isBack(QDialog &dialog);

/// The widgets that the Tab key leads to, from the one with the focus until it comes round: object names, or
/// captions of nameless buttons. Goes backwards with Shift when asked.
QStringList tabWalk(QDialog &dialog, bool backwards = false);

/// The text of the label whose buddy the widget is; null when it has none.
QString labelOf(const QWidget &widget);

/// Title and text of an answered box; empty when none was shown.
QStringList told(const BoxAnswer &box);

/// Puts the whole program into a skin, as the main window does.
void setSkin(bool dark);

/// The colour that a widget shows at a place.
QColor colorAt(QWidget &widget, const QPoint &place);

/// How well a text can be read on a background: 1 to 21.
double contrast(const QColor &text, const QColor &background);

} // namespace AccountDialogTest
