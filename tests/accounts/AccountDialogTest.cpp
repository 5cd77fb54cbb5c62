#include "accounts/AccountDialogTest.h"

#include "settings/MainWindowSkin.h"
#include "settings/ThemeManager.h"

#include <QApplication>
#include <QJsonDocument>
#include <QLabel>
#include <QStyle>
#include <QWindow>
#include <QtTest>

#include <cmath>

namespace {

QString nameOf(const QWidget &widget)
{
    if (!widget.objectName().isEmpty())
        return widget.objectName();
    const auto *button = qobject_cast<const QAbstractButton *>(&widget);
    if (button == nullptr)
        return QString::fromLatin1(widget.metaObject()->className());
    return button->text().isEmpty() ? button->accessibleName() : button->text();
}

double luminance(const QColor &color)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

} // namespace

QJsonObject AccountDialogTest::bodyOf(const RawRequest &request)
{
    return QJsonDocument::fromJson(request.body).object();
}

RawAnswer AccountDialogTest::success(const QString &message)
{
    return RawAnswer::json({{QStringLiteral("success"), true}, {QStringLiteral("message"), message}});
}

RawAnswer AccountDialogTest::refusal(const QString &error, int httpStatus)
{
    return RawAnswer::json({{QStringLiteral("success"), false}, {QStringLiteral("error"), error}},
                           httpStatus);
}

QAbstractButton *AccountDialogTest::button(const QWidget &window, const QString &caption)
{
    const QList<QAbstractButton *> buttons = window.findChildren<QAbstractButton *>();
    for (QAbstractButton *candidate : buttons) {
        if (candidate->isVisible() &&
            (candidate->text() == caption || candidate->accessibleName() == caption))
            return candidate;
    }
    return nullptr;
}

bool AccountDialogTest::opens(QDialog &dialog)
{
    // A dialog that was closed just now still has the focus until the window system has taken it away.
    if (!QTest::qWaitFor([&dialog] {
            return dialog.windowHandle() == nullptr ||
                   QGuiApplication::focusWindow() != dialog.windowHandle();
        }))
        return false;
    dialog.show();
    return QTest::qWaitForWindowActive(&dialog) && isBack(dialog);
}

bool AccountDialogTest::isBack(QDialog &dialog)
{
    const auto hasKeyboard = [&dialog] {
        const QWidget *focus = QApplication::focusWidget();
        return dialog.isActiveWindow() && focus != nullptr && focus->window() == &dialog;
    };
    if (QTest::qWaitFor(hasKeyboard, 1000))
        return true;
    // Two windows closed in one breath leave the window manager giving the focus to the one that is gone; the
    // user then clicks.
    dialog.activateWindow();
    return QTest::qWaitFor(hasKeyboard);
}

QStringList AccountDialogTest::tabWalk(QDialog &dialog, bool backwards)
{
    constexpr int moreThanAnyDialogHas = 30;
    QStringList names;
    const QWidget *first = dialog.focusWidget();
    for (int i = 0; i < moreThanAnyDialogHas; ++i) {
        names.append(nameOf(*dialog.focusWidget()));
        WindowInput::press(&dialog, backwards ? Qt::Key_Backtab : Qt::Key_Tab,
                           backwards ? Qt::ShiftModifier : Qt::NoModifier);
        if (dialog.focusWidget() == first)
            break;
    }
    return names;
}

QString AccountDialogTest::labelOf(const QWidget &widget)
{
    const QList<QLabel *> labels = widget.window()->findChildren<QLabel *>();
    for (const QLabel *label : labels) {
        if (label->buddy() == &widget)
            return label->text();
    }
    return QString();
}

QStringList AccountDialogTest::told(const BoxAnswer &box)
{
    if (!box.shown())
        return {};
    return {box.title(), box.text()};
}

void AccountDialogTest::setSkin(bool dark)
{
    ThemeManager::instance()->setTheme(dark ? ThemeManager::DarkTheme : ThemeManager::LightTheme);
    QApplication::setPalette(dark ? MainWindowSkin::darkPalette() : QApplication::style()->standardPalette());
    qApp->setStyleSheet(dark ? MainWindowSkin::darkStyleSheet() : QString());
}

QColor AccountDialogTest::colorAt(QWidget &widget, const QPoint &place)
{
    // Of the whole window, so that a widget without a background of its own shows what lies behind it.
    const QImage image = widget.window()->grab().toImage();
    return image.pixelColor(widget.mapTo(widget.window(), place) * image.devicePixelRatio());
}

double AccountDialogTest::contrast(const QColor &text, const QColor &background)
{
    const double first = luminance(text);
    const double second = luminance(background);
    return (qMax(first, second) + 0.05) / (qMin(first, second) + 0.05);
}
