#include "news/CustomNotification.h"

#include "news/NotificationPlacing.h"

#include <QApplication>
#include <QBitmap>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QIcon>
#include <QImage>
#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QPixmap>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScreen>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextLayout>
#include <QTimer>
#include <QVBoxLayout>

namespace {

constexpr int fadeMs = 300;
constexpr int afterHoverMs = 1000;
constexpr double cornerRadius = 12.0;

// An X server without a compositor shows black where a translucent window is clear: cut the corners off
// there. The other platforms always compose, and a cut would only roughen the edge.
bool cornersNeedMask()
{
    return QGuiApplication::platformName() == QLatin1String("xcb");
}

QBitmap roundedMask(const QSize &size)
{
    QImage card(size, QImage::Format_ARGB32_Premultiplied);
    card.fill(Qt::transparent);
    QPainter painter(&card);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(Qt::black);
    painter.drawRoundedRect(QRectF(QPointF(0, 0), size), cornerRadius, cornerRadius);
    painter.end();
    return QBitmap::fromImage(card.createAlphaMask());
}

// A label whose text can be selected keeps a mouse press for itself; here the card beneath is to have it too.
class MessageLabel final : public QLabel
{
public:
    using QLabel::QLabel;

protected:
    void mousePressEvent(QMouseEvent *event) override
    {
        QLabel::mousePressEvent(event);
        event->ignore();
    }
};

/// Gives the label's lines the height that makes them fill `height` pixels. A label that lets its text be
/// selected spaces them wider than the font metrics do where a fallback font with tall lines draws them; the
/// last lines of a long text would not be seen.
void fitLines(QLabel *label, int height)
{
    // The text is laid out on the first question for its size.
    const int wanted = label->heightForWidth(label->width());
    auto *document = label->findChild<QTextDocument *>();
    if (document == nullptr || wanted <= height)
        return;
    int lines = 0;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next())
        lines += block.layout()->lineCount();
    if (lines == 0)
        return;
    QTextBlockFormat format;
    format.setLineHeight(qreal(height) / lines, QTextBlockFormat::FixedHeight);
    QTextCursor cursor(document);
    cursor.select(QTextCursor::Document);
    cursor.mergeBlockFormat(format);
}

} // namespace

