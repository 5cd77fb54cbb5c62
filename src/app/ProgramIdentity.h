#pragma once

/// Who this program is: its names and version, by which settings are found, windows are titled and a desktop
/// knows which windows, entries and icons belong together.
namespace ProgramIdentity {

/// Gives them to the application object. It exists already; no window does.
void apply();

} // namespace ProgramIdentity
