#include "stockviews/ChipLayout.h"

#include "stockviews/ChipRows.h"

#include <QWidget>

ChipLayout::ChipLayout(int spacing)
{
    setContentsMargins(0, 0, 0, 0);
    setSpacing(spacing);
}

ChipLayout::~ChipLayout() = default;

void ChipLayout::addItem(QLayoutItem *item)
{
    m_items.emplace_back(item);
}

QLayoutItem *ChipLayout::itemAt(int index) const
{
    return index >= 0 && index < count() ? m_items.at(static_cast<std::size_t>(index)).get() : nullptr;
}

QLayoutItem *ChipLayout::takeAt(int index)
{
    if (index < 0 || index >= count())
        return nullptr;
    const auto place = m_items.begin() + index;
    QLayoutItem *item = place->release();
    m_items.erase(place);
    return item;
}

QVector<QRect> ChipLayout::placed(int width) const
{
    QVector<QSize> sizes;
    sizes.reserve(count());
    for (const std::unique_ptr<QLayoutItem> &item : m_items)
        sizes.append(item->sizeHint());
    return ChipRows::placed(sizes, width, spacing());
}

int ChipLayout::heightForWidth(int width) const
{
    return ChipRows::heightOf(placed(width));
}

QSize ChipLayout::minimumSize() const
{
    int highest = 0;
    for (const std::unique_ptr<QLayoutItem> &item : m_items)
        highest = qMax(highest, item->sizeHint().height());
    return {0, highest};
}

QSize ChipLayout::sizeHint() const
{
    return minimumSize();
}

void ChipLayout::setGeometry(const QRect &rect)
{
    QLayout::setGeometry(rect);
    const QVector<QRect> places = placed(rect.width());
    for (int i = 0; i < count(); ++i)
        m_items[static_cast<std::size_t>(i)]->setGeometry(places.at(i).translated(rect.topLeft()));
}
