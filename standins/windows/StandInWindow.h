#pragma once

#include "program/ControlLine.h"
#include "program/TradingProgram.h"
#include "windows/TargetMemory.h"

#include <string>

#include <windows.h>

/// The main window of a stand-in that is a Windows program: shows the open stock, takes keys, follows the
/// messages that the real program follows, and obeys the control channel. One per process.
class StandInWindow
{
public:
    StandInWindow(TradingProgram &program, TargetMemory &memory) : m_program(program), m_memory(memory) {}
    StandInWindow(const StandInWindow &) = delete;
    StandInWindow &operator=(const StandInWindow &) = delete;

    /// Makes the window, with `code` open (none for an empty one), and says that the program is up. False if
    /// the window cannot be made.
    bool create(HINSTANCE instance, const std::string &code);
    /// Opens the next stock every `milliseconds`; 0 ends that.
    void setTimer(int milliseconds);
    /// Listens to standard input from now on, and ends with it if asked to.
    void listen(bool endsWithInput);

private:
    static LRESULT CALLBACK handle(HWND handle, UINT message, WPARAM wParam, LPARAM lParam);
    LRESULT handleMessage(UINT message, WPARAM wParam, LPARAM lParam);
    void pressKey(WPARAM key);
    void typeCharacter(WPARAM character);
    void receiveNumber(WPARAM number);
    void receiveBlock(LPARAM address);
    void receive(const std::string &code);
    void obey(const ControlLine &line);
    void showProgram();
    void paint();
    void reportCode();

    TradingProgram &m_program;
    TargetMemory &m_memory;
    HWND m_window = nullptr;
    UINT m_stockMessage = 0;
    bool m_crashesWhenSentTo = false;
};
