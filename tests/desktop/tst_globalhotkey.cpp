#include "desktop/GlobalHotkey.h"

#include "desktop/CategoryLog.h"
#include "desktop/HelperThread.h"
#include "desktop/RecordingHotkeyBackend.h"
#include "support/IsolatedHome.h"

#include <QApplication>

using NativeShortcut = GlobalHotkey::NativeShortcut;

namespace {
const QKeySequence controlF13(int(Qt::CTRL) + int(Qt::Key_F13));
const QString registerControlF13 = QStringLiteral("register 0x3c 0x4000000");
const QString unregisterControlF13 = QStringLiteral("unregister 0x3c 0x4000000");
constexpr NativeShortcut nativeControlF13{0x3c, 0x4000000, true};
} // namespace

class tst_GlobalHotkey : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void startsWithoutACombination();
    void keepsTheModifierBitsOfASequenceApart_data();
    void keepsTheModifierBitsOfASequenceApart();
    void registersWhatItIsConstructedWith();
    void takesOnlyTheFirstOfSeveralShortcuts();
    void forgetsTheCombinationForAnEmptySequence();
    void forgetsTheCombinationForTheUnknownKey();
    void hasNoCombinationAfterAKeyThatThePlatformLacks();
    void hasNoCombinationWhenThePlatformCannotTellTheModifiers();
    void changesNothingWhileRegisteredWithoutAutoRegister();
    void movesTheRegistrationWithAutoRegister();
    void staysUnregisteredWhenTheNextCombinationIsRefused();
    void keepsItsCombinationWhenTheOldOneCannotBeGivenUp();
    void takesNativeNumbersInPlaceOfKeys();
    void treatsNativeNumbersAsItTreatsKeys();
    void registersOnlyWithACombination();
    void hasNothingToDoInTheStateThatIsAskedFor();
    void reportsARefusedRegistrationInTheLog();
    void reportsARefusedUnregistrationInTheLog();
    void resetsOnlyWhenUnregisteringWorks();
    void saysTrueAndThenFalseWhenUnregistering();
    void unregistersWhenItIsDestroyed();
    void offersItsStateAsProperties();

    void isSentPressAndReleaseAfterTheNativeEvent();
    void isNotSentTheEventsOfAnotherCombination();
    void sharesOneRegistrationWithAnotherOfTheSameCombination();

    void registersAndFiresOnAnotherThread();
    void saysFalseLastToEveryThread();
    void unregistersWhenItIsDestroyedOnAnotherThread();
};

void tst_GlobalHotkey::initTestCase()
{
    QVERIFY(RecordingHotkeyBackend::install());
}

void tst_GlobalHotkey::init()
{
    RecordingHotkeyBackend::installed()->reset();
}

void tst_GlobalHotkey::startsWithoutACombination()
{
    const GlobalHotkey hotkey;
    QCOMPARE(hotkey.keyCode(), Qt::Key_unknown);
    QCOMPARE(int(hotkey.keyCode()), 0x1ffffff);
    QCOMPARE(hotkey.modifiers(), Qt::KeyboardModifiers());
    QVERIFY(!hotkey.currentNativeShortcut().valid);
    QVERIFY(!hotkey.isRegistered());
    QVERIFY(hotkey.shortcut().isEmpty());
    QVERIFY(RecordingHotkeyBackend::installed()->calls().isEmpty());
}

void tst_GlobalHotkey::keepsTheModifierBitsOfASequenceApart_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<int>("key");
    QTest::addColumn<int>("modifiers");

    QTest::newRow("no modifier") << int(Qt::Key_F14) << int(Qt::Key_F14) << 0;
    QTest::newRow("shift") << int(Qt::SHIFT) + int(Qt::Key_A) << int(Qt::Key_A) << int(Qt::ShiftModifier);
    QTest::newRow("control") << int(Qt::CTRL) + int(Qt::Key_F1) << int(Qt::Key_F1)
                             << int(Qt::ControlModifier);
    QTest::newRow("alt") << int(Qt::ALT) + int(Qt::Key_F24) << int(Qt::Key_F24) << int(Qt::AltModifier);
    QTest::newRow("meta") << int(Qt::META) + int(Qt::Key_Z) << int(Qt::Key_Z) << int(Qt::MetaModifier);
    QTest::newRow("keypad") << int(Qt::KeypadModifier) + int(Qt::Key_5) << int(Qt::Key_5)
                            << int(Qt::KeypadModifier);
    QTest::newRow("all") << int(Qt::SHIFT) + int(Qt::CTRL) + int(Qt::ALT) + int(Qt::META) + int(Qt::Key_F9)
                         << int(Qt::Key_F9)
                         << int(Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
}

