#include "linkage/wine/OperationsServer.h"

#include "linkage/wine/OperationsProtocol.h"

namespace {

const std::string ok = "ok";
const std::string malformed = "malformed";

std::string okWith(std::uint64_t number)
{
    return ok + ' ' + std::to_string(number);
}

} // namespace

std::string OperationsServer::failure()
{
    return "failed " + std::to_string(m_operations.lastError());
}

std::string OperationsServer::answer(std::string_view line)
{
    const std::vector<std::string_view> words = OperationsProtocol::words(line);
    if (words.empty())
        return malformed;
    const std::string_view operation = words.front();
    // The arguments as numbers; those that are none count as missing.
    std::vector<std::uint64_t> numbers;
    for (std::size_t index = 1; index < words.size(); ++index) {
        if (const auto number = OperationsProtocol::number(words[index]))
            numbers.push_back(*number);
    }
    const auto takes = [&](std::string_view name, std::size_t numberCount, std::size_t wordCount) {
        return operation == name && numbers.size() == numberCount && words.size() == wordCount + 1;
    };

    if (takes("hello", 0, 0))
        return ok + ' ' + std::string(OperationsProtocol::helperName) + ' ' +
               std::to_string(OperationsProtocol::version);
    if (takes("processes", 0, 0)) {
        std::string list = ok;
        const auto append = [&list](const ProcessEntry &entry) {
            list += ' ' + std::to_string(entry.pid) + ' ' + OperationsProtocol::textWord(entry.name);
            return true;
        };
        return m_operations.walkProcesses(append) ? list : failure();
    }
    if (takes("open", 2, 2)) {
        const auto process = m_operations.openProcess(std::uint32_t(numbers[0]), ProcessAccess(numbers[1]));
        return process == ProcessHandle::Null ? failure() : okWith(std::uint64_t(process));
    }
    if (takes("close", 1, 1)) {
        m_operations.closeProcess(ProcessHandle(numbers[0]));
        return ok;
    }
    if (takes("allocate", 2, 2)) {
        const std::uint64_t address = m_operations.allocateMemory(ProcessHandle(numbers[0]), numbers[1]);
        return address == 0 ? failure() : okWith(address);
    }
    if (takes("write", 2, 3)) {
        const auto bytes = OperationsProtocol::bytes(words[3]);
        if (!bytes)
            return malformed;
        std::size_t count = 0;
        const bool success = m_operations.writeMemory(ProcessHandle(numbers[0]), numbers[1], bytes->data(),
                                                      bytes->size(), count);
        return success ? okWith(count) : failure();
    }
    if (takes("release", 2, 2)) {
        m_operations.releaseMemory(ProcessHandle(numbers[0]), numbers[1]);
        return ok;
    }
    if (takes("windows", 0, 0)) {
        std::string list = ok;
        m_operations.walkWindows([&list](WindowHandle window) {
            list += ' ' + std::to_string(std::uint64_t(window));
            return true;
        });
        return list;
    }
    if (takes("title", 1, 1))
        return ok + ' ' + OperationsProtocol::textWord(m_operations.windowTitle(WindowHandle(numbers[0])));
    if (takes("class", 1, 1))
        return ok + ' ' +
               OperationsProtocol::textWord(m_operations.windowClassName(WindowHandle(numbers[0])));
    if (takes("register", 0, 1)) {
        const auto name = OperationsProtocol::text(words[1]);
        if (!name)
            return malformed;
        const std::uint32_t message = m_operations.registerWindowMessage(*name);
        return message == 0 ? failure() : okWith(message);
    }
    if (takes("send", 4, 4)) {
        m_operations.sendMessage(WindowHandle(numbers[0]), std::uint32_t(numbers[1]), numbers[2], numbers[3]);
        return ok;
    }
    return malformed;
}
