#pragma once

#include <cstdint>

/// Where the stand-in trading programs keep the code of the open stock. The offsets are theirs alone, the way
/// each version of a real program has its own; a service that lists versions lists them for the stand-ins
/// too.
namespace Layout {

/// Tdx: six digits and a zero byte, at the base of Viewthem64.dll (Viewthem.dll) plus this.
constexpr std::uint32_t tdxCodeOffset = 0x120A50;

/// Ths: a 32-bit pointer, at the base of hexin.exe plus this, to a marker byte, the digits and a zero byte.
constexpr std::uint32_t thsPointerOffset = 0x121C48;

/// Bytes of memory behind a module's base, headers included.
constexpr std::uint32_t imageSize = 0x200000;

/// Bytes of the text that the program writes at each change.
constexpr std::uint32_t textSize = 8;

} // namespace Layout
