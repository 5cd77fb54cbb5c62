#pragma once

#include "newsclient/NewsRecords.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

/// What a keyword may be, and how a keyword file is read. Pure functions.
namespace KeywordRules {

constexpr int maximumLength = 15;

/// Whether \p text consists of 1 to 15 Chinese characters (U+4E00 to U+9FA5), Latin letters and digits,
/// nothing else.
bool isWellFormed(const QString &text);

/// What is wrong with \p text, trimmed, as a keyword, ready to be shown; empty when nothing is.
QString fault(const QString &text);

/// Those of \p keywords whose text contains \p filter, trimmed, without regard to case; all of them for an
/// empty filter.
QList<KeywordData> filtered(const QList<KeywordData> &keywords, const QString &filter);

/// A keyword file: UTF-8 text, one keyword a line.
struct FileContents
{
    QStringList texts; ///< the lines, trimmed, without the empty ones
    QString fault;     ///< why the file can't be used, ready to be shown; empty when it can
};

/// The largest keyword file that is read, in bytes.
constexpr qint64 maximumFileBytes = 1024 * 1024;

/// Reads the bytes of a keyword file. Bytes that are no UTF-8 text are a fault: taken as they are, every line
/// would be turned into other keywords than the user's. A byte order mark is skipped.
FileContents readFile(const QByteArray &bytes);

} // namespace KeywordRules
