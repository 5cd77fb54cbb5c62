#pragma once

#include <QImage>
#include <QString>

/// What is on the screen of a window, and questions about parts of it that hold whichever fonts a machine
/// has: what ground there is, how much stands on it, and whether a colour is among it.
class WindowPicture final
{
public:
    /// An empty picture.
    WindowPicture() = default;
    /// Takes the picture now. @param window the X server's id of it, without its frame.
    explicit WindowPicture(quint32 window);

    bool isNull() const { return m_image.isNull(); }
    QSize size() const { return m_image.size(); }
    bool save(const QString &file) const { return m_image.save(file); }
    WindowPicture part(const QRect &rectangle) const { return WindowPicture(m_image.copy(rectangle)); }

    /// The colour that most pixels have.
    QColor ground() const;
    /// Share of the pixels that differ clearly from the ground: text, lines, pictures.
    double inkShare() const;
    /// Share of the pixels that are this colour or nearly so.
    double shareOf(const QColor &colour) const;

    bool operator==(const WindowPicture &other) const { return m_image == other.m_image; }
    bool operator!=(const WindowPicture &other) const { return !(*this == other); }

private:
    explicit WindowPicture(const QImage &image) : m_image(image) {}

    QImage m_image;
};
