#pragma once

#include <QMessageBox>
#include <QString>

class QWidget;

/// Opens a box of plain text over \p parent without waiting for its answer, and with no event loop of its
/// own: it may come up from within the handling of a reply, and \p parent may go while it stands, which takes
/// it along.
///
/// \return the box, which deletes itself when it is closed; its `finished` tells the answer
QMessageBox *openBox(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text,
                     QMessageBox::StandardButtons buttons = QMessageBox::Ok);
