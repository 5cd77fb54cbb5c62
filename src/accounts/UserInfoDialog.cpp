#include "accounts/UserInfoDialog.h"

#include "accounts/AuthManager.h"
#include "accounts/UserCardRules.h"
#include "accounts/WrappingLabel.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

constexpr int avatarSize = 60;

/// \p image, clipped to a circle of 60 by 60 at the screen's own resolution.
QPixmap roundAvatar(const QImage &image, qreal pixelRatio)
{
    const int pixels = qRound(avatarSize * pixelRatio);
    QPixmap result(pixels, pixels);
    result.fill(Qt::transparent);
    QPainter painter(&result);
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    QPainterPath circle;
    circle.addEllipse(0, 0, pixels, pixels);
    painter.setClipPath(circle);
    painter.drawImage(0, 0,
                      image.scaled(pixels, pixels, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation));
    painter.end();
    result.setDevicePixelRatio(pixelRatio);
    return result;
}

} // namespace

UserInfoDialog::UserInfoDialog(QWidget *parent)
    : QDialog(parent)
    , m_tabWidget(new QTabWidget(this))
    , m_avatarLabel(new QLabel)
    , m_emailLabel(new WrappingLabel)
    , m_closeButton(new QPushButton(QStringLiteral("关闭"), this))
{
    setWindowTitle(QStringLiteral("用户信息"));
    setWindowFlags(windowFlags() | Qt::WindowStaysOnTopHint);
    setMinimumWidth(420);

    auto *tab = new QWidget(m_tabWidget);
    tab->setObjectName(QStringLiteral("userInfoTab"));
    m_tabWidget->addTab(tab, QStringLiteral("用户信息"));

    auto *card = new QFrame(tab);
    card->setObjectName(QStringLiteral("userInfoCard"));
    card->setStyleSheet(
        QStringLiteral("QFrame#userInfoCard { background: qlineargradient(x1:0, y1:0, x2:0, y2:1,"
                       " stop:0 #FFF8DC, stop:1 #FFE4B5); border-radius: 12px; }"));
    m_avatarLabel->setObjectName(QStringLiteral("avatarLabel"));
    // The picture shrinks into the ring of the border, which is then round.
    m_avatarLabel->setFixedSize(avatarSize, avatarSize);
    m_avatarLabel->setScaledContents(true);
    m_avatarLabel->setAlignment(Qt::AlignCenter);
    m_emailLabel->setObjectName(QStringLiteral("emailLabel"));
    m_emailLabel->setStyleSheet(QStringLiteral("color: #8B4513; font-size: 18px; font-weight: bold;"));

    auto *cardLayout = new QHBoxLayout(card);
    cardLayout->setContentsMargins(20, 20, 20, 20);
    // At least 120 high, and higher for a long line.
    cardLayout->addStrut(80);
    cardLayout->setSizeConstraint(QLayout::SetMinimumSize);
    cardLayout->setSpacing(16);
    cardLayout->addWidget(m_avatarLabel, 0, Qt::AlignCenter);
    cardLayout->addWidget(m_emailLabel, 1);
    auto *tabLayout = new QVBoxLayout(tab);
    tabLayout->addWidget(card);
    tabLayout->addStretch();

    m_closeButton->setObjectName(QStringLiteral("closeButton"));
    m_closeButton->setMinimumSize(100, 32);
    m_closeButton->setDefault(true);
    m_closeButton->setFocus();
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabWidget, 1);
    layout->addWidget(m_closeButton, 0, Qt::AlignRight);
    connect(m_closeButton, &QPushButton::clicked, this, &QDialog::accept);
}

void UserInfoDialog::setApiClient(ApiClient *apiClient)
{
    if (m_apiClient != nullptr)
        m_apiClient->disconnect(this);
    m_apiClient = apiClient;
    if (apiClient == nullptr)
        return;
    connect(apiClient, &ApiClient::userInfoReceived, this, &UserInfoDialog::onUserInfoReceived);
    connect(apiClient, &ApiClient::bindWechatResponse, this, &UserInfoDialog::onBindWechatResponse);
    connect(apiClient, &ApiClient::bindEmailResponse, this, &UserInfoDialog::onBindEmailResponse);
}

void UserInfoDialog::setAuthManager(AuthManager *authManager)
{
    m_authManager = authManager;
}

void UserInfoDialog::setCustomerServiceDialog(CustomerServiceDialog *dialog)
{
    m_customerServiceDialog = dialog;
}

void UserInfoDialog::onRefreshUserInfoClicked()
{
    if (const auto *authManager = qobject_cast<AuthManager *>(m_authManager)) {
        m_userInfo = UserCardRules::userInfoObject(authManager->currentUser());
        showUserInfo();
    } else if (m_apiClient != nullptr) {
        m_userInfo = QJsonObject();
        showUserInfo();
        m_apiClient->getUserInfo();
    } else {
        QMessageBox::critical(this, QStringLiteral("错误"), QStringLiteral("无法获取用户信息"));
    }
}

void UserInfoDialog::onUserInfoReceived(const QJsonObject &userInfo)
{
    m_userInfo = userInfo;
    showUserInfo();
}

void UserInfoDialog::onContactCustomerServiceClicked()
{
    if (m_customerServiceDialog == nullptr) {
        QMessageBox::critical(this, QStringLiteral("错误"), QStringLiteral("客服未设置"));
        return;
    }
    m_customerServiceDialog->show();
    m_customerServiceDialog->raise();
    m_customerServiceDialog->activateWindow();
    close();
}

void UserInfoDialog::showUserInfo()
{
    showAvatar();
    m_emailLabel->setText(UserCardRules::cardLine(m_userInfo));
    // A hidden tab widget does not pass on that its page needs another size.
    m_tabWidget->updateGeometry();
}

void UserInfoDialog::showAvatar()
{
    const QImage image(QStringLiteral(":/images/user_pro.png"));
    if (!image.isNull()) {
        m_avatarLabel->setPixmap(roundAvatar(image, devicePixelRatioF()));
        m_avatarLabel->setStyleSheet(QStringLiteral("border-radius: 30px; border: 2px solid #FFD700;"));
        return;
    }
    const QString letter = UserCardRules::initialLetter(m_userInfo);
    m_avatarLabel->setText(letter);
    m_avatarLabel->setStyleSheet(
        letter.isEmpty()
            ? QString()
            : QStringLiteral("border-radius: 30px; background-color: #FFD700; border: 2px solid #DAA520;"
                             " color: #8B4513; font-size: 24px; font-weight: bold;"));
}
