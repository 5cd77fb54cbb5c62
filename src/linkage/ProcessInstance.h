#pragma once

#include <QList>
#include <QString>

/// One running copy of a trading program, as the instance search found it.
struct ProcessInstance
{
    quint32 pid = 0;     ///< process id
    QString exePath;     ///< full path of the executable; empty if the process could not be opened
    QString windowTitle; ///< title of its main window; empty if none was found
};
