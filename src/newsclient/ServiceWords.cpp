#include "newsclient/ServiceWords.h"

#include <QTextDocument>

namespace ServiceWords {

QString asSent(const QString &words)
{
    return Qt::mightBeRichText(words) ? Qt::convertFromPlainText(words) : words;
}

} // namespace ServiceWords
