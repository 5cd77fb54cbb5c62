#pragma once

#include <memory>

class GlobalHotkeyPrivate;

namespace GlobalHotkeyBackends {
/// Makes the hot-key back-end that fits the desktop on which the program runs: each operating system has a
/// source file with its own choice. Where there is no such facility the result is a back-end that says so and
/// refuses every combination; it is never null. To be called on the main thread.
std::unique_ptr<GlobalHotkeyPrivate> createForThisDesktop();
} // namespace GlobalHotkeyBackends
