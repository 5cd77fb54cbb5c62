#include "windows/StandInWindow.h"

#include <memory>
#include <string_view>
#include <thread>

namespace {

constexpr UINT lineMessage = WM_APP;   // lParam: a line from standard input, as a std::string to delete
constexpr UINT thsCodeMessage = 0x490; // hexin.exe's own: lParam is the address of a block in its memory
constexpr std::size_t thsBlockSize = 7;
constexpr UINT_PTR timerId = 1;

StandInWindow *standInWindow = nullptr;

std::wstring toWide(const std::string &text)
{
    const int length = MultiByteToWideChar(CP_UTF8, 0, text.data(), int(text.size()), nullptr, 0);
    std::wstring wide(std::size_t(length), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), int(text.size()), wide.data(), length);
    return wide;
}

void report(const std::string &line)
{
    const std::string text = line + '\n';
    DWORD written = 0;
    // Whoever listened may have gone: nothing is to be done about that.
    WriteFile(GetStdHandle(STD_OUTPUT_HANDLE), text.data(), DWORD(text.size()), &written, nullptr);
}

void readInput(HWND window)
{
    const HANDLE input = GetStdHandle(STD_INPUT_HANDLE);
    std::string pending;
    char buffer[4096];
    DWORD count = 0;
    while (ReadFile(input, buffer, sizeof(buffer), &count, nullptr) && count > 0) {
        pending.append(buffer, count);
        for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n')) {
            auto line = std::make_unique<std::string>(pending, 0, end);
            pending.erase(0, end + 1);
            if (PostMessageW(window, lineMessage, 0, reinterpret_cast<LPARAM>(line.get())))
                line.release(); // NOLINT(bugprone-unused-return-value): the window deletes it
        }
    }
}

/// Whether so many bytes at the address can be read in this process.
bool isReadable(const void *address, std::size_t size)
{
    MEMORY_BASIC_INFORMATION region = {};
    if (VirtualQuery(address, &region, sizeof(region)) == 0 || region.State != MEM_COMMIT ||
        (region.Protect & (PAGE_NOACCESS | PAGE_GUARD)) != 0)
        return false;
    const char *end = static_cast<const char *>(region.BaseAddress) + region.RegionSize;
    return static_cast<const char *>(address) + size <= end;
}

void drawLine(HDC device, const std::string &text, const RECT &area, int height, COLORREF color)
{
    HFONT font = CreateFontW(height, 0, 0, 0, FW_SEMIBOLD, FALSE, FALSE, FALSE, GB2312_CHARSET, 0, 0,
                             CLEARTYPE_QUALITY, 0, L"Microsoft YaHei");
    const HGDIOBJ before = SelectObject(device, font);
    SetTextColor(device, color);
    RECT place = area;
    DrawTextW(device, toWide(text).c_str(), -1, &place, DT_CENTER | DT_VCENTER | DT_SINGLELINE | DT_NOPREFIX);
    SelectObject(device, before);
    DeleteObject(font);
}

} // namespace

bool StandInWindow::create(HINSTANCE instance, const std::string &code)
{
    const bool isTdx = m_program.kind() == TradingProgram::Kind::Tdx;
    const wchar_t *className = isTdx ? L"TdxW_MainFrame_Class" : L"Afx:00400000:b:00010003:00000006:00000000";
    standInWindow = this;
    if (isTdx)
        m_stockMessage = RegisterWindowMessageW(L"Stock");
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = &StandInWindow::handle;
    windowClass.hInstance = instance;
    windowClass.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512)); // IDC_ARROW
    windowClass.lpszClassName = className;
    RegisterClassW(&windowClass);
    m_program.open(code);
    m_window = CreateWindowW(className, L"", WS_OVERLAPPEDWINDOW, CW_USEDEFAULT, CW_USEDEFAULT, 380, 280,
                             nullptr, nullptr, instance, nullptr);
    if (!m_window)
        return false;
    showProgram();
    ShowWindow(m_window, SW_SHOWNORMAL);
    reportCode();
    report(isTdx ? "ready tdxw.exe" : "ready hexin.exe");
    return true;
}

void StandInWindow::setTimer(int milliseconds)
{
    if (milliseconds > 0)
        SetTimer(m_window, timerId, UINT(milliseconds), nullptr);
    else
        KillTimer(m_window, timerId);
}

void StandInWindow::listen(bool endsWithInput)
{
    std::thread([window = m_window, endsWithInput] {
        readInput(window);
        if (endsWithInput)
            PostMessageW(window, WM_CLOSE, 0, 0);
    }).detach();
}

LRESULT CALLBACK StandInWindow::handle(HWND handle, UINT message, WPARAM wParam, LPARAM lParam)
{
    if (standInWindow->m_window == handle)
        return standInWindow->handleMessage(message, wParam, lParam);
    return DefWindowProcW(handle, message, wParam, lParam);
}

