#pragma once

/// The last line of defence around the event loop.
namespace EventLoopGuard {

/// Runs the application's event loop. An exception that passes out of it is shown in a message box.
/// \return what the loop returned; 1 after an exception
int exec();

} // namespace EventLoopGuard
