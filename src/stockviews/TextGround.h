#pragma once

#include <QColor>
#include <QFont>
#include <QList>

class QTextDocument;

/// A stretch of a line of rich text on a ground of its own.
struct TextGround
{
    int begin = 0; ///< first character
    int end = 0;   ///< behind the last one
    QColor color;
    QFont font; ///< of the letters on it

    /// Takes the grounds out of the document's first line, which would draw them as bare rectangles without
    /// any room beside the letters, and tells them from left to right. The text stays.
    static QList<TextGround> takeFrom(QTextDocument &document);
};
