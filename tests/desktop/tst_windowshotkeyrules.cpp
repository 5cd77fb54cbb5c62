#include "desktop/WindowsHotkeyRules.h"

#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QMetaEnum>

using NativeShortcut = GlobalHotkey::NativeShortcut;

class tst_WindowsHotkeyRules : public QObject
{
    Q_OBJECT

private slots:
    void numbersEveryKeyOfTheTable_data();
    void numbersEveryKeyOfTheTable();
    void hasNoNumberForAnyOtherKey();
    void numbersACharacterByTheLayout_data();
    void numbersACharacterByTheLayout();
    void putsModifiersIntoTheMask_data();
    void putsModifiersIntoTheMask();
    void makesAnIdOfKeyAndModifiers_data();
    void makesAnIdOfKeyAndModifiers();
    void noticesAnIdThatIsInUse();
    void readsTheCombinationOutOfTheMessage();
    void takesOutWhatIsReleasedAndKeepsTheRestInOrder_data();
    void takesOutWhatIsReleasedAndKeepsTheRestInOrder();
    void asksForNoRepetitionAndLooksEveryFiftyMilliseconds();
};

namespace {
struct Row
{
    Qt::Key key;
    int number;
};

// Written out a second time on purpose: the other one is the program's.
const QVector<Row> &expectedTable()
{
    static const QVector<Row> table = {
        {Qt::Key_Escape, 27},      {Qt::Key_Tab, 9},
        {Qt::Key_Backtab, 9},      {Qt::Key_Backspace, 8},
        {Qt::Key_Return, 13},      {Qt::Key_Enter, 13},
        {Qt::Key_Insert, 45},      {Qt::Key_Delete, 46},
        {Qt::Key_Pause, 19},       {Qt::Key_Print, 42},
        {Qt::Key_Printer, 42},     {Qt::Key_Clear, 12},
        {Qt::Key_Home, 36},        {Qt::Key_End, 35},
        {Qt::Key_Left, 37},        {Qt::Key_Up, 38},
        {Qt::Key_Right, 39},       {Qt::Key_Down, 40},
        {Qt::Key_PageUp, 33},      {Qt::Key_PageDown, 34},
        {Qt::Key_CapsLock, 20},    {Qt::Key_NumLock, 144},
        {Qt::Key_ScrollLock, 145}, {Qt::Key_F1, 112},
        {Qt::Key_F2, 113},         {Qt::Key_F3, 114},
        {Qt::Key_F4, 115},         {Qt::Key_F5, 116},
        {Qt::Key_F6, 117},         {Qt::Key_F7, 118},
        {Qt::Key_F8, 119},         {Qt::Key_F9, 120},
        {Qt::Key_F10, 121},        {Qt::Key_F11, 122},
        {Qt::Key_F12, 123},        {Qt::Key_F13, 124},
        {Qt::Key_F14, 125},        {Qt::Key_F15, 126},
        {Qt::Key_F16, 127},        {Qt::Key_F17, 128},
        {Qt::Key_F18, 129},        {Qt::Key_F19, 130},
        {Qt::Key_F20, 131},        {Qt::Key_F21, 132},
        {Qt::Key_F22, 133},        {Qt::Key_F23, 134},
        {Qt::Key_F24, 135},        {Qt::Key_Menu, 93},
        {Qt::Key_Help, 47},        {Qt::Key_Forward, 167},
        {Qt::Key_Stop, 169},       {Qt::Key_Refresh, 168},
        {Qt::Key_VolumeDown, 174}, {Qt::Key_VolumeMute, 173},
        {Qt::Key_VolumeUp, 175},   {Qt::Key_MediaPlay, 179},
        {Qt::Key_MediaStop, 178},  {Qt::Key_MediaPrevious, 177},
        {Qt::Key_MediaNext, 176},  {Qt::Key_HomePage, 172},
        {Qt::Key_Favorites, 171},  {Qt::Key_Search, 170},
        {Qt::Key_LaunchMail, 180}, {Qt::Key_LaunchMedia, 181},
        {Qt::Key_Launch0, 182},    {Qt::Key_Launch1, 183},
        {Qt::Key_Touroku, 148},    {Qt::Key_Massyo, 147},
        {Qt::Key_Mode_switch, 31}, {Qt::Key_Select, 41},
        {Qt::Key_Cancel, 3},       {Qt::Key_Execute, 43},
        {Qt::Key_Sleep, 95},       {Qt::Key_Play, 250},
    };
    return table;
}

QByteArray keyName(Qt::Key key)
{
    return QMetaEnum::fromType<Qt::Key>().valueToKey(key);
}
} // namespace

