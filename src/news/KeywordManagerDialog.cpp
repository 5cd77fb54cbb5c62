#include "news/KeywordManagerDialog.h"

#include "news/EmptyListHint.h"
#include "news/KeywordRules.h"
#include "newsclient/ServiceWords.h"
#include "settings/InputField.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QIcon>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QSaveFile>
#include <QTableWidget>
#include <QTextDocument>
#include <QTextStream>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int loadTimeoutMs = 15000;
constexpr int buttonWidth = 80;

enum Column
{
    KeywordColumn,
    StateColumn,
    SelectedColumn
};

const QString activeText = QStringLiteral("启用");
const QString inactiveText = QStringLiteral("禁用");
const QString yesText = QStringLiteral("是");
const QString noText = QStringLiteral("否");
const QString hintTitle = QStringLiteral("提示");
const QString errorTitle = QStringLiteral("错误");
const QString fileFilter = QStringLiteral("文本文件 (*.txt);;所有文件 (*)");
const QString emptyText = QStringLiteral("您的关键词会显示在这里");
const QString noMatchText = QStringLiteral("没有匹配的关键词，按回车键即可添加");
const QString unreadableText = QStringLiteral("无法打开文件");
const QString selectedCaption = QStringLiteral("设为自选新闻关键词");

/// One look for all buttons, in both skins and under every style.
void dress(QAbstractButton *button)
{
    button->setIcon(QIcon());
    button->setMinimumWidth(buttonWidth);
}