void tst_GlobalHotkey::keepsTheModifierBitsOfASequenceApart()
{
    QFETCH(int, value);
    QFETCH(int, key);
    QFETCH(int, modifiers);
    GlobalHotkey hotkey;
    QVERIFY(hotkey.setShortcut(QKeySequence(value)));
    QCOMPARE(int(hotkey.keyCode()), key);
    QCOMPARE(int(hotkey.modifiers()), modifiers);
    QCOMPARE(hotkey.shortcut(), QKeySequence(value));
    QCOMPARE(hotkey.currentNativeShortcut(),
             (NativeShortcut{quint32(key) & 0xffff, quint32(modifiers), true}));
    QVERIFY(!hotkey.isRegistered());
    QVERIFY(RecordingHotkeyBackend::installed()->registrations().isEmpty());
}

void tst_GlobalHotkey::registersWhatItIsConstructedWith()
{
    QObject parent;
    const auto *waiting = new GlobalHotkey(controlF13, false, &parent);
    QCOMPARE(waiting->shortcut(), controlF13);
    QVERIFY(!waiting->isRegistered());
    QVERIFY(RecordingHotkeyBackend::installed()->registrations().isEmpty());

    const auto *registered = new GlobalHotkey(controlF13, true, &parent);
    QVERIFY(registered->isRegistered());
    QCOMPARE(RecordingHotkeyBackend::installed()->registrations(), QStringList{registerControlF13});
}

void tst_GlobalHotkey::takesOnlyTheFirstOfSeveralShortcuts()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey;
    QVERIFY(hotkey.setShortcut(QKeySequence(Qt::Key_F3, Qt::Key_F4)));
    QCOMPARE(hotkey.shortcut(), QKeySequence(Qt::Key_F3));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("warning: Keysequences with multiple shortcuts are not "
                                                     "allowed! Only the first shortcut will be used!")});
}

void tst_GlobalHotkey::forgetsTheCombinationForAnEmptySequence()
{
    GlobalHotkey hotkey(controlF13, true);
    // Without autoRegister as well: an empty sequence is a reset.
    QVERIFY(hotkey.setShortcut(QKeySequence()));
    QVERIFY(!hotkey.isRegistered());
    QVERIFY(hotkey.shortcut().isEmpty());
    QVERIFY(!hotkey.currentNativeShortcut().valid);
    QCOMPARE(RecordingHotkeyBackend::installed()->registrations(),
             (QStringList{registerControlF13, unregisterControlF13}));
}

void tst_GlobalHotkey::forgetsTheCombinationForTheUnknownKey()
{
    GlobalHotkey hotkey(controlF13, true);
    QVERIFY(hotkey.setShortcut(Qt::Key_unknown, Qt::ShiftModifier, true));
    QVERIFY(!hotkey.isRegistered());
    QCOMPARE(hotkey.keyCode(), Qt::Key_unknown);
    QCOMPARE(hotkey.modifiers(), Qt::KeyboardModifiers());
    QVERIFY(!hotkey.currentNativeShortcut().valid);
    QVERIFY(!RecordingHotkeyBackend::installed()->calls().contains(QStringLiteral("keycode 0x1ffffff")));
}

void tst_GlobalHotkey::hasNoCombinationAfterAKeyThatThePlatformLacks()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(controlF13, true);
    QVERIFY(!hotkey.setShortcut(Qt::Key_F35, Qt::ShiftModifier | Qt::AltModifier, true));
    QVERIFY(!hotkey.isRegistered());
    QCOMPARE(hotkey.keyCode(), Qt::Key_unknown);
    QCOMPARE(hotkey.modifiers(), Qt::KeyboardModifiers());
    QVERIFY(!hotkey.currentNativeShortcut().valid);
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("warning: Unable to map shortcut to native keys. Key: Key_F35 "
                                        "Modifiers: ShiftModifier|AltModifier")});
}

