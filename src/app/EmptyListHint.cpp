#include "app/EmptyListHint.h"

#include "settings/SkinLightness.h"

#include <QAbstractItemModel>
#include <QAbstractItemView>
#include <QColor>
#include <QEvent>
#include <QPainter>

EmptyListHint::EmptyListHint(QAbstractItemView *view, const QString &text)
    : QWidget(view->viewport()), m_view(view), m_text(text)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setAccessibleName(text);
    view->viewport()->installEventFilter(this);
    const QAbstractItemModel *model = view->model();
    connect(model, &QAbstractItemModel::rowsInserted, this, &EmptyListHint::followRows);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &EmptyListHint::followRows);
    connect(model, &QAbstractItemModel::modelReset, this, &EmptyListHint::followRows);
    setGeometry(view->viewport()->rect());
    followRows();
}

bool EmptyListHint::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_view->viewport() && event->type() == QEvent::Resize)
        setGeometry(m_view->viewport()->rect());
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
    setVisible(m_view->model()->rowCount() == 0);
}
