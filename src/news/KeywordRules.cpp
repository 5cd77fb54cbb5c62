#include "news/KeywordRules.h"

#include <QRegularExpression>
#include <QTextCodec>

#include <algorithm>
#include <iterator>

bool KeywordRules::isWellFormed(const QString &text)
{
    static const QRegularExpression pattern(
        QRegularExpression::anchoredPattern(QStringLiteral("[A-Za-z0-9\\x{4E00}-\\x{9FA5}]{1,15}")));
    return pattern.match(text).hasMatch();
}

QString KeywordRules::fault(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty())
        return QStringLiteral("关键词不能为空");
    if (trimmed.size() > maximumLength)
        return QStringLiteral("关键词长度不能超过15个字符");
    if (!isWellFormed(trimmed))
        return QStringLiteral("仅允许中文、英文字母和数字，不能包含空格或特殊符号");
    return QString();
}

QList<KeywordData> KeywordRules::filtered(const QList<KeywordData> &keywords, const QString &filter)
{
    const QString wanted = filter.trimmed();
    if (wanted.isEmpty())
        return keywords;
    QList<KeywordData> result;
    std::copy_if(
        keywords.begin(), keywords.end(), std::back_inserter(result),
        [&wanted](const KeywordData &item) { return item.keyword.contains(wanted, Qt::CaseInsensitive); });
    return result;
}

KeywordRules::FileContents KeywordRules::readFile(const QByteArray &bytes)
{
    if (bytes.size() > maximumFileBytes)
        return {{}, QStringLiteral("文件过大，关键词文件不能超过1MB")};
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    // A zero byte is valid UTF-8 and yet no text: a program or a picture whose other bytes happen to pass.
    if (state.invalidChars > 0 || state.remainingChars > 0 || bytes.contains('\0'))
        return {{}, QStringLiteral("文件不是UTF-8编码的文本，请另存为UTF-8后重试")};
    FileContents contents;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QString keyword = line.trimmed();
        if (!keyword.isEmpty())
            contents.texts.append(keyword);
    }
    return contents;
}
