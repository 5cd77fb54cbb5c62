#include "desktop/GlobalHotkeyPrivate.h"

#include "desktop/CategoryLog.h"
#include "desktop/HelperThread.h"
#include "desktop/RecordingHotkeyBackend.h"
#include "support/IsolatedHome.h"

#include <QAbstractEventDispatcher>
#include <QApplication>

using NativeShortcut = GlobalHotkey::NativeShortcut;

/// Names for QCOMPARE's messages.
namespace QTest {
template <>
char *toString(const NativeShortcut &shortcut)
{
    return QTest::toString(QStringLiteral("(0x%1, 0x%2, %3)")
                               .arg(shortcut.key, 0, 16)
                               .arg(shortcut.modifier, 0, 16)
                               .arg(shortcut.valid));
}
} // namespace QTest

class tst_GlobalHotkeyPrivate : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    // The first one: it needs a process that has no back-end yet.
    void isMadeOnTheMainThreadByTheFirstUseOnAnyThread();
    void takesNoFactoryAfterTheFirstUse();
    void seesTheNativeEventsOfTheMainThread();
    void asksThePlatformForKeyAndModifiers();
    void asksTheMappingAheadOfThePlatform();
    void answersOtherThreadsFromItsOwn();
    void offersItsOperationsToTheMetaObject();
    void addsNoObjectTwiceAndNoneWithoutACombination();
    void removesNoObjectThatIsNotRegistered();
    void warnsWhenDestroyedWithRegisteredShortcuts();
    void comparesNativeShortcutsByAllThreeFields_data();
    void comparesNativeShortcutsByAllThreeFields();
    void hashesNativeShortcutsByKeyXorModifier();
};

void tst_GlobalHotkeyPrivate::initTestCase()
{
    QVERIFY(RecordingHotkeyBackend::install());
}

void tst_GlobalHotkeyPrivate::init()
{
    if (QByteArray(QTest::currentTestFunction()) != "isMadeOnTheMainThreadByTheFirstUseOnAnyThread")
        RecordingHotkeyBackend::installed()->reset();
}

void tst_GlobalHotkeyPrivate::isMadeOnTheMainThreadByTheFirstUseOnAnyThread()
{
    HelperThread helper;
    GlobalHotkeyPrivate *made = nullptr;
    QVERIFY(helper.run([&] { made = GlobalHotkeyPrivate::instance(); }));
    QVERIFY(made);
    QCOMPARE(made->thread(), thread());
    QCOMPARE(GlobalHotkeyPrivate::instance(), made);
    QCOMPARE(RecordingHotkeyBackend::installed(), made);
}

void tst_GlobalHotkeyPrivate::takesNoFactoryAfterTheFirstUse()
{
    GlobalHotkeyPrivate *made = GlobalHotkeyPrivate::instance();
    QVERIFY(!RecordingHotkeyBackend::install());
    QCOMPARE(GlobalHotkeyPrivate::instance(), made);
}

void tst_GlobalHotkeyPrivate::seesTheNativeEventsOfTheMainThread()
{
    const int before = RecordingHotkeyBackend::installed()->nativeEvents();
    long result = 0;
    QVERIFY(
        !QCoreApplication::eventDispatcher()->filterNativeEvent(QByteArrayLiteral("test"), nullptr, &result));
    QCOMPARE(RecordingHotkeyBackend::installed()->nativeEvents(), before + 1);
}

void tst_GlobalHotkeyPrivate::asksThePlatformForKeyAndModifiers()
{
    auto *backend = RecordingHotkeyBackend::installed();
    QCOMPARE(backend->nativeShortcut(Qt::Key_F1, Qt::AltModifier), (NativeShortcut{0x30, 0x8000000, true}));
    QCOMPARE(backend->calls(),
             (QStringList{QStringLiteral("keycode 0x1000030"), QStringLiteral("modifiers 0x8000000")}));
    QCOMPARE(backend->nativeShortcut(Qt::Key_F35, Qt::AltModifier), NativeShortcut());
    backend->refuseModifiers(true);
    QCOMPARE(backend->nativeShortcut(Qt::Key_F1, Qt::AltModifier), NativeShortcut());
}

void tst_GlobalHotkeyPrivate::asksTheMappingAheadOfThePlatform()
{
    auto *backend = RecordingHotkeyBackend::installed();
    const NativeShortcut mapped{0x1234, 0x5678, true};
    backend->addMapping(Qt::Key_F35, Qt::ControlModifier, mapped);
    QCOMPARE(backend->nativeShortcut(Qt::Key_F35, Qt::ControlModifier), mapped);
    QVERIFY(backend->calls().isEmpty());
    // The pair counts, not the key alone.
    QCOMPARE(backend->nativeShortcut(Qt::Key_F35, Qt::NoModifier), NativeShortcut());
    QVERIFY(!backend->calls().isEmpty());

    GlobalHotkey hotkey;
    QVERIFY(hotkey.setShortcut(Qt::Key_F35, Qt::ControlModifier, true));
    QCOMPARE(hotkey.currentNativeShortcut(), mapped);
    QCOMPARE(backend->registrations(), QStringList{QStringLiteral("register 0x1234 0x5678")});
}