void tst_GlobalHotkey::hasNoCombinationWhenThePlatformCannotTellTheModifiers()
{
    const CategoryLog log("GlobalHotkey");
    RecordingHotkeyBackend::installed()->refuseModifiers(true);
    GlobalHotkey hotkey;
    QVERIFY(!hotkey.setShortcut(Qt::Key_F5, Qt::KeyboardModifiers()));
    QVERIFY(!hotkey.currentNativeShortcut().valid);
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("warning: Unable to map shortcut to native keys. Key: Key_F5 "
                                        "Modifiers: NoModifier")});
}

void tst_GlobalHotkey::changesNothingWhileRegisteredWithoutAutoRegister()
{
    GlobalHotkey hotkey(controlF13, true);
    QSignalSpy changes(&hotkey, &GlobalHotkey::registeredChanged);
    RecordingHotkeyBackend::installed()->reset();
    QVERIFY(!hotkey.setShortcut(QKeySequence(Qt::Key_F3)));
    QVERIFY(!hotkey.setShortcut(Qt::Key_F3, Qt::KeyboardModifiers()));
    QVERIFY(!hotkey.setShortcut(Qt::Key_unknown, Qt::KeyboardModifiers()));
    QVERIFY(!hotkey.setNativeShortcut(NativeShortcut{1, 2, true}));
    QVERIFY(hotkey.isRegistered());
    QCOMPARE(hotkey.shortcut(), controlF13);
    QCOMPARE(hotkey.currentNativeShortcut(), nativeControlF13);
    QVERIFY(RecordingHotkeyBackend::installed()->calls().isEmpty());
    QCOMPARE(changes.count(), 0);
}

void tst_GlobalHotkey::movesTheRegistrationWithAutoRegister()
{
    GlobalHotkey hotkey(controlF13, true);
    QVERIFY(hotkey.setShortcut(Qt::Key_F3, Qt::NoModifier, true));
    QVERIFY(hotkey.isRegistered());
    QCOMPARE(hotkey.shortcut(), QKeySequence(Qt::Key_F3));
    QCOMPARE(RecordingHotkeyBackend::installed()->registrations(),
             (QStringList{registerControlF13, unregisterControlF13, QStringLiteral("register 0x32 0x0")}));
}

void tst_GlobalHotkey::staysUnregisteredWhenTheNextCombinationIsRefused()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(controlF13, true);
    RecordingHotkeyBackend::installed()->refuseRegistering(QStringLiteral("taken"));
    QVERIFY(!hotkey.setShortcut(Qt::Key_F3, Qt::NoModifier, true));
    QVERIFY(!hotkey.isRegistered());
    // The combination is kept for another try.
    QCOMPARE(hotkey.shortcut(), QKeySequence(Qt::Key_F3));
    RecordingHotkeyBackend::installed()->refuseRegistering(QString());
    QVERIFY(hotkey.setRegistered(true));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("warning: Failed to register F3. Error: taken")});
}

void tst_GlobalHotkey::keepsItsCombinationWhenTheOldOneCannotBeGivenUp()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(controlF13, true);
    RecordingHotkeyBackend::installed()->refuseUnregistering(QStringLiteral("stuck"));
    QVERIFY(!hotkey.setShortcut(Qt::Key_F3, Qt::NoModifier, true));
    QVERIFY(!hotkey.isRegistered());
    QCOMPARE(hotkey.shortcut(), controlF13);
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("warning: Failed to unregister Ctrl+F13. Error: stuck")});
}

void tst_GlobalHotkey::takesNativeNumbersInPlaceOfKeys()
{
    GlobalHotkey hotkey(controlF13);
    QVERIFY(hotkey.setNativeShortcut(NativeShortcut{7, 9, true}, true));
    QVERIFY(hotkey.isRegistered());
    QCOMPARE(hotkey.currentNativeShortcut(), (NativeShortcut{7, 9, true}));
    QCOMPARE(hotkey.keyCode(), Qt::Key_unknown);
    QCOMPARE(hotkey.modifiers(), Qt::KeyboardModifiers());
    QVERIFY(hotkey.shortcut().isEmpty());
    QCOMPARE(RecordingHotkeyBackend::installed()->registrations(),
             QStringList{QStringLiteral("register 0x7 0x9")});
}

