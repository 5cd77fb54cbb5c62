#pragma once

#include <QRadioButton>

/// A radio button drawn as a card of 400 by 60: an icon, a title and a line of description inside it. The
/// whole card takes the click, not only the round indicator.
class MethodCard final : public QRadioButton
{
    Q_OBJECT

public:
    MethodCard(const QString &icon, const QString &title, const QString &description,
               QWidget *parent = nullptr);
    Q_DISABLE_COPY_MOVE(MethodCard)

protected:
    bool hitButton(const QPoint &position) const override { return rect().contains(position); }
};
