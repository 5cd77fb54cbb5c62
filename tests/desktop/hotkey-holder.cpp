// Another program beside the tests of the hot keys:
//   hotkey-holder take SHORTCUT   registers the combination; prints "taken", or "refused" and ends with code
//   1 hotkey-holder window          shows a window; prints "focused" when it has the focus and "key TEXT" for
//   each
//                                 key that it is sent
// Both go on until they are ended.

#include "desktop/GlobalHotkey.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QRasterWindow>
#include <QTextStream>

namespace {
void say(const QString &line)
{
    QTextStream(stdout) << line << Qt::endl;
}

class KeyWindow final : public QRasterWindow
{
public:
    KeyWindow()
    {
        setTitle(QStringLiteral("hotkey-holder"));
        resize(300, 200);
    }

protected:
    void focusInEvent(QFocusEvent *event) override
    {
        QRasterWindow::focusInEvent(event);
        say(QStringLiteral("focused"));
    }
    void keyPressEvent(QKeyEvent *event) override
    {
        say(QStringLiteral("key ") + QKeySequence(event->key()).toString(QKeySequence::PortableText));
    }
};
} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    const QStringList arguments = QGuiApplication::arguments();
    if (arguments.value(1) == QLatin1String("take") && arguments.count() == 3) {
        GlobalHotkey hotkey;
        if (!hotkey.setShortcut(QKeySequence(arguments.at(2)), true)) {
            say(QStringLiteral("refused"));
            return 1;
        }
        say(QStringLiteral("taken"));
        return QGuiApplication::exec();
    }
    if (arguments.value(1) == QLatin1String("window") && arguments.count() == 2) {
        KeyWindow window;
        window.show();
        window.requestActivate();
        return QGuiApplication::exec();
    }
    QTextStream(stderr) << "hotkey-holder take SHORTCUT | window" << Qt::endl;
    return 2;
}
