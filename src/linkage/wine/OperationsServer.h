#pragma once

#include "linkage/PlatformOperations.h"

#include <string>
#include <string_view>

/// The helper's side of the line protocol: does what a line asks for with the operations it was given. It
/// uses nothing but the standard library.
class OperationsServer final
{
public:
    /// `operations` outlives this object.
    explicit OperationsServer(PlatformOperations &operations) : m_operations(operations) {}

    /// The answer to one line, without a newline. Any line gets one.
    std::string answer(std::string_view line);

private:
    std::string failure();

    PlatformOperations &m_operations;
};
