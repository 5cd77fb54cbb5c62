// A stand-in for one of the trading programs, as a Windows program. Which one it is, is set by the build. It
// takes the options of the native one but for --32bit.

#include "program/TradingProgram.h"
#include "windows/StandInWindow.h"
#include "windows/TargetMemory.h"

#include <cstdlib>
#include <string>
#include <string_view>

#include <windows.h>

int WINAPI WinMain(HINSTANCE instance, HINSTANCE, LPSTR, int)
{
    std::string code = "600519";
    int timerMs = 0;
    bool endsWithInput = false;
    for (int index = 1; index < __argc; ++index) {
        const std::string_view argument = __argv[index];
        const bool hasValue = index + 1 < __argc;
        if (argument == "--end-with-input")
            endsWithInput = true;
        else if (argument == "--code" && hasValue)
            code = __argv[++index];
        else if (argument == "--timer" && hasValue)
            timerMs = std::atoi(__argv[++index]);
        else
            return 2;
    }

    TradingProgram program(TradingProgram::Kind::STANDIN_KIND);
    TargetMemory memory(program.kind());
    StandInWindow window(program, memory);
    if (!memory.isValid() || !window.create(instance, code))
        return 1;
    window.setTimer(timerMs);
    window.listen(endsWithInput);
    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return 0;
}
