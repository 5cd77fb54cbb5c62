#pragma once

#include <QString>

class QDialog;
class QWidget;

/// Makes the row of two buttons at the foot of a dialog that asks for something: `confirmButton`, which is
/// the default one, accepts \p dialog, and `cancelButton` rejects it. The row is for \p dialog's layout,
/// which gives it its parent.
QWidget *makeConfirmButtons(QDialog *dialog, const QString &confirmText);
