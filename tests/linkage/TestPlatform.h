#pragma once

#include "linkage/PlatformOperations.h"

#include <QStringList>

#include <memory>

/// What tests with real trading programs ask of the system they run on.
namespace TestPlatform {

/// The operations under test.
std::unique_ptr<PlatformOperations> readingOperations();
std::unique_ptr<PlatformOperations> sendingOperations();

/// Brings a window of that process to the front and presses these keys there, through the system's own input:
/// digits, "Up" and "Down". False if there is no such window.
bool pressKeys(quint32 pid, const QStringList &keys);

/// Suspends all of a process, and lets it go on.
void suspend(quint32 pid);
void resume(quint32 pid);

/// Descriptors or handles that this process has open.
int openHandleCount();

} // namespace TestPlatform
