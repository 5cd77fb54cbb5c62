#include "accounts/MethodCard.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>
#include <QVariant>

MethodCard::MethodCard(const QString &icon, const QString &title, const QString &description, QWidget *parent)
    : QRadioButton(parent)
{
    setFixedSize(400, 60);
    setProperty("card", true);
    // The texts are labels inside the button, so a screen reader needs to be told what the button says.
    setAccessibleName(title);
    setAccessibleDescription(description);

    auto *iconLabel = new QLabel(icon, this);
    iconLabel->setFixedSize(30, 30);
    iconLabel->setAlignment(Qt::AlignCenter);
    iconLabel->setStyleSheet(
        // Named first: a text face may have a plain glyph of its own for some of these signs.
        QStringLiteral("font-family: 'Segoe UI Emoji', 'Noto Color Emoji'; font-size: 24px;"));
    auto *titleLabel = new QLabel(title, this);
    titleLabel->setStyleSheet(QStringLiteral("font-size: 15px; font-weight: bold;"));
    auto *descriptionLabel = new QLabel(description, this);
    descriptionLabel->setProperty("role", QStringLiteral("muted"));
    descriptionLabel->setStyleSheet(QStringLiteral("font-size: 12px;"));
    for (QLabel *label : {iconLabel, titleLabel, descriptionLabel})
        label->setAttribute(Qt::WA_TransparentForMouseEvents);

    auto *texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addStretch();
    texts->addWidget(titleLabel);
    texts->addWidget(descriptionLabel);
    texts->addStretch();
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(42, 0, 12, 0);
    row->setSpacing(12);
    row->addWidget(iconLabel);
    row->addLayout(texts, 1);
}
