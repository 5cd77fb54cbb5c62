#include "desktop/DesktopEntryExec.h"

namespace {

/// Undoes the escapes that every string value of a desktop entry may hold.
QString unescaped(const QString &value)
{
    QString text;
    for (int i = 0; i < value.size(); ++i) {
        if (value.at(i) != QLatin1Char('\\') || i + 1 == value.size()) {
            text.append(value.at(i));
            continue;
        }
        const QChar escaped = value.at(++i);
        switch (escaped.unicode()) {
        case 's':
            text.append(QLatin1Char(' '));
            break;
        case 'n':
            text.append(QLatin1Char('\n'));
            break;
        case 't':
            text.append(QLatin1Char('\t'));
            break;
        case 'r':
            text.append(QLatin1Char('\r'));
            break;
        case '\\':
            text.append(QLatin1Char('\\'));
            break;
        default:
            text.append(QLatin1Char('\\'));
            text.append(escaped);
        }
    }
    return text;
}

} // namespace

QString DesktopEntryExec::valueFor(const QString &programPath)
{
    if (programPath.contains(QLatin1Char('=')))
        return QString();
    QString quoted = programPath;
    // Within quotes these four take a backslash, the backslash itself first; a percent sign is doubled.
    for (const char special : {'\\', '"', '`', '$'})
        quoted.replace(QLatin1Char(special), QLatin1Char('\\') + QString(QLatin1Char(special)));
    quoted.replace(QLatin1Char('%'), QLatin1String("%%"));
    quoted = QLatin1Char('"') + quoted + QLatin1Char('"');
    // The rules of string values come on top of the quoting.
    return quoted.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('\n'), QLatin1String("\\n"))
        .replace(QLatin1Char('\t'), QLatin1String("\\t"))
        .replace(QLatin1Char('\r'), QLatin1String("\\r"));
}

std::optional<QStringList> DesktopEntryExec::arguments(const QString &value)
{
    const QString line = unescaped(value);
    QStringList found;
    QString current;
    bool inArgument = false;
    bool inQuotes = false;
    for (int i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        if (inQuotes && c == QLatin1Char('\\') && i + 1 < line.size()) {
            current.append(line.at(++i));
        } else if (c == QLatin1Char('"')) {
            inQuotes = !inQuotes;
            inArgument = true;
        } else if (!inQuotes && c == QLatin1Char(' ')) {
            if (inArgument)
                found.append(current);
            current.clear();
            inArgument = false;
        } else {
            current.append(c);
            inArgument = true;
            if (c == QLatin1Char('%') && line.midRef(i + 1, 1) == QLatin1String("%"))
                ++i;
        }
    }
    if (inQuotes)
        return std::nullopt;
    if (inArgument)
        found.append(current);
    return found;
}
