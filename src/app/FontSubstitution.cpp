#include "app/FontSubstitution.h"

#include <QApplication>
#include <QDebug>
#include <QFont>
#include <QFontDatabase>

namespace FontSubstitution {

namespace {

/// The families that style sheets and HTML name.
const QStringList &namedFamilies()
{
    static const QStringList families = {QStringLiteral("Microsoft YaHei"), QStringLiteral("SimSun"),
                                         QStringLiteral("SimHei")};
    return families;
}

/// Simplified Chinese faces and colour emoji of other systems, the best first.
QStringList presentSubstitutes(const QStringList &available)
{
    static const QStringList chinese = {QStringLiteral("Noto Sans CJK SC"),
                                        QStringLiteral("WenQuanYi Micro Hei")};
    static const QString emoji = QStringLiteral("Noto Color Emoji");

    QStringList substitutes;
    for (const QString &family : chinese) {
        if (available.contains(family))
            substitutes.append(family);
    }
    if (!substitutes.isEmpty() && available.contains(emoji))
        substitutes.append(emoji);
    return substitutes;
}

} // namespace

QList<Substitution> neededSubstitutions(const QStringList &available)
{
    const QStringList substitutes = presentSubstitutes(available);
    QList<Substitution> needed;
    if (substitutes.isEmpty())
        return needed;
    for (const QString &family : namedFamilies()) {
        if (!available.contains(family))
            needed.append({family, substitutes});
    }
    return needed;
}

QStringList interfaceFamilies(const QString &systemFamily, const QStringList &available)
{
    QStringList families{systemFamily};
    for (const QString &family : namedFamilies()) {
        if (available.contains(family))
            return families;
    }
    for (const QString &family : presentSubstitutes(available)) {
        if (!families.contains(family))
            families.append(family);
    }
    return families;
}

void apply()
{
    if (QFontDatabase().families(QFontDatabase::SimplifiedChinese).isEmpty())
        qWarning() << "No Chinese font is installed, such as Noto Sans CJK SC: texts will show as boxes";
    const QStringList available = QFontDatabase().families();
    for (const Substitution &substitution : neededSubstitutions(available))
        QFont::insertSubstitutions(substitution.family, substitution.substitutes);

    QFont font = QApplication::font();
    const QStringList families = interfaceFamilies(font.family(), available);
    if (families.size() > 1) {
        font.setFamilies(families);
        QApplication::setFont(font);
    }
}

} // namespace FontSubstitution
