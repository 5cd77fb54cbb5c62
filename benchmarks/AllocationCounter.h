#pragma once

#include <cstdint>

/// Counts what this program takes from the heap, by way of the C library: operator new ends there, and Qt's
/// containers do. One thread.
namespace AllocationCounter {

/// Blocks that were taken or enlarged since the start of the program.
std::uint64_t count();

} // namespace AllocationCounter