void tst_GlobalHotkey::treatsNativeNumbersAsItTreatsKeys()
{
    GlobalHotkey hotkey;
    QVERIFY(hotkey.setNativeShortcut(NativeShortcut{7, 9, true}));
    QVERIFY(!hotkey.isRegistered());
    QVERIFY(hotkey.setRegistered(true));
    QVERIFY(hotkey.setNativeShortcut(NativeShortcut{8, 9, true}, true));
    QCOMPARE(RecordingHotkeyBackend::installed()->registrations(),
             (QStringList{QStringLiteral("register 0x7 0x9"), QStringLiteral("unregister 0x7 0x9"),
                          QStringLiteral("register 0x8 0x9")}));
    QVERIFY(hotkey.setNativeShortcut(NativeShortcut(), true));
    QVERIFY(!hotkey.isRegistered());
    QVERIFY(!hotkey.currentNativeShortcut().valid);
    QCOMPARE(RecordingHotkeyBackend::installed()->registrations().last(),
             QStringLiteral("unregister 0x8 0x9"));
}

void tst_GlobalHotkey::registersOnlyWithACombination()
{
    GlobalHotkey hotkey;
    QSignalSpy changes(&hotkey, &GlobalHotkey::registeredChanged);
    QVERIFY(!hotkey.setRegistered(true));
    QVERIFY(!hotkey.isRegistered());
    QVERIFY(RecordingHotkeyBackend::installed()->calls().isEmpty());
    QVERIFY(hotkey.setShortcut(controlF13));
    QVERIFY(hotkey.setRegistered(true));
    QVERIFY(hotkey.isRegistered());
    QCOMPARE(changes, (QList<QVariantList>{{true}}));
}

void tst_GlobalHotkey::hasNothingToDoInTheStateThatIsAskedFor()
{
    GlobalHotkey hotkey(controlF13);
    QSignalSpy changes(&hotkey, &GlobalHotkey::registeredChanged);
    QVERIFY(hotkey.setRegistered(false));
    QVERIFY(RecordingHotkeyBackend::installed()->registrations().isEmpty());
    QVERIFY(hotkey.setRegistered(true));
    QVERIFY(hotkey.setRegistered(true));
    QCOMPARE(RecordingHotkeyBackend::installed()->registrations(), QStringList{registerControlF13});
    QCOMPARE(changes.count(), 1);
}

void tst_GlobalHotkey::reportsARefusedRegistrationInTheLog()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(controlF13);
    QSignalSpy changes(&hotkey, &GlobalHotkey::registeredChanged);
    RecordingHotkeyBackend::installed()->refuseRegistering(QStringLiteral("somebody else has %1 of it"));
    QVERIFY(!hotkey.setRegistered(true));
    QVERIFY(!hotkey.isRegistered());
    QCOMPARE(changes.count(), 0);
    QCOMPARE(log.lines(), QStringList{QStringLiteral(
                              "warning: Failed to register Ctrl+F13. Error: somebody else has %1 of it")});
}

void tst_GlobalHotkey::reportsARefusedUnregistrationInTheLog()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(controlF13, true);
    QSignalSpy changes(&hotkey, &GlobalHotkey::registeredChanged);
    RecordingHotkeyBackend::installed()->refuseUnregistering(QStringLiteral("no such id"));
    QVERIFY(!hotkey.setRegistered(false));
    // The object is out of the table all the same, and the platform's failure keeps the second signal back.
    QVERIFY(!hotkey.isRegistered());
    QCOMPARE(changes, (QList<QVariantList>{{true}}));
    QCOMPARE(log.lines(),
             QStringList{QStringLiteral("warning: Failed to unregister Ctrl+F13. Error: no such id")});
}

void tst_GlobalHotkey::resetsOnlyWhenUnregisteringWorks()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey(controlF13, true);
    RecordingHotkeyBackend::installed()->refuseUnregistering(QStringLiteral("no such id"));
    QVERIFY(!hotkey.resetShortcut());
    QCOMPARE(hotkey.shortcut(), controlF13);
    RecordingHotkeyBackend::installed()->refuseUnregistering(QString());
    QVERIFY(hotkey.resetShortcut());
    QVERIFY(hotkey.shortcut().isEmpty());
    QCOMPARE(log.lines().count(), 1);
}

