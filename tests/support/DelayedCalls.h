#pragma once

#include <chrono>

/// The calls that QTimer::singleShot() keeps for later in this thread: a test can bring them forward where
/// their delay is not what it looks at, and can see that none is left.
namespace DelayedCalls {

/// How many calls wait whose delay is at most this.
int countUpTo(std::chrono::milliseconds delay);

/// Makes the calls that were given just this delay as soon as the event loop runs. Returns how many these
/// are.
int makeNow(std::chrono::milliseconds delay);

} // namespace DelayedCalls
