#include "AllocationCounter.h"

#include <cstddef>

namespace {

std::uint64_t allocations = 0;

} // namespace

// The C library lets a program bring its own functions, and gives its own under these names (GNU libc).
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void *__libc_malloc(std::size_t size);
void *__libc_calloc(std::size_t count, std::size_t size);
void *__libc_realloc(void *block, std::size_t size);

void *malloc(std::size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

void *calloc(std::size_t count, std::size_t size)
{
    ++allocations;
    return __libc_calloc(count, size);
}

void *realloc(void *block, std::size_t size)
{
    ++allocations;
    return __libc_realloc(block, size);
}
}
// NOLINTEND(bugprone-reserved-identifier)

std::uint64_t AllocationCounter::count()
{
    return allocations;
}
