#pragma once

#include <cstddef>

/// The first bytes of an executable file or library.
namespace ImageHeader {

enum class Kind
{
    None,    ///< no image, or one for a machine of neither width
    Image32, ///< for 32-bit processes
    Image64, ///< for 64-bit processes
};

/// Bytes from a file's start that are enough to tell its kind, in the layouts that linkers write.
constexpr std::size_t usefulSize = 1024;

/// What image begins with these bytes: a Windows one (PE format) by its header's machine field, a native one
/// (ELF) by its class.
Kind kindOf(const void *bytes, std::size_t size);

} // namespace ImageHeader