void tst_WindowsHotkeyRules::numbersEveryKeyOfTheTable_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<quint32>("number");
    for (const Row &row : expectedTable())
        QTest::newRow(keyName(row.key).constData()) << row.key << quint32(row.number);
}

void tst_WindowsHotkeyRules::numbersEveryKeyOfTheTable()
{
    QFETCH(Qt::Key, key);
    QFETCH(quint32, number);
    QVERIFY(WindowsHotkeyRules::keyNumber(key).has_value());
    QCOMPARE(*WindowsHotkeyRules::keyNumber(key), number);
}

void tst_WindowsHotkeyRules::hasNoNumberForAnyOtherKey()
{
    const QMetaEnum keys = QMetaEnum::fromType<Qt::Key>();
    int others = 0;
    for (int i = 0; i < keys.keyCount(); ++i) {
        const auto key = Qt::Key(keys.value(i));
        const auto &table = expectedTable();
        const bool isInTable =
            std::any_of(table.cbegin(), table.cend(), [key](const Row &row) { return row.key == key; });
        if (quint32(key) <= WindowsHotkeyRules::lastTextKey || isInTable)
            continue;
        ++others;
        QVERIFY2(!WindowsHotkeyRules::keyNumber(key), keys.key(i));
    }
    QVERIFY(others > 200);
}

void tst_WindowsHotkeyRules::numbersACharacterByTheLayout_data()
{
    QTest::addColumn<quint32>("character");
    QTest::addColumn<int>("scan");
    QTest::addColumn<quint32>("number");
    QTest::newRow("a key without modifiers") << quint32('A') << 0x0041 << 0x41u;
    QTest::newRow("the modifiers of the character do not matter") << quint32('~') << 0x01c0 << 0xc0u;
    QTest::newRow("a point that the layout has") << quint32('.') << 0x00be << 0xbeu;
    QTest::newRow("a point that the layout lacks is the keypad's") << quint32('.') << -1 << 110u;
    QTest::newRow("any other stands for itself") << 0x4e91u << -1 << 0x4e91u;
    QTest::newRow("the smallest answer counts") << quint32('x') << 0 << 0u;
}

void tst_WindowsHotkeyRules::numbersACharacterByTheLayout()
{
    QFETCH(quint32, character);
    QFETCH(int, scan);
    QFETCH(quint32, number);
    QCOMPARE(WindowsHotkeyRules::textKeyNumber(character, qint16(scan)), number);
}

void tst_WindowsHotkeyRules::putsModifiersIntoTheMask_data()
{
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<quint32>("mask");
    QTest::newRow("none") << int(Qt::NoModifier) << 0u;
    QTest::newRow("alt") << int(Qt::AltModifier) << 1u;
    QTest::newRow("control") << int(Qt::ControlModifier) << 2u;
    QTest::newRow("shift") << int(Qt::ShiftModifier) << 4u;
    QTest::newRow("meta") << int(Qt::MetaModifier) << 8u;
    QTest::newRow("keypad") << int(Qt::KeypadModifier) << 0u;
    QTest::newRow("all") << int(Qt::AltModifier | Qt::ControlModifier | Qt::ShiftModifier | Qt::MetaModifier |
                                Qt::KeypadModifier)
                         << 15u;
}

void tst_WindowsHotkeyRules::putsModifiersIntoTheMask()
{
    QFETCH(int, modifiers);
    QFETCH(quint32, mask);
    QCOMPARE(WindowsHotkeyRules::modifierMask(Qt::KeyboardModifiers(modifiers)), mask);
}

