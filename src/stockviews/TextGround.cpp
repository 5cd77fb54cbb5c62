#include "stockviews/TextGround.h"

#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>

QList<TextGround> TextGround::takeFrom(QTextDocument &document)
{
    QList<TextGround> grounds;
    const QTextBlock line = document.firstBlock();
    for (QTextBlock::iterator part = line.begin(); !part.atEnd(); ++part) {
        const QTextFragment fragment = part.fragment();
        const QTextCharFormat format = fragment.charFormat();
        if (format.background().style() != Qt::NoBrush)
            grounds.append({fragment.position(), fragment.position() + fragment.length(),
                            format.background().color(), format.font()});
    }
    for (const TextGround &ground : qAsConst(grounds)) {
        QTextCursor cursor(&document);
        cursor.setPosition(ground.begin);
        cursor.setPosition(ground.end, QTextCursor::KeepAnchor);
        QTextCharFormat format = cursor.charFormat();
        format.clearBackground();
        cursor.setCharFormat(format);
    }
    return grounds;
}
