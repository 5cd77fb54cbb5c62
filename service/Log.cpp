#include "service/Log.h"

#include <cstdio>
#include <mutex>

namespace service {

void logLine(const std::string &text)
{
    static std::mutex mutex;
    const std::string line = text + "\n";
    const std::lock_guard lock(mutex);
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

} // namespace service
