#include "desktop/TerminationSignals.h"

struct TerminationSignals::Private
{};

TerminationSignals::TerminationSignals() = default;

TerminationSignals::~TerminationSignals() = default;