QDialogButtonBox *okAndCancel(QDialog *dialog)
{
    auto *box = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    box->button(QDialogButtonBox::Ok)->setText(QStringLiteral("确定"));
    box->button(QDialogButtonBox::Cancel)->setText(QStringLiteral("取消"));
    const QList<QAbstractButton *> buttons = box->buttons();
    for (QAbstractButton *button : buttons)
        dress(button);
    QObject::connect(box, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(box, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return box;
}

} // namespace

KeywordManagerDialog::KeywordManagerDialog(ApiClient *apiClient, QWidget *parent)
    : QDialog(parent)
    , m_apiClient(apiClient)
    , m_keywordTable(new QTableWidget(0, 3, this))
    , m_emptyHint(new EmptyListHint(m_keywordTable, emptyText))
    , m_keywordEdit(new InputField(this))
    , m_addButton(new QPushButton(QStringLiteral("添加"), this))
    , m_removeButton(new QPushButton(QStringLiteral("删除"), this))
    , m_editButton(new QPushButton(QStringLiteral("编辑"), this))
    , m_importButton(std::make_unique<QPushButton>(QStringLiteral("导入")))
    , m_exportButton(new QPushButton(QStringLiteral("导出"), this))
    , m_buttonBox(new QDialogButtonBox(QDialogButtonBox::Close, this))
    , m_progressBar(new QProgressBar(this))
    , m_statusLabel(new QLabel(QStringLiteral("就绪"), this))
    , m_requestTimer(new QTimer(this))
{
    setWindowTitle(QStringLiteral("关键词管理"));
    setWindowFlags(windowFlags() | Qt::WindowStaysOnTopHint);
    setModal(true);
    resize(500, 500);
    buildLayout();

    m_requestTimer->setSingleShot(true);
    m_requestTimer->setInterval(loadTimeoutMs);
    connect(m_requestTimer, &QTimer::timeout, this, &KeywordManagerDialog::onRequestTimeout);
    connect(m_addButton, &QPushButton::clicked, this, &KeywordManagerDialog::onAddButtonClicked);
    connect(m_keywordEdit, &QLineEdit::textChanged, this, &KeywordManagerDialog::onSearchTextChanged);
    connect(m_keywordTable, &QTableWidget::cellDoubleClicked, this,
            &KeywordManagerDialog::onKeywordDoubleClicked);
    // A row that is reached by Tab is as good as one that was clicked, and has to look it.
    connect(m_keywordTable, &QTableWidget::currentCellChanged, m_keywordTable,
            [table = m_keywordTable](int row) {
                if (row >= 0 && !table->selectionModel()->isRowSelected(row, QModelIndex()))
                    table->selectRow(row);
            });
    connect(m_removeButton, &QPushButton::clicked, this, &KeywordManagerDialog::onRemoveButtonClicked);
    connect(m_editButton, &QPushButton::clicked, this, &KeywordManagerDialog::onEditButtonClicked);
    connect(m_importButton.get(), &QPushButton::clicked, this, &KeywordManagerDialog::onImportButtonClicked);
    connect(m_exportButton, &QPushButton::clicked, this, &KeywordManagerDialog::onExportButtonClicked);
    connect(m_buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    if (apiClient != nullptr) {
        connect(apiClient, &ApiClient::keywordsReceived, this, &KeywordManagerDialog::onKeywordsReceived);
        connect(apiClient, &ApiClient::keywordAdded, this, &KeywordManagerDialog::onKeywordAdded);
        connect(apiClient, &ApiClient::keywordUpdated, this, &KeywordManagerDialog::onKeywordUpdated);
        connect(apiClient, &ApiClient::keywordDeleted, this, &KeywordManagerDialog::onKeywordDeleted);
        connect(apiClient, &ApiClient::errorOccurred, this, &KeywordManagerDialog::onApiError);
    }
}

KeywordManagerDialog::~KeywordManagerDialog() = default;

void KeywordManagerDialog::buildLayout()
{
    m_keywordTable->setObjectName(QStringLiteral("keywordTable"));
    m_keywordEdit->setObjectName(QStringLiteral("keywordEdit"));
    m_addButton->setObjectName(QStringLiteral("addButton"));
    m_removeButton->setObjectName(QStringLiteral("removeButton"));
    m_editButton->setObjectName(QStringLiteral("editButton"));
    m_importButton->setObjectName(QStringLiteral("importButton"));
    m_exportButton->setObjectName(QStringLiteral("exportButton"));
    m_buttonBox->setObjectName(QStringLiteral("buttonBox"));
    m_progressBar->setObjectName(QStringLiteral("progressBar"));
    m_statusLabel->setObjectName(QStringLiteral("statusLabel"));

    m_keywordEdit->setPlaceholderText(QStringLiteral("输入或搜索关键词…"));
    m_addButton->setDefault(true);
    for (QPushButton *button : {m_removeButton, m_editButton, m_exportButton})
        button->setAutoDefault(false);
    // It repeats lines of files, of any length: what does not fit is cut, and the window keeps its width.
    m_statusLabel->setTextFormat(Qt::PlainText);
    m_statusLabel->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    m_progressBar->setVisible(false);
    m_progressBar->setTextVisible(false);
    QPushButton *closeButton = m_buttonBox->button(QDialogButtonBox::Close);
    closeButton->setText(QStringLiteral("关闭"));
    closeButton->setAutoDefault(false);
    for (QPushButton *button : {m_addButton, m_editButton, m_removeButton, m_exportButton, closeButton})
        dress(button);

    m_keywordTable->setHorizontalHeaderLabels(
        {QStringLiteral("关键词"), QStringLiteral("状态"), QStringLiteral("自选")});
    m_keywordTable->setColumnWidth(KeywordColumn, 200);
    m_keywordTable->setColumnWidth(StateColumn, 80);
    m_keywordTable->setColumnWidth(SelectedColumn, 80);
    m_keywordTable->horizontalHeader()->setStretchLastSection(true);
    m_keywordTable->verticalHeader()->setVisible(false);
    m_keywordTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_keywordTable->setSelectionMode(QAbstractItemView::SingleSelection);
    m_keywordTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_keywordTable->setAlternatingRowColors(true);
    m_keywordTable->setSortingEnabled(true);
    m_keywordTable->setTabKeyNavigation(false);

    auto *inputGroup = new QGroupBox(this);
    auto *inputRow = new QHBoxLayout(inputGroup);
    auto *label = new QLabel(QStringLiteral("关键词:"), inputGroup);
    label->setBuddy(m_keywordEdit);
    inputRow->addWidget(label);
    inputRow->addWidget(m_keywordEdit, 1);
    inputRow->addWidget(m_addButton);

    auto *listGroup = new QGroupBox(QStringLiteral("现有关键词"), this);
    auto *listLayout = new QVBoxLayout(listGroup);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(m_editButton);
    buttons->addWidget(m_removeButton);
    buttons->addStretch();
    buttons->addWidget(m_exportButton);
    listLayout->addWidget(m_keywordTable, 1);
    listLayout->addLayout(buttons);

    auto *stateRow = new QHBoxLayout;
    stateRow->addWidget(m_statusLabel, 1);
    stateRow->addWidget(m_progressBar);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(inputGroup);
    layout->addWidget(listGroup, 1);
    layout->addLayout(stateRow);
    layout->addWidget(m_buttonBox);

    setTabOrder(m_keywordEdit, m_addButton);
    setTabOrder(m_addButton, m_keywordTable);
    setTabOrder(m_keywordTable, m_editButton);
    setTabOrder(m_editButton, m_removeButton);
    setTabOrder(m_removeButton, m_exportButton);
    setTabOrder(m_exportButton, closeButton);
    m_keywordEdit->setFocus();
}

void KeywordManagerDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (m_keywordsLoaded)
        return;
    m_keywordsLoaded = true;
    loadKeywords();
}

void KeywordManagerDialog::keyPressEvent(QKeyEvent *event)
{
    // Otherwise Return in the list would press the default button, which adds what stands in the field.
    const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (!m_keywordTable->hasFocus() || (!enter && event->key() != Qt::Key_Delete)) {
        QDialog::keyPressEvent(event);
        return;
    }
    if (m_keywordTable->currentRow() >= 0)
        (enter ? m_editButton : m_removeButton)->click();
}

bool KeywordManagerDialog::requireApiClient()
{
    if (m_apiClient != nullptr)
        return true;
    QMessageBox::warning(this, errorTitle, QStringLiteral("API客户端未初始化"));
    return false;
}

void KeywordManagerDialog::loadKeywords()
{
    if (!requireApiClient())
        return;
    setBusy(true);
    m_statusLabel->setText(QStringLiteral("正在加载关键词..."));
    m_requestTimer->start();
    m_apiClient->getKeywords();
}

void KeywordManagerDialog::setBusy(bool busy)
{
    if (busy)
        m_progressBar->setRange(0, 0);
    m_progressBar->setVisible(busy);
    for (QPushButton *button :
         {m_addButton, m_editButton, m_removeButton, m_importButton.get(), m_exportButton})
        button->setEnabled(!busy);
}

void KeywordManagerDialog::onRequestTimeout()
{
    setBusy(false);
    m_statusLabel->setText(QStringLiteral("请求超时"));
    QMessageBox::warning(this, QStringLiteral("超时"),
                         QStringLiteral("请求超时，请检查网络连接或稍后重试。"));
}

void KeywordManagerDialog::onKeywordsReceived(const QList<KeywordData> &keywords)
{
    m_requestTimer->stop();
    setBusy(false);
    m_keywords = keywords;
    showFiltered();
    m_statusLabel->setText(QStringLiteral("已加载 %1 个关键词").arg(keywords.size()));
}

void KeywordManagerDialog::showFiltered()
{
    const QString filter = m_keywordEdit->text().trimmed();
    m_emptyHint->setText(filter.isEmpty() ? emptyText : noMatchText);
    const QList<KeywordData> keywords = KeywordRules::filtered(m_keywords, filter);
    const bool sorting = m_keywordTable->isSortingEnabled();
    m_keywordTable->setSortingEnabled(false);
    m_keywordTable->setRowCount(0);
    for (const KeywordData &keyword : keywords)
        appendRow(keyword);
    m_keywordTable->setSortingEnabled(sorting);
}

void KeywordManagerDialog::appendRow(const KeywordData &keyword)
{
    // With sorting on, Qt would move the row between two cells.
    const bool sorting = m_keywordTable->isSortingEnabled();
    m_keywordTable->setSortingEnabled(false);
    const int row = m_keywordTable->rowCount();
    m_keywordTable->insertRow(row);
    auto *textItem = new QTableWidgetItem(keyword.keyword);
    textItem->setData(Qt::UserRole, keyword.id);
    m_keywordTable->setItem(row, KeywordColumn, textItem);
    m_keywordTable->setItem(row, StateColumn,
                            new QTableWidgetItem(keyword.isActive ? activeText : inactiveText));
    m_keywordTable->setItem(row, SelectedColumn, new QTableWidgetItem(keyword.isSelected ? yesText : noText));
    m_keywordTable->setSortingEnabled(sorting);
}

void KeywordManagerDialog::onSearchTextChanged(const QString &text)
{
    Q_UNUSED(text)
    showFiltered();
}

bool KeywordManagerDialog::validateKeyword(const QString &text, int excludeId)
{
    const QString fault = KeywordRules::fault(text);
    if (!fault.isEmpty()) {
        QMessageBox::warning(this, QStringLiteral("输入错误"), fault);
        return false;
    }
    // Only the rows shown are looked at. The filter is the keyword being typed, so an equal one stays in
    // sight.
    const QString trimmed = text.trimmed();
    for (int row = 0; row < m_keywordTable->rowCount(); ++row) {
        const QTableWidgetItem *item = m_keywordTable->item(row, KeywordColumn);
        const bool excluded = excludeId > 0 && item->data(Qt::UserRole).toInt() == excludeId;
        if (!excluded && item->text() == trimmed) {
            QMessageBox::warning(this, QStringLiteral("重复关键词"), QStringLiteral("该关键词已存在"));
            return false;
        }
    }
    return true;
}

void KeywordManagerDialog::onAddButtonClicked()
{
    const QString text = m_keywordEdit->text().trimmed();
    if (!validateKeyword(text, 0))
        return;

    QDialog dialog(this);
    dialog.setWindowTitle(QStringLiteral("添加关键词"));
    dialog.setModal(true);
    dialog.resize(400, 150);
    auto *keywordLabel = new QLabel(text, &dialog);
    keywordLabel->setTextFormat(Qt::PlainText);
    keywordLabel->setStyleSheet(QStringLiteral("font-weight: bold; color: #2E8B57;"));
    auto *keywordRow = new QHBoxLayout;
    keywordRow->addWidget(new QLabel(QStringLiteral("关键词:"), &dialog));
    keywordRow->addWidget(keywordLabel, 1);
    auto *selectedBox = new QCheckBox(selectedCaption, &dialog);
    auto *layout = new QVBoxLayout(&dialog);
    layout->addLayout(keywordRow);
    layout->addWidget(selectedBox);
    layout->addStretch();
    layout->addWidget(okAndCancel(&dialog));
    if (dialog.exec() != QDialog::Accepted || !requireApiClient())
        return;
    setBusy(true);
    m_statusLabel->setText(QStringLiteral("正在添加关键词..."));
    m_apiClient->addKeyword(text, true, selectedBox->isChecked());
}

void KeywordManagerDialog::onKeywordAdded(const KeywordData &keyword)
{
    m_keywords.append(keyword);
    if (!KeywordRules::filtered({keyword}, m_keywordEdit->text()).isEmpty())
        appendRow(keyword);
    if (importRunning()) {
        ++m_importSucceeded;
        ++m_importIndex;
        importNextKeyword();
        return;
    }
    setBusy(false);
    m_keywordEdit->clear();
    m_statusLabel->setText(QStringLiteral("关键词添加成功"));
}

int KeywordManagerDialog::currentRowOrWarning(const QString &warning)
{
    const int row = m_keywordTable->currentRow();
    if (row < 0)
        QMessageBox::warning(this, hintTitle, warning);
    return row;
}

void KeywordManagerDialog::onEditButtonClicked()
{
    const int row = currentRowOrWarning(QStringLiteral("请先选择要编辑的关键词"));
    if (row < 0)
        return;
    const QString oldText = m_keywordTable->item(row, KeywordColumn)->text();
    const int id = m_keywordTable->item(row, KeywordColumn)->data(Qt::UserRole).toInt();
    const bool wasActive = m_keywordTable->item(row, StateColumn)->text() == activeText;
    const bool wasSelected = m_keywordTable->item(row, SelectedColumn)->text() == yesText;

    QDialog dialog(this);
    dialog.setWindowTitle(QStringLiteral("编辑关键词"));
    dialog.setModal(true);
    dialog.resize(400, 200);
    auto *textEdit = new QLineEdit(oldText, &dialog);
    auto *activeBox = new QCheckBox(activeText, &dialog);
    activeBox->setChecked(wasActive);
    auto *selectedBox = new QCheckBox(selectedCaption, &dialog);
    selectedBox->setChecked(wasSelected);
    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("关键词:"), textEdit);
    form->addRow(QStringLiteral("状态:"), activeBox);
    form->addRow(QStringLiteral("自选:"), selectedBox);
    auto *layout = new QVBoxLayout(&dialog);
    layout->addLayout(form);
    layout->addStretch();
    layout->addWidget(okAndCancel(&dialog));
    textEdit->selectAll();
    if (dialog.exec() != QDialog::Accepted)
        return;

    const QString text = textEdit->text().trimmed();
    if (text.isEmpty()) {
        QMessageBox::warning(this, errorTitle, QStringLiteral("关键词不能为空"));
        return;
    }
    const bool unchanged =
        text == oldText && activeBox->isChecked() == wasActive && selectedBox->isChecked() == wasSelected;
    if (unchanged || !validateKeyword(text, id) || !requireApiClient())
        return;
    setBusy(true);
    m_statusLabel->setText(QStringLiteral("正在更新关键词..."));
    m_apiClient->updateKeyword(id, text, activeBox->isChecked(), selectedBox->isChecked());
}

