#pragma once

#include <QString>

/// The rule by which the automatic login tells failures that are worth another try.
namespace LoginRetryRules {

/// Whether the text of a failure, \p error, speaks of the network: it contains "网络", "network",
/// "connection" or "timeout", in capitals or not.
bool isNetworkFailure(const QString &error);

} // namespace LoginRetryRules
