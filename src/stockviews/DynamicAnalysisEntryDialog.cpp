#include "stockviews/DynamicAnalysisEntryDialog.h"

#include "stockviews/ConfirmButtons.h"
#include "stockviews/DynamicAnalysisText.h"
#include "stockviews/OpenedBox.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QTextEdit>
#include <QVBoxLayout>

namespace {

constexpr int ContentHeight = 200;
constexpr int RoomAroundDialog = 80; // of the screen's height
constexpr int DialogWidth = 520;

} // namespace

DynamicAnalysisEntryDialog::DynamicAnalysisEntryDialog(const QString &title, QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint)
    , m_titleEdit(new QLineEdit(title.trimmed()))
    , m_contentEdit(new QTextEdit)
{
    setWindowTitle(QStringLiteral("录入异动信息"));
    setModal(true);

    m_titleEdit->setObjectName(QStringLiteral("titleLineEdit"));
    auto *titleCaption = new QLabel(QStringLiteral("标题:"));
    titleCaption->setBuddy(m_titleEdit);

    m_contentEdit->setObjectName(QStringLiteral("contentTextEdit"));
    m_contentEdit->setAcceptRichText(false);
    m_contentEdit->setTabChangesFocus(true);
    m_contentEdit->setMinimumHeight(ContentHeight);
    auto *contentCaption = new QLabel(QStringLiteral("异动解析内容:"));
    contentCaption->setBuddy(m_contentEdit);

    auto *paste = new QPushButton(QStringLiteral("从剪贴板粘贴"));
    paste->setObjectName(QStringLiteral("pasteButton"));
    paste->setAutoDefault(false);
    auto *contentRow = new QHBoxLayout;
    contentRow->addWidget(contentCaption);
    contentRow->addStretch();
    contentRow->addWidget(paste);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(titleCaption);
    layout->addWidget(m_titleEdit);
    layout->addLayout(contentRow);
    layout->addWidget(m_contentEdit);
    layout->addWidget(makeConfirmButtons(this, QStringLiteral("确定")));

    const QScreen *screen = parent ? parent->window()->screen() : QGuiApplication::primaryScreen();
    setMaximumHeight(screen->geometry().height() - RoomAroundDialog);
    resize(DialogWidth, sizeHint().height());

    connect(paste, &QPushButton::clicked, this, &DynamicAnalysisEntryDialog::onPasteClicked);
    m_titleEdit->setFocus();
}

QString DynamicAnalysisEntryDialog::title() const
{
    return m_titleEdit->text().trimmed();
}

QString DynamicAnalysisEntryDialog::content() const
{
    return m_contentEdit->toPlainText();
}

void DynamicAnalysisEntryDialog::onPasteClicked()
{
    const QString text = QApplication::clipboard()->text();
    if (text.isEmpty())
        return;
    m_contentEdit->setPlainText(text);
    const QString title = DynamicAnalysisText::titleOfPasted(text);
    if (!title.isEmpty())
        m_titleEdit->setText(title);
}

void DynamicAnalysisEntryDialog::accept()
{
    const QString problem = DynamicAnalysisText::savingProblem(title(), content());
    if (problem.isEmpty()) {
        QDialog::accept();
        return;
    }
    const QMessageBox *box = openBox(this, QMessageBox::Warning, QStringLiteral("输入错误"), problem);
    QWidget *missing = title().isEmpty() ? static_cast<QWidget *>(m_titleEdit) : m_contentEdit;
    connect(box, &QDialog::finished, missing, [missing] { missing->setFocus(); });
}
