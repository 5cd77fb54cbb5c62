#include "linkage/StockCodeSender.h"

#include "linkage/ProcessSearch.h"
#include "linkage/StockCodeFormat.h"
#include "linkage/TradingSoftware.h"

#include <QStringView>

#include <algorithm>
#include <array>
#include <string_view>

namespace {

constexpr std::uint32_t thsCodeMessage = 0x490; // Ths's own
constexpr std::size_t thsReservedSize = 8;
constexpr std::size_t thsBlockSize = 7; // the marker and six digits, whatever the length of the code

QStringView view(const std::u16string &text)
{
    return {text.data(), qsizetype(text.size())};
}

} // namespace

StockCodeSender::StockCodeSender(PlatformOperations &operations, QObject *parent)
    : QObject(parent), m_operations(operations)
{}

bool StockCodeSender::sendToTdx(const QString &code)
{
    return send(TradingSoftware::tdxWord, code, &StockCodeSender::deliverToTdx);
}

bool StockCodeSender::sendToThs(const QString &code)
{
    return send(TradingSoftware::thsWord, code, &StockCodeSender::deliverToThs);
}

/// Runs `deliver`, which returns the reason of its failure or an empty text, and reports how it ended.
bool StockCodeSender::send(const QString &software, const QString &code, Delivery deliver)
{
    QString error;
    if (code.isEmpty()) {
        error = QStringLiteral("股票代码为空");
    } else {
        try {
            error = (this->*deliver)(code);
        } catch (...) {
            error = QStringLiteral("发送消息时发生异常");
        }
    }
    if (!error.isEmpty()) {
        emit sendFailed(software, code, error);
        return false;
    }
    emit sendSuccess(software, code);
    return true;
}

QString StockCodeSender::deliverToTdx(const QString &code)
{
    const std::uint32_t message = m_operations.registerWindowMessage(u"Stock");
    if (message == 0)
        return QStringLiteral("注册窗口消息失败，错误码: %1").arg(m_operations.lastError());
    bool isNumber = false;
    const int value = StockCodeFormat::formatTdxCode(code).toInt(&isNumber);
    if (!isNumber)
        return QStringLiteral("代码转换为整数失败");
    m_operations.sendMessage(WindowHandle::Broadcast, message, std::uint64_t(std::int64_t(value)), 0);
    return {};
}

QString StockCodeSender::deliverToThs(const QString &code)
{
    const QByteArray block = StockCodeFormat::formatThsCode(code);
    const ProcessHandle process = openThs();
    if (process == ProcessHandle::Null)
        return QStringLiteral("未找到同花顺进程(hexin.exe)");
    QString error;
    try {
        error = deliverBlock(process, block);
    } catch (...) {
        // Meant: the memory is not given back here. Ths may still be at it.
        m_operations.closeProcess(process);
        throw;
    }
    m_operations.closeProcess(process);
    return error;
}

QString StockCodeSender::deliverBlock(ProcessHandle process, const QByteArray &block)
{
    const std::uint64_t address = m_operations.allocateMemory(process, thsReservedSize);
    if (address == 0) // Meant: the text begins with a stray 在.
        return QStringLiteral("在分配内存失败，错误码: %1").arg(m_operations.lastError());

    std::array<char, thsBlockSize> bytes = {};
    std::copy_n(block.begin(), std::min<std::size_t>(std::size_t(block.size()), bytes.size()), bytes.begin());
    std::size_t written = 0;
    if (!m_operations.writeMemory(process, address, bytes.data(), bytes.size(), written) ||
        written != bytes.size()) {
        const std::uint32_t cause = m_operations.lastError();
        m_operations.releaseMemory(process, address);
        return QStringLiteral("写入内存失败，错误码: %1").arg(cause);
    }

    const WindowHandle window = findThsWindow();
    if (window != WindowHandle::Null)
        m_operations.sendMessage(window, thsCodeMessage, 0, address);
    m_operations.releaseMemory(process, address);
    return window == WindowHandle::Null ? QStringLiteral("未找到同花顺窗口") : QString();
}

/// Opens the first hexin.exe of the process list; a copy that the user chose plays no part here.
ProcessHandle StockCodeSender::openThs()
{
    const std::uint32_t pid = ProcessSearch::findFirst(m_operations, u"hexin.exe");
    return pid == 0 ? ProcessHandle::Null : m_operations.openProcess(pid, ProcessAccess::All);
}

/// Ths's main window, told from other windows with its name in the title by its class. Neither the process
/// nor the visibility of a window counts.
WindowHandle StockCodeSender::findThsWindow()
{
    WindowHandle found = WindowHandle::Null;
    m_operations.walkWindows([&](WindowHandle window) {
        const std::u16string title = m_operations.windowTitle(window);
        const std::u16string className = m_operations.windowClassName(window);
        if (!view(title).contains(QStringView(u"同花顺")) ||
            !view(className).startsWith(QStringView(u"Afx:")))
            return true;
        found = window;
        return false;
    });
    return found;
}
