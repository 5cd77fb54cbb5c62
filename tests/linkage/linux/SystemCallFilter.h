#pragma once

/// Kernels and policies that refuse a system call, for real.
namespace SystemCallFilter {

/// Makes the system call `number` fail with `error` in this process and its later children, for good. False
/// if the kernel cannot do that.
bool fail(int number, int error);

} // namespace SystemCallFilter
