#include "desktop/X11KeyFollower.h"

#include "support/IsolatedHome.h"

#include <QCoreApplication>

/// What the follower is told, in one character and numbers: "+9@100" a press of key 9 at 100 ms, "-9@100" a
/// release, "." that nothing came behind, "x9" that the key is known to be up. What it says: "pressed 9",
/// "repeated 9", "released 9".
class tst_X11KeyFollower : public QObject
{
    Q_OBJECT

private slots:
    void tellsPressesRepetitionsAndReleasesApart_data();
    void tellsPressesRepetitionsAndReleasesApart();
    void waitsForTheNextEventOnlyAfterARelease();
    void knowsWhichKeysAreDownSinceWhen();
};

namespace {
QString text(const X11KeyFollower::Transitions &transitions)
{
    QStringList words;
    for (const X11KeyFollower::Transition &transition : transitions) {
        const QString change =
            transition.change == X11KeyFollower::Change::Pressed    ? QStringLiteral("pressed")
            : transition.change == X11KeyFollower::Change::Repeated ? QStringLiteral("repeated")
                                                                    : QStringLiteral("released");
        words.append(QStringLiteral("%1 %2").arg(change).arg(transition.keycode));
    }
    return words.join(QStringLiteral(", "));
}

X11KeyFollower::Transitions tell(X11KeyFollower &follower, const QString &word)
{
    const QStringList numbers = word.mid(1).split(QLatin1Char('@'));
    const auto keycode = quint8(numbers.constFirst().toUInt());
    switch (word.at(0).toLatin1()) {
    case '+':
        return follower.press(keycode, numbers.at(1).toUInt());
    case '-':
        return follower.release(keycode, numbers.at(1).toUInt());
    case 'x':
        return follower.letGo(keycode);
    default:
        return follower.settle();
    }
}
} // namespace

void tst_X11KeyFollower::tellsPressesRepetitionsAndReleasesApart_data()
{
    QTest::addColumn<QString>("events");
    QTest::addColumn<QStringList>("said");

    const auto row = [](const char *name, const char *events, const QStringList &said) {
        QTest::newRow(name) << QString::fromLatin1(events) << said;
    };
    const QString none;
    const auto pressed = [](int key) { return QStringLiteral("pressed %1").arg(key); };
    const auto repeated = [](int key) { return QStringLiteral("repeated %1").arg(key); };
    const auto released = [](int key) { return QStringLiteral("released %1").arg(key); };

    row("pressed and let go", "+9@100 -9@180 .", {pressed(9), none, released(9)});
    row("held for two repetitions", "+9@100 -9@760 +9@760 -9@800 +9@800 -9@830 .",
        {pressed(9), none, repeated(9), none, repeated(9), none, released(9)});
    row("pressed again right after", "+9@100 -9@180 +9@181 -9@200 .",
        {pressed(9), none, QStringLiteral("released 9, pressed 9"), none, released(9)});
    row("another key at the time of the release", "+9@100 -9@180 +7@180",
        {pressed(9), none, QStringLiteral("released 9, pressed 7")});
    row("another key's release behind it", "+9@100 +7@110 -9@180 -7@180 .",
        {pressed(9), pressed(7), none, released(9), released(7)});
    row("two keys, the second repeats", "+9@100 +7@200 -7@860 +7@860 -9@870 .",
        {pressed(9), pressed(7), none, repeated(7), none, released(9)});
    row("a release that was never seen", "+9@100 +9@900",
        {pressed(9), QStringLiteral("released 9, pressed 9")});
    row("a release without a press", "-9@100 .", {none, none});
    row("nothing to settle", ". +9@100 .", {none, pressed(9), none});
    row("known to be up", "+9@100 x9 -9@180 .", {pressed(9), released(9), none, none});
    row("known to be up while in doubt", "+9@100 -9@180 x9 .", {pressed(9), none, released(9), none});
    row("known to be up although it is not down", "x9", {none});
    row("the time goes round", "+9@4294967290 -9@4 +9@4 -9@60 .",
        {pressed(9), none, repeated(9), none, released(9)});
}

void tst_X11KeyFollower::tellsPressesRepetitionsAndReleasesApart()
{
    QFETCH(QString, events);
    QFETCH(QStringList, said);
    X11KeyFollower follower;
    QStringList actual;
    for (const QString &word : events.split(QLatin1Char(' ')))
        actual.append(text(tell(follower, word)));
    QCOMPARE(actual, said);
}

void tst_X11KeyFollower::waitsForTheNextEventOnlyAfterARelease()
{
    X11KeyFollower follower;
    QVERIFY(!follower.waitsForNextEvent());
    follower.press(9, 100);
    QVERIFY(!follower.waitsForNextEvent());
    follower.release(7, 110); // not one of ours
    QVERIFY(!follower.waitsForNextEvent());
    follower.release(9, 120);
    QVERIFY(follower.waitsForNextEvent());
    follower.press(9, 120);
    QVERIFY(!follower.waitsForNextEvent());
    follower.release(9, 130);
    follower.settle();
    QVERIFY(!follower.waitsForNextEvent());
}

void tst_X11KeyFollower::knowsWhichKeysAreDownSinceWhen()
{
    X11KeyFollower follower;
    follower.press(9, 100);
    follower.press(7, 200);
    QCOMPARE(follower.keysDown(), (QHash<quint8, quint32>{{9, 100}, {7, 200}}));
    follower.release(9, 300);
    QVERIFY(follower.isDown(9)); // as long as it is in doubt
    follower.press(9, 300);
    QCOMPARE(follower.keysDown(), (QHash<quint8, quint32>{{9, 300}, {7, 200}}));
    follower.letGo(9);
    QVERIFY(!follower.isDown(9));
    QVERIFY(follower.isDown(7));
}

LARKSPIRE_GUILESS_TEST_MAIN(tst_X11KeyFollower)
#include "tst_x11keyfollower.moc"