void KeywordManagerDialog::onKeywordDoubleClicked(int row, int column)
{
    if (!m_editButton->isEnabled())
        return;
    m_keywordTable->setCurrentCell(row, column);
    onEditButtonClicked();
}

void KeywordManagerDialog::onKeywordUpdated(int)
{
    setBusy(false);
    loadKeywords();
    m_statusLabel->setText(QStringLiteral("关键词更新成功"));
}

void KeywordManagerDialog::onRemoveButtonClicked()
{
    const int row = currentRowOrWarning(QStringLiteral("请先选择要删除的关键词"));
    if (row < 0)
        return;
    const QTableWidgetItem *item = m_keywordTable->item(row, KeywordColumn);
    const int id = item->data(Qt::UserRole).toInt();

    QMessageBox question(QMessageBox::Question, QStringLiteral("确认删除"),
                         QStringLiteral("确定要删除关键词 \"%1\" 吗？").arg(item->text()),
                         QMessageBox::Yes | QMessageBox::No, this);
    question.setTextFormat(Qt::PlainText);
    question.button(QMessageBox::Yes)->setText(yesText);
    question.button(QMessageBox::No)->setText(noText);
    question.setDefaultButton(QMessageBox::No);
    if (question.exec() != QMessageBox::Yes || !requireApiClient())
        return;
    setBusy(true);
    m_statusLabel->setText(QStringLiteral("正在删除关键词..."));
    m_apiClient->deleteKeyword(id);
}