void tst_GlobalHotkey::saysTrueAndThenFalseWhenUnregistering()
{
    GlobalHotkey hotkey(controlF13, true);
    QSignalSpy changes(&hotkey, &GlobalHotkey::registeredChanged);
    QList<QPair<bool, bool>> states;
    connect(&hotkey, &GlobalHotkey::registeredChanged, this, [&](bool registered) {
        states.append({registered, hotkey.isRegistered()});
    });
    QVERIFY(hotkey.setRegistered(false));
    QCOMPARE(changes, (QList<QVariantList>{{true}, {false}}));
    // The object itself tells the truth at both.
    QCOMPARE(states, (QList<QPair<bool, bool>>{{true, false}, {false, false}}));
}

void tst_GlobalHotkey::unregistersWhenItIsDestroyed()
{
    {
        const GlobalHotkey hotkey(controlF13, true);
        QVERIFY(hotkey.isRegistered());
    }
    QCOMPARE(RecordingHotkeyBackend::installed()->registrations(),
             (QStringList{registerControlF13, unregisterControlF13}));
}

void tst_GlobalHotkey::offersItsStateAsProperties()
{
    GlobalHotkey hotkey;
    QVERIFY(hotkey.setProperty("shortcut", QVariant::fromValue(controlF13)));
    QCOMPARE(hotkey.keyCode(), Qt::Key_F13);
    QCOMPARE(hotkey.property("shortcut").value<QKeySequence>(), controlF13);
    QVERIFY(hotkey.setProperty("registered", true));
    QVERIFY(hotkey.isRegistered());
    QVERIFY(hotkey.property("registered").toBool());
    QVERIFY(hotkey.setProperty("shortcut", QVariant())); // a property's reset
    QVERIFY(!hotkey.isRegistered());
    QVERIFY(hotkey.shortcut().isEmpty());
    QCOMPARE(QMetaType::type("GlobalHotkey::NativeShortcut"), qMetaTypeId<NativeShortcut>());
    bool accepted = false;
    QVERIFY(QMetaObject::invokeMethod(&hotkey, "setNativeShortcut", Q_RETURN_ARG(bool, accepted),
                                      Q_ARG(GlobalHotkey::NativeShortcut, (NativeShortcut{3, 4, true})),
                                      Q_ARG(bool, false)));
    QVERIFY(accepted);
    QCOMPARE(hotkey.currentNativeShortcut(), (NativeShortcut{3, 4, true}));
}

void tst_GlobalHotkey::isSentPressAndReleaseAfterTheNativeEvent()
{
    GlobalHotkey hotkey(controlF13, true);
    QSignalSpy presses(&hotkey, &GlobalHotkey::activated);
    QSignalSpy releases(&hotkey, &GlobalHotkey::released);
    RecordingHotkeyBackend::installed()->press(nativeControlF13);
    QCOMPARE(presses.count(), 0);
    QTRY_COMPARE(presses.count(), 1);
    QCOMPARE(releases.count(), 0);
    RecordingHotkeyBackend::installed()->letGo(nativeControlF13);
    QCOMPARE(releases.count(), 0);
    QTRY_COMPARE(releases.count(), 1);
    QCOMPARE(presses.count(), 1);
}

void tst_GlobalHotkey::isNotSentTheEventsOfAnotherCombination()
{
    GlobalHotkey other(QKeySequence(Qt::Key_F3), true);
    GlobalHotkey unregistered(controlF13);
    GlobalHotkey hotkey(controlF13, true);
    QSignalSpy otherPresses(&other, &GlobalHotkey::activated);
    QSignalSpy unregisteredPresses(&unregistered, &GlobalHotkey::activated);
    QSignalSpy presses(&hotkey, &GlobalHotkey::activated);
    RecordingHotkeyBackend::installed()->press(nativeControlF13);
    QTRY_COMPARE(presses.count(), 1);
    QCOMPARE(otherPresses.count(), 0);
    QCOMPARE(unregisteredPresses.count(), 0);
}

