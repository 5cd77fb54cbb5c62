#pragma once

#include "linkage/PlatformOperations.h"

#include <QStringView>

/// Looking for a program in the system's process list.
namespace ProcessSearch {

/// Whether the process's executable has that file name; case does not count.
bool isNamed(const ProcessEntry &entry, QStringView name);

/// Id of the first process of that name, 0 if there is none or the process list cannot be had.
std::uint32_t findFirst(PlatformOperations &operations, QStringView name);

} // namespace ProcessSearch
