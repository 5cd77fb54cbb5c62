#include "desktop/GlobalHotkeyBackends.h"

#include "desktop/GlobalHotkeyPrivateNone.h"
#include "desktop/GlobalHotkeyPrivateX11.h"

#include <QGuiApplication>

std::unique_ptr<GlobalHotkeyPrivate> GlobalHotkeyBackends::createForThisDesktop()
{
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("xcb")) {
        QString whyNot;
        if (auto x11 = GlobalHotkeyPrivateX11::connectToServer(&whyNot))
            return x11;
        return std::make_unique<GlobalHotkeyPrivateNone>(whyNot);
    }
    if (platform.startsWith(QLatin1String("wayland")))
        return std::make_unique<GlobalHotkeyPrivateNone>(QStringLiteral("Wayland has no global hot keys"));
    return std::make_unique<GlobalHotkeyPrivateNone>(
        QStringLiteral("the platform \"%1\" has no global hot keys").arg(platform));
}
