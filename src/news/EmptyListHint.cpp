#include "news/EmptyListHint.h"

#include "settings/SkinLightness.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QColor>
#include <QEvent>
#include <QPainter>

EmptyListHint::EmptyListHint(QAbstractItemView *view, const QString &text)
    : QWidget(view->viewport()), m_model(view->model()), m_text(text)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(text);
    view->viewport()->installEventFilter(this);
    connect(m_model, &QAbstractItemModel::rowsInserted, this, &EmptyListHint::followRows);
    connect(m_model, &QAbstractItemModel::rowsRemoved, this, &EmptyListHint::followRows);
    connect(m_model, &QAbstractItemModel::modelReset, this, &EmptyListHint::followRows);
    setGeometry(view->viewport()->rect());
    followRows();
}

void EmptyListHint::setText(const QString &text)
{
    m_text = text;
    setAccessibleName(text);
    update();
}

bool EmptyListHint::eventFilter(QObject *watched, QEvent *event)
{
    // Not by way of the list: its own part may be gone when its viewport goes.
    if (watched == parentWidget() && event->type() == QEvent::Resize)
        setGeometry(parentWidget()->rect());
    return QWidget::eventFilter(watched, event);
}

void EmptyListHint::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QPainter painter(this);
    painter.setPen(isDarkSkin(palette()) ? QColor(0x9A, 0xA0, 0xA6) : QColor(0x6B, 0x70, 0x75));
    painter.drawText(rect().adjusted(16, 16, -16, -16), Qt::AlignCenter | Qt::TextWordWrap, m_text);
}

void EmptyListHint::followRows()
{
    setVisible(m_model->rowCount() == 0);
}