CustomNotification::CustomNotification(QWidget *parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , m_autoHideTimer(new QTimer(this))
    , m_fadeAnimation(new QPropertyAnimation(this, QByteArrayLiteral("windowOpacity"), this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    // The dark skin pads all buttons, which would clip the cross of this small one.
    setStyleSheet(QStringLiteral("QPushButton { padding: 0px; }"));
    buildLayout();

    m_autoHideTimer->setObjectName(QStringLiteral("autoHideTimer"));
    m_autoHideTimer->setSingleShot(true);
    connect(m_autoHideTimer, &QTimer::timeout, this, &CustomNotification::fadeOut);

    m_fadeAnimation->setObjectName(QStringLiteral("fadeAnimation"));
    m_fadeAnimation->setDuration(fadeMs);
    m_fadeAnimation->setStartValue(1.0);
    m_fadeAnimation->setEndValue(0.0);
    connect(m_fadeAnimation, &QPropertyAnimation::finished, this, &CustomNotification::onFadeOutFinished);
}

CustomNotification::~CustomNotification()
{
    m_autoHideTimer->stop();
    if (isFading())
        m_fadeAnimation->stop();
}

void CustomNotification::buildLayout()
{
    m_iconLabel = new QLabel(this);
    m_iconLabel->setObjectName(QStringLiteral("iconLabel"));
    m_iconLabel->setFixedSize(24, 24);
    m_iconLabel->setScaledContents(true);
    QPixmap picture(QStringLiteral(":/images/keyword.png"));
    if (picture.isNull())
        picture = QApplication::windowIcon().pixmap(24, 24);
    m_iconLabel->setPixmap(picture);

    m_titleLabel = new QLabel(QStringLiteral("Larkspire"), this);
    m_titleLabel->setObjectName(QStringLiteral("titleLabel"));
    QFont titleFont = m_titleLabel->font();
    titleFont.setPointSize(10);
    titleFont.setWeight(QFont::Bold);
    m_titleLabel->setFont(titleFont);
    m_titleLabel->setStyleSheet(QStringLiteral("color: #333333;"));

    m_closeButton = new QPushButton(QStringLiteral("×"), this);
    m_closeButton->setObjectName(QStringLiteral("closeButton"));
    m_closeButton->setFixedSize(20, 20);
    m_closeButton->setCursor(Qt::PointingHandCursor);
    m_closeButton->setStyleSheet(QStringLiteral(
        "QPushButton {   border: none;   background: transparent;   color: #666666;   font-size: 18px;   "
        "font-weight: bold;}QPushButton:hover {   color: #333333;   background: #E0E0E0;   border-radius: "
        "3px;}"));
    connect(m_closeButton, &QPushButton::clicked, this, &CustomNotification::fadeOut);

    m_messageLabel = new MessageLabel(this);
    m_messageLabel->setObjectName(QStringLiteral("messageLabel"));
    m_messageLabel->setWordWrap(true);
    m_messageLabel->setTextFormat(Qt::PlainText);
    m_messageLabel->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont messageFont = m_messageLabel->font();
    messageFont.setPointSize(13);
    m_messageLabel->setFont(messageFont);
    m_messageLabel->setStyleSheet(QStringLiteral("color: #000000; padding: 0px;"));
    m_messageLabel->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_messageLabel->setContentsMargins(0, 0, 0, 0);

    auto *outer = new QVBoxLayout(this);
    outer->setContentsMargins(15, 6, 15, 6);
    outer->setSpacing(3);
    auto *heading = new QHBoxLayout;
    heading->setContentsMargins(0, 0, 0, 0);
    heading->setSpacing(16);
    heading->addWidget(m_iconLabel);
    heading->addWidget(m_titleLabel);
    heading->addStretch();
    heading->addWidget(m_closeButton);
    outer->addLayout(heading);
    outer->addWidget(m_messageLabel);
}

void CustomNotification::setPosition(const QString &name)
{
    m_position = name;
}

void CustomNotification::showNotification(const QString &title, const QString &message, int durationMs)
{
    m_duration = durationMs;
    if (isFading())
        m_fadeAnimation->stop();
    m_autoHideTimer->stop();
    setWindowOpacity(1.0);
    // Meant as it is: a mouse that is already on the card does not hold the new text.
    m_hovered = false;

    m_titleLabel->setText(title.isEmpty() ? QStringLiteral("Larkspire") : title);
    m_messageLabel->setText(message);
    m_messageLabel->setFixedWidth(NotificationPlacing::messageWidth);
    const QRect box(0, 0, NotificationPlacing::messageWidth, 10000);
    const QRect text = QFontMetrics(m_messageLabel->font())
                           .boundingRect(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, message);
    const NotificationPlacing::Heights heights = NotificationPlacing::heightsForText(text.height());

    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    resize(NotificationPlacing::cardWidth, heights.card);
    setMinimumSize(210, heights.card);
    setMaximumSize(NotificationPlacing::cardWidth, heights.card);
    m_messageLabel->setMinimumHeight(heights.message);
    m_messageLabel->setMaximumHeight(heights.message);
    fitLines(m_messageLabel, text.height());
    if (cornersNeedMask())
        setMask(roundedMask(size()));

    place();
    show();
    raise();
    m_autoHideTimer->start(m_duration);
}

void CustomNotification::place()
{
    const QScreen *screen = QGuiApplication::primaryScreen();
    if (!screen)
        return;
    move(NotificationPlacing::topLeft(m_position, screen->availableGeometry(), screen->geometry(), size()));
}

bool CustomNotification::isFading() const
{
    return m_fadeAnimation->state() == QAbstractAnimation::Running;
}

void CustomNotification::onCloseButtonClicked()
{
    fadeOut();
}

void CustomNotification::onAutoHideTimer()
{
    if (!m_hovered)
        fadeOut();
}

void CustomNotification::fadeOut()
{
    m_autoHideTimer->stop();
    if (!isFading())
        m_fadeAnimation->start();
}

void CustomNotification::onFadeOutFinished()
{
    m_titleLabel->clear();
    m_messageLabel->clear();
    hide();
}

void CustomNotification::enterEvent(QEvent *event)
{
    m_hovered = true;
    m_autoHideTimer->stop();
    QWidget::enterEvent(event);
}

void CustomNotification::leaveEvent(QEvent *event)
{
    m_hovered = false;
    if (!m_autoHideTimer->isActive() && isVisible() && !isFading())
        m_autoHideTimer->start(afterHoverMs);
    QWidget::leaveEvent(event);
}

void CustomNotification::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton) {
        emit notificationClicked();
        fadeOut();
    }
    QWidget::mousePressEvent(event);
}

void CustomNotification::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF card = rect();
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(0xD9, 0xDB, 0xDC));
    painter.drawRoundedRect(card, cornerRadius, cornerRadius);
    painter.setPen(QPen(QColor(200, 200, 200), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(card.adjusted(0.5, 0.5, -0.5, -0.5), cornerRadius, cornerRadius);
}
