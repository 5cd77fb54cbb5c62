// larkspire-wine-helper.exe: runs inside the Wine of a trading program and does there, for the desktop on
// Linux, what can only be done from inside. The desktop starts it and speaks with it over standard input and
// output; it ends with its input, or by itself when nothing was asked for a while: a program that stays keeps
// the whole Wine session alive.

#include "linkage/windows/WindowsPlatformOperations.h"
#include "linkage/wine/OperationsServer.h"

#include <atomic>
#include <string>
#include <thread>

#include <windows.h>

namespace {

constexpr DWORD idleLimitMs = 120000;
constexpr DWORD idleCheckMs = 5000;

std::atomic<ULONGLONG> lastActivity;
std::atomic<bool> isBusy;

/// Ends the process once it was idle for too long.
void watchIdleness()
{
    for (;;) {
        Sleep(idleCheckMs);
        if (!isBusy && GetTickCount64() - lastActivity > idleLimitMs)
            ExitProcess(0);
    }
}

bool writeAll(HANDLE output, const std::string &text)
{
    std::size_t done = 0;
    while (done < text.size()) {
        DWORD count = 0;
        if (!WriteFile(output, text.data() + done, DWORD(text.size() - done), &count, nullptr))
            return false;
        done += count;
    }
    return true;
}

int serve()
{
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    const HANDLE output = GetStdHandle(STD_OUTPUT_HANDLE);
    WindowsPlatformOperations operations;
    OperationsServer server(operations);
    std::string pending;
    for (;;) {
        char buffer[4096];
        DWORD count = 0;
        if (!ReadFile(input, buffer, sizeof(buffer), &count, nullptr) || count == 0)
            return 0;
        isBusy = true;
        pending.append(buffer, count);
        for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
            const std::string answer = server.answer(pending.substr(0, end));
            pending.erase(0, end + 1);
            if (!writeAll(output, answer + '\n'))
                return 1;
        }
        lastActivity = GetTickCount64();
        isBusy = false;
    }
}

} // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int)
{
    lastActivity = GetTickCount64();
    std::thread(watchIdleness).detach();
    const int result = serve();
    // The watching thread never returns: nothing is left to be torn down around it.
    ExitProcess(UINT(result));
}
