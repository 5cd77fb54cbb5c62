#pragma once

#include <QDialog>
#include <QString>

class InputField;
class QComboBox;
class QLabel;

/// Asks why a stock is to go on the user's blacklist. A quick reason fills the field and may be edited. The
/// dialog is accepted only with a reason of 3 to 20 characters; anything else is told in a box and the dialog
/// stays.
class AddToBlacklistDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \param stockName may be empty
    AddToBlacklistDialog(const QString &stockName, const QString &stockCode, QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(AddToBlacklistDialog)

    /// The reason without blanks around it.
    QString reason() const;

    void accept() override;

private:
    void onQuickReasonActivated(int index);
    void showCount(const QString &typed);

    QComboBox *m_quickReasonComboBox;
    InputField *m_reasonLineEdit;
    QLabel *m_counterLabel;
};
