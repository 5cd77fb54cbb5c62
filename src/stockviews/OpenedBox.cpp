#include "stockviews/OpenedBox.h"

QMessageBox *openBox(QWidget *parent, QMessageBox::Icon icon, const QString &title, const QString &text,
                     QMessageBox::StandardButtons buttons)
{
    auto *box = new QMessageBox(icon, title, text, buttons, parent);
    box->setTextFormat(Qt::PlainText);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->open();
    return box;
}
