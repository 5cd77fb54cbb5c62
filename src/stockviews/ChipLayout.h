#pragma once

#include <QLayout>
#include <QVector>

#include <memory>
#include <vector>

/// Lays chips out in rows that wrap with the width, by ChipRows. It asks for no width of its own, so that it
/// never makes its surroundings wider; its height follows from the width.
class ChipLayout final : public QLayout
{
    Q_OBJECT

public:
    /// \param spacing between chips and between rows, in pixels
    explicit ChipLayout(int spacing);
    ~ChipLayout() override;
    Q_DISABLE_COPY_MOVE(ChipLayout)

    void addItem(QLayoutItem *item) override;
    int count() const override { return static_cast<int>(m_items.size()); }
    QLayoutItem *itemAt(int index) const override;
    QLayoutItem *takeAt(int index) override;

    QSize sizeHint() const override;
    QSize minimumSize() const override;
    Qt::Orientations expandingDirections() const override { return Qt::Horizontal; }
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;
    void setGeometry(const QRect &rect) override;

private:
    QVector<QRect> placed(int width) const;

    std::vector<std::unique_ptr<QLayoutItem>> m_items;
};