void tst_WindowsHotkeyRules::makesAnIdOfKeyAndModifiers_data()
{
    QTest::addColumn<quint32>("key");
    QTest::addColumn<quint32>("modifier");
    QTest::addColumn<int>("id");
    QTest::newRow("a key alone") << 124u << 0u << 0x707c;
    QTest::newRow("with control and shift") << 124u << 6u << 0x767c;
    QTest::newRow("nothing") << 0u << 0u << 0x7000;
    QTest::newRow("all modifiers") << 0xffu << 15u << 0x7fff;
    QTest::newRow("what is above twelve bits is cut off") << 0x4e91u << 0u << 0x7e91;
    QTest::newRow("and so shares the id of another, which is accepted") << 0x91u << 14u << 0x7e91;
}

void tst_WindowsHotkeyRules::makesAnIdOfKeyAndModifiers()
{
    QFETCH(quint32, key);
    QFETCH(quint32, modifier);
    QFETCH(int, id);
    QCOMPARE(WindowsHotkeyRules::hotkeyId(NativeShortcut{key, modifier, true}), id);
}

void tst_WindowsHotkeyRules::noticesAnIdThatIsInUse()
{
    const NativeShortcut character{0x4e91, 0, true};
    QVERIFY(!WindowsHotkeyRules::sharesId(character, {}));
    QVERIFY(!WindowsHotkeyRules::sharesId(character, {{0x91, 0, true}, {0x92, 14, true}}));
    QVERIFY(WindowsHotkeyRules::sharesId(character, {{0x92, 14, true}, {0x91, 14, true}}));
}

void tst_WindowsHotkeyRules::readsTheCombinationOutOfTheMessage()
{
    const NativeShortcut shortcut = WindowsHotkeyRules::reportedShortcut(0x007c0006);
    QCOMPARE(shortcut.key, 0x7cu);
    QCOMPARE(shortcut.modifier, 6u);
    QVERIFY(shortcut.valid);
}

void tst_WindowsHotkeyRules::takesOutWhatIsReleasedAndKeepsTheRestInOrder_data()
{
    QTest::addColumn<QVector<quint32>>("polled");
    QTest::addColumn<QVector<quint32>>("down");
    QTest::addColumn<QVector<quint32>>("released");
    QTest::addColumn<QVector<quint32>>("rest");
    using Keys = QVector<quint32>;
    QTest::newRow("none") << Keys{} << Keys{} << Keys{} << Keys{};
    QTest::newRow("all up") << Keys{1, 2} << Keys{} << Keys{1, 2} << Keys{};
    QTest::newRow("all down") << Keys{1, 2} << Keys{1, 2} << Keys{} << Keys{1, 2};
    QTest::newRow("some") << Keys{5, 1, 4, 2, 3} << Keys{1, 3, 5} << Keys{4, 2} << Keys{5, 1, 3};
    QTest::newRow("the same twice") << Keys{1, 2, 1} << Keys{2} << Keys{1, 1} << Keys{2};
}

void tst_WindowsHotkeyRules::takesOutWhatIsReleasedAndKeepsTheRestInOrder()
{
    QFETCH(QVector<quint32>, polled);
    QFETCH(QVector<quint32>, down);
    QFETCH(QVector<quint32>, released);
    QFETCH(QVector<quint32>, rest);
    const auto shortcutsOf = [](const QVector<quint32> &keys) {
        QVector<NativeShortcut> shortcuts;
        for (quint32 key : keys)
            shortcuts.append({key, 2, true});
        return shortcuts;
    };
    QVector<NativeShortcut> list = shortcutsOf(polled);
    const auto taken =
        WindowsHotkeyRules::takeReleased(list, [&](quint32 key) { return down.contains(key); });
    QVERIFY(taken == shortcutsOf(released));
    QVERIFY(list == shortcutsOf(rest));
}

void tst_WindowsHotkeyRules::asksForNoRepetitionAndLooksEveryFiftyMilliseconds()
{
    QCOMPARE(WindowsHotkeyRules::noRepeat, 0x4000u);
    QCOMPARE(WindowsHotkeyRules::releasePollMs, 50);
}

LARKSPIRE_GUILESS_TEST_MAIN(tst_WindowsHotkeyRules)
#include "tst_windowshotkeyrules.moc"
