#pragma once

#include "newsclient/ApiClient.h"
#include "newsclient/NewsRecords.h"

#include <QDialog>
#include <QList>
#include <QPointer>
#include <QStringList>

#include <memory>

class EmptyListHint;
class QDialogButtonBox;
class QLabel;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QTableWidget;
class QTimer;

/// Edits the list of keywords that lives on the news service; matching happens there. Made for one exec().
/// The list is loaded when the dialog is first shown.
///
/// Beside the buttons: Return in the list edits its row, Delete asks to delete it.
class KeywordManagerDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \p apiClient may be null; the dialog then says so when it is shown. It must outlive its own replies
    /// only.
    explicit KeywordManagerDialog(ApiClient *apiClient, QWidget *parent = nullptr);
    ~KeywordManagerDialog() override;
    Q_DISABLE_COPY_MOVE(KeywordManagerDialog)

protected:
    void showEvent(QShowEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private slots:
    void onAddButtonClicked();
    void onRemoveButtonClicked();
    void onEditButtonClicked();
    void onImportButtonClicked();
    void onExportButtonClicked();
    void onKeywordDoubleClicked(int row, int column);
    void onSearchTextChanged(const QString &text);
    void onKeywordsReceived(const QList<KeywordData> &keywords);
    void onKeywordAdded(const KeywordData &keyword);
    void onKeywordUpdated(int keywordId);
    void onKeywordDeleted(int keywordId);
    void onApiError(const QString &errorMessage);
    void onRequestTimeout();

private:
    void buildLayout();
    void loadKeywords();
    void setBusy(bool busy);
    /// Shows those of all keywords that the text in the field lets through.
    void showFiltered();
    void appendRow(const KeywordData &keyword);
    int currentRowOrWarning(const QString &warning);
    bool requireApiClient();
    bool validateKeyword(const QString &text, int excludeId);
    bool importRunning() const { return !m_pendingImport.isEmpty(); }
    void importNextKeyword();

    QPointer<ApiClient> m_apiClient;
    QTableWidget *m_keywordTable;
    EmptyListHint *m_emptyHint;
    QLineEdit *m_keywordEdit; ///< input and filter in one
    QPushButton *m_addButton;
    QPushButton *m_removeButton;
    QPushButton *m_editButton;
    /// Stands in no layout and has no parent, so that it never appears: importing is ready but not offered.
    /// Meant.
    std::unique_ptr<QPushButton> m_importButton;
    QPushButton *m_exportButton;
    QDialogButtonBox *m_buttonBox;
    QProgressBar *m_progressBar;
    QLabel *m_statusLabel;
    QList<KeywordData> m_keywords; ///< the full list as last received, plus additions
    QStringList m_pendingImport;   ///< texts of the running import
    int m_importIndex = 0;
    int m_importSucceeded = 0;
    int m_importFailed = 0;
    bool m_keywordsLoaded = false; ///< the first load was asked for
    QTimer *m_requestTimer;        ///< single-shot; guards the loading of the list only
};
