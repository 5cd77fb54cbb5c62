#include "service/Log.h"

#include <algorithm>
#include <cstdio>
#include <mutex>

namespace service {

std::string onOneLine(const std::string &text)
{
    std::string line = text;
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < 0x20 || c == 0x7F; }, '?');
    return line;
}

void logLine(const std::string &text)
{
    static std::mutex mutex;
    const std::string line = onOneLine(text) + "\n";
    const std::lock_guard lock(mutex);
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

} // namespace service
