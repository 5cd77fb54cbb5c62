#pragma once

#include <QString>
#include <QWidget>

class QAbstractItemModel;
class QAbstractItemView;

/// A line in the middle of a list that says what will be here, for as long as the list has no row. It takes
/// no mouse events.
class EmptyListHint final : public QWidget
{
    Q_OBJECT

public:
    /// \param view the list, with its model set; it becomes the owner
    EmptyListHint(QAbstractItemView *view, const QString &text);
    Q_DISABLE_COPY_MOVE(EmptyListHint)

    QString text() const { return m_text; }
    /// Says something else from now on.
    void setText(const QString &text);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void followRows();

    const QAbstractItemModel *m_model;
    QString m_text;
};
