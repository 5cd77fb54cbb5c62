#pragma once

#include <QString>

class QFormLayout;
class QLineEdit;
class QPushButton;

/// Adds a row to a form of an account dialog: the label, the field and, where there is one, a button beside
/// the field. The label leads to the field by its buddy also where the field shares the row with a button.
void addFormRow(QFormLayout *form, const QString &text, QLineEdit *field, QPushButton *button = nullptr);
