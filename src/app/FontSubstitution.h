#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// Fonts for Chinese text on systems that lack the families that the style sheets name.
namespace FontSubstitution {

/// One family that is absent, and the families to use in its place, the best first.
struct Substitution
{
    QString family;
    QStringList substitutes;
};

/// The substitutions that a system needs which has these families. None for a family that is there, nor when
/// none of the substitutes is.
QList<Substitution> neededSubstitutions(const QStringList &available);

/// The families of the program's own font, in the order in which a glyph is looked for: the system's choice,
/// then a Simplified Chinese face, so that no other region's forms of the characters come up by accident,
/// then colour emoji. Only the system's choice where it or the system brings a Chinese face of its own.
QStringList interfaceFamilies(const QString &systemFamily, const QStringList &available);

/// Puts both in force for the application, once at its start. A system without any Chinese face is told in
/// the log.
void apply();

} // namespace FontSubstitution
