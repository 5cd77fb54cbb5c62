#include "stockviews/ConfirmButtons.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>

QWidget *makeConfirmButtons(QDialog *dialog, const QString &confirmText)
{
    auto *buttons = new QDialogButtonBox;
    QPushButton *confirm = buttons->addButton(confirmText, QDialogButtonBox::AcceptRole);
    confirm->setObjectName(QStringLiteral("confirmButton"));
    confirm->setDefault(true);
    QPushButton *cancel = buttons->addButton(QStringLiteral("取消"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cancelButton"));
    cancel->setAutoDefault(false);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}
