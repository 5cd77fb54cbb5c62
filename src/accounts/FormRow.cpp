#include "accounts/FormRow.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

void addFormRow(QFormLayout *form, const QString &text, QLineEdit *field, QPushButton *button)
{
    auto *label = new QLabel(text, field->parentWidget());
    label->setBuddy(field);
    label->setMinimumHeight(field->minimumHeight());
    auto *row = new QHBoxLayout;
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(8);
    row->addWidget(field);
    if (button != nullptr)
        row->addWidget(button);
    form->addRow(label, row);
}