void KeywordManagerDialog::onKeywordDeleted(int keywordId)
{
    setBusy(false);
    if (keywordId < 1) {
        m_statusLabel->setText(QStringLiteral("删除失败：无效的关键词ID"));
        return;
    }
    bool removed = false;
    const auto entry =
        std::find_if(m_keywords.begin(), m_keywords.end(),
                     [keywordId](const KeywordData &keyword) { return keyword.id == keywordId; });
    if (entry != m_keywords.end()) {
        m_keywords.erase(entry);
        removed = true;
    }
    for (int row = 0; row < m_keywordTable->rowCount(); ++row) {
        if (m_keywordTable->item(row, KeywordColumn)->data(Qt::UserRole).toInt() == keywordId) {
            m_keywordTable->removeRow(row);
            removed = true;
            break;
        }
    }
    m_statusLabel->setText(removed ? QStringLiteral("关键词删除成功") : QStringLiteral("删除操作完成"));
}

void KeywordManagerDialog::onApiError(const QString &errorMessage)
{
    m_requestTimer->stop();
    if (importRunning()) {
        ++m_importFailed;
        ++m_importIndex;
        importNextKeyword();
        return;
    }
    setBusy(false);
    m_statusLabel->setText(QStringLiteral("操作失败"));
    if (errorMessage.contains(QStringLiteral("NOT FOUND")) ||
        errorMessage.contains(QStringLiteral("无权限删除"))) {
        QMessageBox::information(this, hintTitle,
                                 QStringLiteral("无法删除该关键词，可能是系统预设的关键词。\n"
                                                "您可以尝试编辑其状态来禁用该关键词。"));
        return;
    }
    // The service's words are shown as they are.
    QMessageBox::warning(this, errorTitle, ServiceWords::asSent(errorMessage));
}

