#include "desktop/GlobalHotkeyBackends.h"

#include "desktop/GlobalHotkeyPrivateWin.h"

std::unique_ptr<GlobalHotkeyPrivate> GlobalHotkeyBackends::createForThisDesktop()
{
    return std::make_unique<GlobalHotkeyPrivateWin>();
}
