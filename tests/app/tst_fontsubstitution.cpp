#include "app/FontSubstitution.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>
#include <QRawFont>
#include <QTextLayout>
#include <QtTest>

namespace {

const QString YaHei = QStringLiteral("Microsoft YaHei");
const QString SimSun = QStringLiteral("SimSun");
const QString SimHei = QStringLiteral("SimHei");
const QString Noto = QStringLiteral("Noto Sans CJK SC");
const QString Japanese = QStringLiteral("Noto Sans CJK JP");
const QString WenQuanYi = QStringLiteral("WenQuanYi Micro Hei");
const QString Emoji = QStringLiteral("Noto Color Emoji");
const QString Latin = QStringLiteral("DejaVu Sans");

/// The substitutions as "family: substitute, substitute" lines.
QStringList asLines(const QList<FontSubstitution::Substitution> &substitutions)
{
    QStringList lines;
    for (const FontSubstitution::Substitution &substitution : substitutions) {
        lines.append(QStringLiteral("%1: %2").arg(substitution.family,
                                                  substitution.substitutes.join(QStringLiteral(", "))));
    }
    return lines;
}

} // namespace

class TestFontSubstitution : public QObject
{
    Q_OBJECT

private slots:
    void absentFamiliesAreReplaced_data();
    void absentFamiliesAreReplaced();
    void interfaceFontGetsAChineseFace_data();
    void interfaceFontGetsAChineseFace();
    void chineseTextIsSetInASimplifiedFace();
};

void TestFontSubstitution::absentFamiliesAreReplaced_data()
{
    QTest::addColumn<QStringList>("available");
    QTest::addColumn<QStringList>("lines");

    const auto line = [](const QString &family, const QStringList &substitutes) {
        return QStringLiteral("%1: %2").arg(family, substitutes.join(QStringLiteral(", ")));
    };
    const auto allLines = [&line](const QStringList &substitutes) {
        return QStringList{line(YaHei, substitutes), line(SimSun, substitutes), line(SimHei, substitutes)};
    };
    QTest::newRow("everything that Linux may have")
        << QStringList{Latin, Japanese, WenQuanYi, Emoji, Noto} << allLines({Noto, WenQuanYi, Emoji});
    QTest::newRow("the older Chinese face alone") << QStringList{Latin, WenQuanYi} << allLines({WenQuanYi});
    QTest::newRow("a Japanese face is no substitute") << QStringList{Latin, Japanese, Emoji} << QStringList();
    QTest::newRow("Windows") << QStringList{YaHei, SimSun, SimHei} << QStringList();
    QTest::newRow("one of the three is there")
        << QStringList{SimSun, Noto} << QStringList{line(YaHei, {Noto}), line(SimHei, {Noto})};
    QTest::newRow("nothing") << QStringList() << QStringList();
}

void TestFontSubstitution::absentFamiliesAreReplaced()
{
    QFETCH(QStringList, available);
    QTEST(asLines(FontSubstitution::neededSubstitutions(available)), "lines");
}

void TestFontSubstitution::interfaceFontGetsAChineseFace_data()
{
    QTest::addColumn<QString>("system");
    QTest::addColumn<QStringList>("available");
    QTest::addColumn<QStringList>("families");

    QTest::newRow("Linux") << Latin << QStringList{Latin, Japanese, Noto, WenQuanYi, Emoji}
                           << QStringList{Latin, Noto, WenQuanYi, Emoji};
    QTest::newRow("the system's choice is Chinese already")
        << Noto << QStringList{Noto, Emoji} << QStringList{Noto, Emoji};
    QTest::newRow("Windows") << YaHei << QStringList{YaHei, SimSun} << QStringList{YaHei};
    QTest::newRow("no Chinese face at all")
        << Latin << QStringList{Latin, Japanese, Emoji} << QStringList{Latin};
}

void TestFontSubstitution::interfaceFontGetsAChineseFace()
{
    QFETCH(QString, system);
    QFETCH(QStringList, available);
    QTEST(FontSubstitution::interfaceFamilies(system, available), "families");
}

void TestFontSubstitution::chineseTextIsSetInASimplifiedFace()
{
    const QStringList available = QFontDatabase().families();
    QVERIFY2(available.contains(Noto), "Noto Sans CJK SC has to be installed (fonts-noto-cjk)");
    FontSubstitution::apply();

    // Characters whose Japanese and Simplified Chinese forms differ, in the interface font and in the family
    // that the details views name.
    for (const QFont &font : {QApplication::font(), QFont(YaHei)}) {
        QTextLayout layout(QStringLiteral("直角骨门"), font);
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        const QList<QGlyphRun> runs = layout.glyphRuns();
        QVERIFY(!runs.isEmpty());
        for (const QGlyphRun &run : runs)
            QCOMPARE(run.rawFont().familyName().toLower(), Noto.toLower());
    }
}

LARKSPIRE_TEST_MAIN(TestFontSubstitution)
#include "tst_fontsubstitution.moc"