void KeywordManagerDialog::onExportButtonClicked()
{
    if (m_keywordTable->rowCount() == 0) {
        QMessageBox::information(this, hintTitle, QStringLiteral("没有关键词可以导出"));
        return;
    }
    const QString path = QFileDialog::getSaveFileName(this, QStringLiteral("导出关键词"),
                                                      QStringLiteral("keywords.txt"), fileFilter);
    if (path.isEmpty())
        return;
    // Written beside the target and moved over it at the end: a full disk does not cost the old file.
    QSaveFile file(path);
    // In a folder that takes no new file the old one may still be written to.
    file.setDirectWriteFallback(true);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        QMessageBox::warning(this, errorTitle, QStringLiteral("无法创建文件"));
        return;
    }
    QTextStream stream(&file);
    stream.setCodec("UTF-8");
    for (int row = 0; row < m_keywordTable->rowCount(); ++row)
        stream << m_keywordTable->item(row, KeywordColumn)->text() << '\n';
    stream.flush();
    if (stream.status() != QTextStream::Ok || !file.commit()) {
        QMessageBox::warning(this, errorTitle, QStringLiteral("写入文件失败，原有文件未被改动"));
        return;
    }
    QMessageBox::information(this, QStringLiteral("成功"), QStringLiteral("关键词导出成功"));
}

