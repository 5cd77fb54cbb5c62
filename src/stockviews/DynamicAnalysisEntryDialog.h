#pragma once

#include <QDialog>

class QLineEdit;
class QTextEdit;

/// Asks for the title and the text of an analysis that the user enters by hand or pastes. It is accepted only
/// with both; what is missing is said in a box over it, and the dialog stays as it was.
class DynamicAnalysisEntryDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \p title is what the title's box holds at first.
    explicit DynamicAnalysisEntryDialog(const QString &title, QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(DynamicAnalysisEntryDialog)

    /// Without blanks around it.
    QString title() const;
    QString content() const;

    void accept() override;

private slots:
    /// Takes over the clipboard's text, if there is any, and the title that it speaks of.
    void onPasteClicked();

private:
    QLineEdit *m_titleEdit;
    QTextEdit *m_contentEdit;
};
