#pragma once

#include <QString>

/// Words that the service sent, on their way to the user.
namespace ServiceWords {

/// The words for a message box or a tool tip, or for a label that tells plain from rich text by itself: shown
/// there exactly as they were sent, also where they look like markup.
QString asSent(const QString &words);

} // namespace ServiceWords
