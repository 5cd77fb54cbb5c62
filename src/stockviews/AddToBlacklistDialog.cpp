#include "stockviews/AddToBlacklistDialog.h"

#include "settings/InputField.h"
#include "stockviews/BlacklistRules.h"
#include "stockviews/ConfirmButtons.h"
#include "stockviews/OpenedBox.h"

#include <QComboBox>
#include <QLabel>
#include <QVBoxLayout>

namespace {

constexpr int MinimumWidth = 450;
constexpr int GroupSpacing = 8; // pixels, between what does not belong together

QLabel *makeLabel(const QString &objectName, const QString &text, const QString &style = {})
{
    auto *label = new QLabel(text);
    label->setObjectName(objectName);
    label->setTextFormat(Qt::PlainText);
    label->setStyleSheet(style);
    return label;
}

} // namespace

AddToBlacklistDialog::AddToBlacklistDialog(const QString &stockName, const QString &stockCode,
                                           QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint)
    , m_quickReasonComboBox(new QComboBox)
    , m_reasonLineEdit(new InputField)
    , m_counterLabel(makeLabel(QStringLiteral("counterLabel"), QString()))
{
    setWindowTitle(QStringLiteral("添加到黑名单"));
    setModal(true);
    setMinimumWidth(MinimumWidth);

    auto *quickCaption =
        makeLabel(QStringLiteral("quickReasonLabel"), QStringLiteral("快速选择原因（可选）："));
    auto *reasonCaption =
        makeLabel(QStringLiteral("reasonLabel"), QStringLiteral("加入黑名单的原因（3-20个字）："),
                  QStringLiteral("QLabel { color: #e74c3c; font-weight: bold; }"));

    m_quickReasonComboBox->setObjectName(QStringLiteral("quickReasonComboBox"));
    m_quickReasonComboBox->addItem(QStringLiteral("-- 选择快速填入 --"), 0);
    int number = 0;
    for (const QString &quickReason : BlacklistRules::quickReasons())
        m_quickReasonComboBox->addItem(quickReason, ++number);
    quickCaption->setBuddy(m_quickReasonComboBox);

    m_reasonLineEdit->setObjectName(QStringLiteral("reasonLineEdit"));
    m_reasonLineEdit->setPlaceholderText(QStringLiteral("请输入原因（最少3个字，最多20个字）..."));
    m_reasonLineEdit->setMaxLength(BlacklistRules::LongestReason);
    reasonCaption->setBuddy(m_reasonLineEdit);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(makeLabel(QStringLiteral("stockLabel"),
                                BlacklistRules::dialogHeading(stockName, stockCode),
                                QStringLiteral("QLabel { font-size: 18px; font-weight: bold; }")));
    layout->addSpacing(GroupSpacing);
    layout->addWidget(quickCaption);
    layout->addWidget(m_quickReasonComboBox);
    layout->addSpacing(GroupSpacing);
    layout->addWidget(reasonCaption);
    layout->addWidget(m_reasonLineEdit);
    layout->addWidget(m_counterLabel);
    layout->addWidget(makeLabel(QStringLiteral("hintLabel"),
                                QStringLiteral("💡 提示：可从上方快速选择，也可以自由编辑或完全自定义原因")));
    layout->addSpacing(GroupSpacing);
    layout->addStretch();
    layout->addWidget(makeConfirmButtons(this, QStringLiteral("加入黑名单")));

    connect(m_quickReasonComboBox, QOverload<int>::of(&QComboBox::activated), this,
            &AddToBlacklistDialog::onQuickReasonActivated);
    connect(m_reasonLineEdit, &QLineEdit::textChanged, this, &AddToBlacklistDialog::showCount);
    showCount(QString());
    m_reasonLineEdit->setFocus();
}

QString AddToBlacklistDialog::reason() const
{
    return m_reasonLineEdit->text().trimmed();
}

void AddToBlacklistDialog::onQuickReasonActivated(int index)
{
    if (m_quickReasonComboBox->itemData(index).toInt() <= 0)
        return;
    m_reasonLineEdit->setText(m_quickReasonComboBox->itemText(index));
    m_reasonLineEdit->setFocus();
    m_reasonLineEdit->setCursorPosition(m_reasonLineEdit->text().size());
}

void AddToBlacklistDialog::showCount(const QString &typed)
{
    m_counterLabel->setText(BlacklistRules::counterText(typed.size()));
    m_counterLabel->setStyleSheet(BlacklistRules::counterStyle(typed.size()));
}

void AddToBlacklistDialog::accept()
{
    const QString problem = BlacklistRules::reasonProblem(reason());
    if (problem.isEmpty()) {
        QDialog::accept();
        return;
    }
    const QMessageBox *box = openBox(this, QMessageBox::Warning, QStringLiteral("输入错误"), problem);
    connect(box, &QDialog::finished, m_reasonLineEdit, [this] { m_reasonLineEdit->setFocus(); });
}