void tst_GlobalHotkeyPrivate::answersOtherThreadsFromItsOwn()
{
    auto *backend = RecordingHotkeyBackend::installed();
    HelperThread helper;
    NativeShortcut asked;
    NativeShortcut mapped;
    QVERIFY(helper.run([&] {
        asked = backend->nativeShortcut(Qt::Key_F2, Qt::ShiftModifier);
        backend->addMapping(Qt::Key_F34, Qt::NoModifier, NativeShortcut{5, 6, true});
        mapped = backend->nativeShortcut(Qt::Key_F34, Qt::NoModifier);
    }));
    QCOMPARE(asked, (NativeShortcut{0x31, 0x2000000, true}));
    QCOMPARE(mapped, (NativeShortcut{5, 6, true}));
    QCOMPARE(backend->threads(), QList<QThread *>{thread()});
}

void tst_GlobalHotkeyPrivate::offersItsOperationsToTheMetaObject()
{
    const QMetaObject &meta = GlobalHotkeyPrivate::staticMetaObject;
    for (const char *signature :
         {"nativeShortcutInvoked(Qt::Key,Qt::KeyboardModifiers)", "addShortcutInvoked(GlobalHotkey*)",
          "removeShortcutInvoked(GlobalHotkey*)",
          "addMappingInvoked(Qt::Key,Qt::KeyboardModifiers,GlobalHotkey::NativeShortcut)"}) {
        QVERIFY2(meta.indexOfMethod(signature) >= 0, signature);
    }
}

void tst_GlobalHotkeyPrivate::addsNoObjectTwiceAndNoneWithoutACombination()
{
    auto *backend = RecordingHotkeyBackend::installed();
    GlobalHotkey hotkey;
    QVERIFY(!backend->addShortcut(&hotkey));
    QVERIFY(hotkey.setShortcut(Qt::Key_F2, Qt::KeyboardModifiers()));
    QVERIFY(backend->addShortcut(&hotkey));
    QVERIFY(!backend->addShortcut(&hotkey));
    QCOMPARE(backend->registrations(), QStringList{QStringLiteral("register 0x31 0x0")});
    QSignalSpy presses(&hotkey, &GlobalHotkey::activated);
    QSignalSpy releases(&hotkey, &GlobalHotkey::released);
    backend->press(hotkey.currentNativeShortcut());
    backend->letGo(hotkey.currentNativeShortcut());
    QTRY_COMPARE(releases.count(), 1);
    QCOMPARE(presses.count(), 1);
}

void tst_GlobalHotkeyPrivate::removesNoObjectThatIsNotRegistered()
{
    auto *backend = RecordingHotkeyBackend::installed();
    GlobalHotkey hotkey{QKeySequence(Qt::Key_F2)};
    QSignalSpy changes(&hotkey, &GlobalHotkey::registeredChanged);
    QVERIFY(!backend->removeShortcut(&hotkey));
    QVERIFY(backend->registrations().isEmpty());
    QCOMPARE(changes.count(), 0);
}

void tst_GlobalHotkeyPrivate::warnsWhenDestroyedWithRegisteredShortcuts()
{
    const CategoryLog log("GlobalHotkey");
    GlobalHotkey hotkey{QKeySequence(Qt::Key_F2)};
    {
        RecordingHotkeyBackend another;
        QVERIFY(another.addShortcut(&hotkey));
    }
    QCOMPARE(log.lines(), QStringList{QStringLiteral(
                              "warning: GlobalHotkeyPrivate destroyed with registered shortcuts!")});
    QVERIFY(!hotkey.isRegistered());
    {
        RecordingHotkeyBackend another;
        QVERIFY(another.addShortcut(&hotkey));
        QVERIFY(another.removeShortcut(&hotkey));
    }
    QCOMPARE(log.lines().count(), 1);
    // A filter that stayed behind would be called here.
    long result = 0;
    QVERIFY(
        !QCoreApplication::eventDispatcher()->filterNativeEvent(QByteArrayLiteral("test"), nullptr, &result));
}

void tst_GlobalHotkeyPrivate::comparesNativeShortcutsByAllThreeFields_data()
{
    QTest::addColumn<NativeShortcut>("other");
    QTest::addColumn<bool>("same");
    QTest::newRow("same") << NativeShortcut{1, 2, true} << true;
    QTest::newRow("other key") << NativeShortcut{3, 2, true} << false;
    QTest::newRow("other modifier") << NativeShortcut{1, 3, true} << false;
    QTest::newRow("not valid") << NativeShortcut{1, 2, false} << false;
}

void tst_GlobalHotkeyPrivate::comparesNativeShortcutsByAllThreeFields()
{
    QFETCH(NativeShortcut, other);
    QFETCH(bool, same);
    const NativeShortcut shortcut{1, 2, true};
    QCOMPARE(shortcut == other, same);
    QCOMPARE(shortcut != other, !same);
}

void tst_GlobalHotkeyPrivate::hashesNativeShortcutsByKeyXorModifier()
{
    const NativeShortcut shortcut{0x70, 0x0c, true};
    QCOMPARE(qHash(shortcut), qHash(0x7cu));
    QCOMPARE(qHash(shortcut, 99), qHash(0x7cu, 99));
}

LARKSPIRE_TEST_MAIN(tst_GlobalHotkeyPrivate)
#include "tst_globalhotkeyprivate.moc"
