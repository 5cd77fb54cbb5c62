#include "accounts/CustomerServiceDialog.h"

#include "accounts/AccountDialogSkin.h"

#include <QDesktopServices>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPixmap>
#include <QPushButton>
#include <QScreen>
#include <QUrl>
#include <QVBoxLayout>

namespace {

const QString supportChatLink = QStringLiteral("https://www.larkspire.example/support/chat");
const QString weChatDownloadLink = QStringLiteral("https://weixin.qq.com/");

constexpr QSize qrCodeMaximum(350, 380);
/// Whole pixels for each of the code's 33 cells, at 100, 125, 150 and 200 %.
constexpr QSize qrCodeSize(264, 264);

QLabel *line(const QString &name, const QString &text, int pixelSize, bool bold, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    label->setObjectName(name);
    label->setAlignment(Qt::AlignCenter);
    QFont font = label->font();
    font.setPixelSize(pixelSize);
    font.setBold(bold);
    label->setFont(font);
    return label;
}

QString coloured(const QString &text, const QString &color)
{
    return QStringLiteral("<span style='color: %1;'>%2</span>").arg(color, text);
}

} // namespace

CustomerServiceDialog::CustomerServiceDialog(QWidget *parent, bool darkTheme)
    : QDialog(parent)
    , m_darkTheme(darkTheme)
    , m_titleLabel(line(QStringLiteral("titleLabel"), QStringLiteral("云雀工坊在线客服"), 22, true, this))
    , m_valuesLabel(
          line(QStringLiteral("valuesLabel"),
               QStringLiteral("云雀工坊已通过微信官方认证\n我们竭诚为顾客提供专业而卓越的服务体验！"), 18,
               false, this))
    , m_qrCodeTitleLabel(
          line(QStringLiteral("qrCodeTitleLabel"), QStringLiteral("↓请用微信扫码咨询客服↓"), 18, true, this))
    , m_qrCodeLabel(new QLabel(this))
    , m_serviceTimeLabel(line(QStringLiteral("serviceTimeLabel"), QString(), 14, false, this))
    , m_weChatInstructionLabel(line(QStringLiteral("weChatInstructionLabel"), QString(), 14, false, this))
    , m_weChatButton(new QPushButton(QStringLiteral("点击此处进入微信对话"), this))
    , m_closeButton(new QPushButton(QStringLiteral("关闭"), this))
{
    setWindowTitle(QStringLiteral("客服支持"));
    setWindowFlags(windowFlags() | Qt::WindowStaysOnTopHint);
    resize(500, 600);
    setMinimumWidth(500);

    m_valuesLabel->setWordWrap(true);
    m_serviceTimeLabel->setTextFormat(Qt::RichText);
    m_weChatInstructionLabel->setTextFormat(Qt::RichText);
    m_weChatInstructionLabel->setWordWrap(true);
    m_weChatInstructionLabel->setOpenExternalLinks(true);
    m_weChatInstructionLabel->setTextInteractionFlags(Qt::LinksAccessibleByMouse |
                                                      Qt::LinksAccessibleByKeyboard);
    m_qrCodeLabel->setObjectName(QStringLiteral("qrCodeLabel"));
    m_qrCodeLabel->setAlignment(Qt::AlignCenter);
    m_qrCodeLabel->setMaximumSize(qrCodeMaximum);
    m_weChatButton->setObjectName(QStringLiteral("weChatButton"));
    m_weChatButton->setMinimumHeight(36);
    m_closeButton->setObjectName(QStringLiteral("closeButton"));
    m_closeButton->setMinimumSize(100, 32);
    m_closeButton->setDefault(true);
    m_closeButton->setFocus();
    showQrCode();

    auto *mainLayout = new QVBoxLayout(this);
    mainLayout->setObjectName(QStringLiteral("mainLayout"));
    mainLayout->setContentsMargins(30, 24, 30, 24);
    mainLayout->setSpacing(12);
    mainLayout->addWidget(m_titleLabel);
    mainLayout->addWidget(m_valuesLabel);
    mainLayout->addWidget(m_qrCodeTitleLabel);
    auto *qrCodeContainerLayout = new QHBoxLayout;
    qrCodeContainerLayout->setObjectName(QStringLiteral("qrCodeContainerLayout"));
    qrCodeContainerLayout->addStretch();
    qrCodeContainerLayout->addWidget(m_qrCodeLabel);
    qrCodeContainerLayout->addStretch();
    mainLayout->addLayout(qrCodeContainerLayout);
    mainLayout->addWidget(m_serviceTimeLabel);
    mainLayout->addWidget(m_weChatInstructionLabel);
    mainLayout->addWidget(m_weChatButton, 0, Qt::AlignHCenter);
    auto *buttonLayout = new QHBoxLayout;
    buttonLayout->setObjectName(QStringLiteral("buttonLayout"));
    buttonLayout->addStretch();
    buttonLayout->addWidget(m_closeButton);
    buttonLayout->addStretch();
    mainLayout->addLayout(buttonLayout);

    connect(m_weChatButton, &QPushButton::clicked, this, &CustomerServiceDialog::onWeChatClick);
    connect(m_closeButton, &QPushButton::clicked, this, &CustomerServiceDialog::onCloseClick);
    applyTheme();

    adjustSize();
    if (const QScreen *screen = QGuiApplication::primaryScreen()) {
        QRect frame(QPoint(), size());
        frame.moveCenter(screen->availableGeometry().center());
        move(frame.topLeft());
    }
}

void CustomerServiceDialog::setDarkTheme(bool dark)
{
    m_darkTheme = dark;
    applyTheme();
}

void CustomerServiceDialog::showQrCode()
{
    QPixmap code(QStringLiteral(":/images/wxqrcode.png"));
    if (code.isNull()) {
        m_qrCodeLabel->setText(QStringLiteral("二维码加载失败"));
        return;
    }
    const qreal pixelRatio = devicePixelRatioF();
    const QSize pixels = qrCodeSize * pixelRatio;
    QPixmap shown = code.scaled(pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    shown.setDevicePixelRatio(pixelRatio);
    m_qrCodeLabel->setPixmap(shown);
}

void CustomerServiceDialog::applyTheme()
{
    const AccountDialogSkin::ServiceColors colors = AccountDialogSkin::customerService(m_darkTheme);
    setStyleSheet(AccountDialogSkin::customerServiceSheet(colors));
    m_serviceTimeLabel->setText(QStringLiteral("客服在线时间: (%1)")
                                    .arg(coloured(QStringLiteral("工作日: 8:00-22:00"), colors.accent)));
    m_weChatInstructionLabel->setText(
        QStringLiteral("如果您已经安装并启动了<a href='%1' style='color: %2;'>PC版微信</a>，请%3进入对话")
            .arg(weChatDownloadLink, colors.link, coloured(QStringLiteral("点击下面"), colors.accent)));
}

void CustomerServiceDialog::onWeChatClick()
{
    if (QDesktopServices::openUrl(QUrl(supportChatLink))) {
        accept();
        return;
    }
    QMessageBox::information(this, QStringLiteral("提示"),
                             QStringLiteral("无法打开微信对话。\n请用微信扫描上方二维码，或在微信中搜索"
                                            "“云雀工坊”联系客服。"));
}

void CustomerServiceDialog::onCloseClick()
{
    accept();
}
