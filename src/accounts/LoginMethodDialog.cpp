#include "accounts/LoginMethodDialog.h"

#include "accounts/AccountDialogSkin.h"
#include "accounts/MethodCard.h"
#include "settings/ThemeManager.h"

#include <QButtonGroup>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QVariant>

namespace {

constexpr char methodProperty[] = "method";

QLabel *centredLabel(const QString &text, const QFont &font, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setFont(font);
    label->setAlignment(Qt::AlignCenter);
    return label;
}

} // namespace

LoginMethodDialog::LoginMethodDialog(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint)
    , m_methodGroup(new QButtonGroup(this))
    , m_okButton(new QPushButton(QStringLiteral("下一步"), this))
    , m_cancelButton(new QPushButton(QStringLiteral("取消"), this))
{
    setWindowTitle(QStringLiteral("选择登录方式"));
    setModal(true);
    setFixedSize(500, 700);

    const QString family = QStringLiteral("Microsoft YaHei");
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(20);
    layout->setContentsMargins(40, 30, 40, 30);
    layout->addWidget(centredLabel(QStringLiteral("欢迎使用云雀资讯"), QFont(family, 18, QFont::Bold), this));
    layout->addWidget(centredLabel(QStringLiteral("请选择您的登录方式"), QFont(family, 12), this));

    const struct
    {
        int id;
        QString icon;
        QString title;
        QString description;
    } methods[] = {
        {LoginMethod::EmailPassword, QStringLiteral("👤"), QStringLiteral("邮箱登录"),
         QStringLiteral("使用邮箱和密码登录，支持注册新用户")},
        {LoginMethod::ApiKey, QStringLiteral("🔑"), QStringLiteral("API Key 登录"),
         QStringLiteral("使用已有的API Key，快速登录")},
        {LoginMethod::DeviceKey, QStringLiteral("🆓"), QStringLiteral("免费用户"),
         QStringLiteral("无需注册，使用与本机绑定的免费Key登录")},
    };
    auto *group = new QGroupBox(this);
    auto *cards = new QVBoxLayout(group);
    cards->setContentsMargins(9, 16, 9, 24);
    cards->setSpacing(24);
    for (const auto &method : methods) {
        auto *card = new MethodCard(method.icon, method.title, method.description, group);
        card->setProperty(methodProperty, method.id);
        m_methodGroup->addButton(card, method.id);
        cards->addWidget(card, 0, Qt::AlignHCenter);
        connect(card, &QRadioButton::clicked, this, &LoginMethodDialog::onMethodSelected);
    }
    layout->addStretch(2);
    layout->addWidget(group);
    layout->addStretch(3);
    m_methodGroup->button(LoginMethod::EmailPassword)->setChecked(true);

    auto *buttons = new QHBoxLayout;
    buttons->setSpacing(20);
    buttons->addStretch();
    for (QPushButton *button : {m_okButton, m_cancelButton}) {
        button->setFixedSize(120, 45);
        button->setFont(QFont(family, 16, QFont::Bold));
        buttons->addWidget(button);
    }
    buttons->addStretch();
    layout->addLayout(buttons);
    m_okButton->setDefault(true);
    m_okButton->setProperty("primary", true);

    connect(m_okButton, &QPushButton::clicked, this, &LoginMethodDialog::onOkClicked);
    connect(m_cancelButton, &QPushButton::clicked, this, &LoginMethodDialog::onCancelClicked);
    connect(ThemeManager::instance(), &ThemeManager::themeChanged, this, &LoginMethodDialog::updateTheme);
    updateTheme();
}

void LoginMethodDialog::setAuthManager(AuthManager *authManager)
{
    m_authManager = authManager;
}

void LoginMethodDialog::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    m_methodGroup->checkedButton()->setFocus();
}

void LoginMethodDialog::onMethodSelected()
{
    const QObject *card = sender();
    if (card == nullptr)
        return;
    m_selectedMethod = card->property(methodProperty).toInt();
    m_okButton->setEnabled(true);
}

void LoginMethodDialog::onOkClicked()
{
    accept();
}

void LoginMethodDialog::onCancelClicked()
{
    reject();
}

void LoginMethodDialog::updateTheme()
{
    setStyleSheet(
        AccountDialogSkin::loginDialogs(ThemeManager::instance()->currentTheme() == ThemeManager::DarkTheme));
}
