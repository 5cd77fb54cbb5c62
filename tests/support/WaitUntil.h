#pragma once

#include <functional>

/// Runs the event loop until \p condition holds; false when it doesn't within \p timeoutMs milliseconds.
/// Unlike QTest::qWaitFor it does not sleep between two looks, so that a request to a server in the same
/// process takes as long as it takes and not ten milliseconds per step.
bool waitUntil(const std::function<bool()> &condition, int timeoutMs = 10000);
