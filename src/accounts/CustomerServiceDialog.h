#pragma once

#include <QDialog>

class QLabel;
class QPushButton;

/// Shows how to reach support: a code to scan with WeChat, and a link that opens the chat.
class CustomerServiceDialog final : public QDialog
{
    Q_OBJECT

public:
    /// \p darkTheme: the skin to start with.
    CustomerServiceDialog(QWidget *parent, bool darkTheme);
    Q_DISABLE_COPY_MOVE(CustomerServiceDialog)

    void setDarkTheme(bool dark);

private slots:
    void onWeChatClick();
    void onCloseClick();

private:
    void applyTheme();
    void showQrCode();

    bool m_darkTheme;
    QLabel *m_titleLabel;
    QLabel *m_valuesLabel;
    QLabel *m_qrCodeTitleLabel;
    QLabel *m_qrCodeLabel;
    QLabel *m_serviceTimeLabel;
    QLabel *m_weChatInstructionLabel;
    QPushButton *m_weChatButton;
    QPushButton *m_closeButton;
};