void KeywordManagerDialog::onImportButtonClicked()
{
    const QString path =
        QFileDialog::getOpenFileName(this, QStringLiteral("导入关键词"), QString(), fileFilter);
    if (path.isEmpty())
        return;
    QFile file(path);
    // Nothing but a file: opening a pipe would wait for somebody to write into it.
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        QMessageBox::warning(this, errorTitle, unreadableText);
        return;
    }
    // One byte more than allowed is enough to tell that a file is too large.
    const QByteArray bytes = file.read(KeywordRules::maximumFileBytes + 1);
    if (file.error() != QFile::NoError) {
        QMessageBox::warning(this, errorTitle, unreadableText);
        return;
    }
    const KeywordRules::FileContents contents = KeywordRules::readFile(bytes);
    if (!contents.fault.isEmpty()) {
        QMessageBox::warning(this, errorTitle, contents.fault);
        return;
    }
    if (contents.texts.isEmpty()) {
        QMessageBox::information(this, hintTitle, QStringLiteral("文件中没有找到有效的关键词"));
        return;
    }
    if (!requireApiClient())
        return;
    setBusy(true);
    m_statusLabel->setText(QStringLiteral("正在导入关键词 (0/%1)...").arg(contents.texts.size()));
    m_pendingImport = contents.texts;
    m_importIndex = 0;
    m_importSucceeded = 0;
    m_importFailed = 0;
    importNextKeyword();
}

void KeywordManagerDialog::importNextKeyword()
{
    const auto known = [this](const QString &text) {
        return std::any_of(m_keywords.cbegin(), m_keywords.cend(),
                           [&text](const KeywordData &keyword) { return keyword.keyword == text; });
    };
    for (; m_importIndex < m_pendingImport.size(); ++m_importIndex) {
        const QString &text = m_pendingImport.at(m_importIndex);
        m_statusLabel->setText(QStringLiteral("正在导入关键词 (%1/%2): %3")
                                   .arg(m_importIndex + 1)
                                   .arg(m_pendingImport.size())
                                   .arg(text));
        if (KeywordRules::isWellFormed(text) && !known(text) && m_apiClient != nullptr) {
            // The reply runs the next step.
            m_apiClient->addKeyword(text, true, false);
            return;
        }
        ++m_importFailed;
    }
    setBusy(false);
    const QString result =
        QStringLiteral("导入完成\n成功: %1 个\n失败: %2 个").arg(m_importSucceeded).arg(m_importFailed);
    // Over before the box is shown: an error that arrives while it is open is none of the import's.
    m_pendingImport.clear();
    m_importIndex = 0;
    m_importSucceeded = 0;
    m_importFailed = 0;
    QMessageBox::information(this, QStringLiteral("导入结果"), result);
}