void tst_GlobalHotkey::sharesOneRegistrationWithAnotherOfTheSameCombination()
{
    auto *backend = RecordingHotkeyBackend::installed();
    GlobalHotkey first(controlF13, true);
    GlobalHotkey second(controlF13, true);
    QVERIFY(first.isRegistered() && second.isRegistered());
    QCOMPARE(backend->registrations(), QStringList{registerControlF13});

    QSignalSpy firstPresses(&first, &GlobalHotkey::activated);
    QSignalSpy secondPresses(&second, &GlobalHotkey::activated);
    QSignalSpy secondReleases(&second, &GlobalHotkey::released);
    backend->press(nativeControlF13);
    backend->letGo(nativeControlF13);
    QTRY_COMPARE(secondReleases.count(), 1);
    QCOMPARE(firstPresses.count(), 1);
    QCOMPARE(secondPresses.count(), 1);

    QVERIFY(first.setRegistered(false));
    QCOMPARE(backend->registrations(), QStringList{registerControlF13});
    backend->press(nativeControlF13);
    QTRY_COMPARE(secondPresses.count(), 2);
    QCOMPARE(firstPresses.count(), 1);

    QVERIFY(second.setRegistered(false));
    QCOMPARE(backend->registrations(), (QStringList{registerControlF13, unregisterControlF13}));
}

void tst_GlobalHotkey::registersAndFiresOnAnotherThread()
{
    auto *backend = RecordingHotkeyBackend::installed();
    HelperThread helper;
    std::unique_ptr<GlobalHotkey> hotkey;
    QVector<QThread *> receivers;
    QVERIFY(helper.run([&] {
        hotkey = std::make_unique<GlobalHotkey>(controlF13, true);
        connect(hotkey.get(), &GlobalHotkey::activated, hotkey.get(),
                [&] { receivers.append(QThread::currentThread()); });
    }));
    QCOMPARE(hotkey->thread(), helper.thread());
    QVERIFY(hotkey->isRegistered());
    QCOMPARE(backend->registrations(), QStringList{registerControlF13});
    QCOMPARE(backend->threads(), QList<QThread *>{thread()});

    int receivedHere = 0;
    connect(hotkey.get(), &GlobalHotkey::activated, this, [&] { ++receivedHere; });
    backend->press(nativeControlF13);
    QTRY_COMPARE(receivedHere, 1);
    QVERIFY(helper.run([&] { hotkey.reset(); }));
    QCOMPARE(receivers, QVector<QThread *>{helper.thread()});
}

void tst_GlobalHotkey::saysFalseLastToEveryThread()
{
    HelperThread helper;
    std::unique_ptr<GlobalHotkey> hotkey;
    QObject there;
    there.moveToThread(helper.thread());
    QList<bool> seenThere;
    QList<bool> seenHere;
    QVERIFY(helper.run([&] {
        hotkey = std::make_unique<GlobalHotkey>(controlF13, true);
        connect(hotkey.get(), &GlobalHotkey::registeredChanged, &there,
                [&](bool registered) { seenThere.append(registered); });
        connect(hotkey.get(), &GlobalHotkey::registeredChanged, this,
                [&](bool registered) { seenHere.append(registered); });
        hotkey->setRegistered(false);
        hotkey->setRegistered(true);
        hotkey->setRegistered(false);
    }));
    const QList<bool> expected{true, false, true, true, false};
    QTRY_COMPARE(seenHere, expected);
    QVERIFY(helper.run([&] { hotkey.reset(); }));
    QCOMPARE(seenThere, expected);
    QVERIFY(helper.run([&] { there.moveToThread(thread()); }));
}

void tst_GlobalHotkey::unregistersWhenItIsDestroyedOnAnotherThread()
{
    HelperThread helper;
    QVERIFY(helper.run([] { const GlobalHotkey hotkey(controlF13, true); }));
    QCOMPARE(RecordingHotkeyBackend::installed()->registrations(),
             (QStringList{registerControlF13, unregisterControlF13}));
    QCOMPARE(RecordingHotkeyBackend::installed()->threads(), QList<QThread *>{thread()});
}

LARKSPIRE_TEST_MAIN(tst_GlobalHotkey)
#include "tst_globalhotkey.moc"
