#include "stockviews/LimitUpPopup.h"

#include "stockviews/StockPageRules.h"

#include <QGuiApplication>
#include <QLabel>
#include <QScreen>
#include <QVBoxLayout>

LimitUpPopup::LimitUpPopup(QWidget *parent)
    : QFrame(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint), m_label(new QLabel(this))
{
    setObjectName(QStringLiteral("limitUpPopup"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setFocusPolicy(Qt::NoFocus);
    setStyleSheet(QStringLiteral("QFrame#limitUpPopup { background-color: #2c3e50; border: 1px solid #34495e;"
                                 " border-radius: 8px; }"
                                 "QLabel { color: #ecf0f1; background: transparent; }"));
    m_label->setObjectName(QStringLiteral("limitUpDetailLabel"));
    m_label->setTextFormat(Qt::RichText);
    m_label->setWordWrap(true);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 12, 12, 12);
    layout->addWidget(m_label);
}

void LimitUpPopup::showBeside(const QRect &anchor, const QString &html)
{
    m_label->setText(html);
    adjustSize();
    const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
    move(StockPageRules::popupPosition(anchor, size(), screen));
    show();
}
