#pragma once

#include <QString>
#include <QWidget>

class QLabel;
class QPropertyAnimation;
class QPushButton;
class QTimer;

/// The program's own popup: a rounded card above all windows that shows the title of one news item without
/// taking the focus, and fades out. There is one of it; a new text takes the place of the old one.
///
/// The card stays while the mouse is on it. Its look is the same in both skins.
class CustomNotification final : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(qreal windowOpacity READ windowOpacity WRITE setWindowOpacity)

public:
    explicit CustomNotification(QWidget *parent = nullptr);
    ~CustomNotification() override;
    Q_DISABLE_COPY_MOVE(CustomNotification)

    /// Where the next card stands on the primary screen: one of the eleven stored names, see
    /// NotificationPlacing. Any other text means "bottom_right".
    void setPosition(const QString &name);

    /// Shows the card for `durationMs` milliseconds, also in place of a card that is on the screen or fading.
    /// An empty `title` shows the program's name. `message` is plain text.
    void showNotification(const QString &title, const QString &message, int durationMs);

signals:
    /// The left button was pressed on the card; the close button does not count.
    void notificationClicked();

public slots:
    void onCloseButtonClicked();
    /// Starts to fade unless the mouse is on the card. Meant as it is: the timer itself goes to fadeOut().
    void onAutoHideTimer();
    void fadeOut();
    void onFadeOutFinished();

protected:
    void enterEvent(QEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void buildLayout();
    void place();
    bool isFading() const;

    QLabel *m_iconLabel = nullptr;
    QLabel *m_titleLabel = nullptr;
    QLabel *m_messageLabel = nullptr;
    QPushButton *m_closeButton = nullptr;
    QTimer *m_autoHideTimer = nullptr;
    QPropertyAnimation *m_fadeAnimation = nullptr;
    bool m_hovered = false;
    int m_duration = 10000;
    QString m_position = QStringLiteral("bottom_right");
};