LRESULT StandInWindow::handleMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (m_stockMessage != 0 && message == m_stockMessage) {
        receiveNumber(wParam);
        return 0;
    }
    switch (message) {
    case thsCodeMessage:
        if (m_program.kind() != TradingProgram::Kind::Ths)
            break;
        receiveBlock(lParam);
        return 0;
    case WM_KEYDOWN:
        pressKey(wParam);
        return 0;
    case WM_CHAR:
        typeCharacter(wParam);
        return 0;
    case WM_TIMER:
        m_program.openNext();
        showProgram();
        reportCode();
        return 0;
    case lineMessage: {
        const std::unique_ptr<std::string> line(
            reinterpret_cast<std::string *>(lParam)); // NOLINT(performance-no-int-to-ptr)
        obey(ControlLine::parse(*line));
        return 0;
    }
    case WM_ERASEBKGND:
        return 1;
    case WM_PAINT:
        paint();
        return 0;
    case WM_DESTROY:
        PostQuitMessage(0);
        return 0;
    default:
        break;
    }
    return DefWindowProcW(m_window, message, wParam, lParam);
}

void StandInWindow::pressKey(WPARAM key)
{
    if (key == VK_DOWN)
        m_program.openNext();
    else if (key == VK_UP)
        m_program.openPrevious();
    else if (key == VK_ESCAPE)
        m_program.close();
    else
        return;
    showProgram();
    reportCode();
}

void StandInWindow::typeCharacter(WPARAM character)
{
    if (character == VK_BACK)
        m_program.eraseDigit();
    else if (character >= L'0' && character <= L'9')
        m_program.type(char(character));
    else
        return;
    showProgram();
    reportCode();
}

void StandInWindow::receiveNumber(WPARAM number)
{
    receive(TradingProgram::codeOfNumber(std::int64_t(number)));
}

void StandInWindow::receiveBlock(LPARAM address)
{
    const auto *block = reinterpret_cast<const char *>(address); // NOLINT(performance-no-int-to-ptr)
    if (!isReadable(block, thsBlockSize)) {
        report("received nothing that can be read");
        return;
    }
    receive(TradingProgram::codeOfBlock(block, thsBlockSize));
}

void StandInWindow::receive(const std::string &code)
{
    report("received " + code);
    if (m_crashesWhenSentTo)
        TerminateProcess(GetCurrentProcess(), 1);
    m_program.open(code);
    showProgram();
    reportCode();
}

void StandInWindow::obey(const ControlLine &line)
{
    switch (line.order) {
    case ControlLine::Order::Open:
        m_program.open(line.text);
        break;
    case ControlLine::Order::Close:
        m_program.close();
        break;
    case ControlLine::Order::Type:
        for (const char digit : line.text)
            m_program.type(digit);
        break;
    case ControlLine::Order::Next:
        m_program.openNext();
        break;
    case ControlLine::Order::Previous:
        m_program.openPrevious();
        break;
    case ControlLine::Order::Timer:
        setTimer(line.milliseconds);
        break;
    case ControlLine::Order::Hang:
        Sleep(DWORD(line.milliseconds));
        break;
    case ControlLine::Order::Crash:
        m_crashesWhenSentTo = true;
        break;
    case ControlLine::Order::State:
        break;
    case ControlLine::Order::Quit:
        DestroyWindow(m_window);
        return;
    case ControlLine::Order::Unknown:
        report("unknown " + line.text);
        return;
    }
    showProgram();
    reportCode();
}

void StandInWindow::showProgram()
{
    m_memory.setText(m_program.memoryText());
    SetWindowTextW(m_window, toWide(m_program.title()).c_str());
    InvalidateRect(m_window, nullptr, FALSE);
}

void StandInWindow::paint()
{
    PAINTSTRUCT paint = {};
    HDC device = BeginPaint(m_window, &paint);
    RECT area = {};
    GetClientRect(m_window, &area);
    HBRUSH background = CreateSolidBrush(RGB(0x10, 0x12, 0x16));
    FillRect(device, &area, background);
    DeleteObject(background);
    SetBkMode(device, TRANSPARENT);
    const auto strip = [&area](int top, int height) {
        return RECT{area.left, top, area.right, top + height};
    };
    drawLine(device, m_program.code().empty() ? "—" : m_program.code(), strip(30, 70), 52,
             RGB(0xff, 0x5a, 0x4f));
    drawLine(device, m_program.stockName(), strip(100, 40), 26, RGB(0xf2, 0xd7, 0x5c));
    drawLine(device, m_program.typed(), strip(140, 36), 22, RGB(0x8f, 0xd3, 0xff));
    drawLine(device, "输入六位代码打开股票，↑ ↓ 切换，Esc 关闭", strip(area.bottom - 40, 30), 16,
             RGB(0x7d, 0x85, 0x90));
    EndPaint(m_window, &paint);
}

void StandInWindow::reportCode()
{
    report(m_program.code().empty() ? "code" : "code " + m_program.code());
}
