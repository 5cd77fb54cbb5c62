#pragma once

#include "linkage/PlatformOperations.h"
#include "linkage/ProcessInstance.h"

#include <QObject>
#include <QStringView>

#include <initializer_list>

/// Finds the running copies of the trading programs Tdx (tdxw.exe, tdxw64.exe) and Ths (hexin.exe), attaches
/// to one copy of each for reading, and reads out of its memory the code of the stock that is open in it.
///
/// Where the code lies differs per version of the trading program; the offset is data of the service and
/// comes in by setTdxOffset() and setThsOffset(). A handle stays open between two reads, so that a read costs
/// one system call; a read that fails closes it, and the next read attaches afresh. That is the whole
/// recovery from a program that was closed, started again, or shows no stock. Every operation returns at
/// once, on the main thread; every failure is the result false, and nothing is shown to the user from here.
class ProcessUtils final : public QObject
{
    Q_OBJECT

public:
    /// `operations` is the operating system to work on and outlives this object.
    explicit ProcessUtils(PlatformOperations &operations, QObject *parent = nullptr);
    /// Closes the handles that are still open.
    ~ProcessUtils() override;
    Q_DISABLE_COPY_MOVE(ProcessUtils)

    /// Process id of the copy that the user chose, 0 for none. It counts from the next attachment on.
    quint32 tdxPid = 0;
    /// The same for Ths. It counts only while tdxPid is set too: see attachThs().
    quint32 thsPid = 0;

    /// Every process named tdxw.exe or tdxw64.exe, in the order of the system's process list. Empty also if
    /// that list cannot be had.
    QList<ProcessInstance> listTdxInstances();
    /// Every process named hexin.exe, likewise.
    QList<ProcessInstance> listThsInstances();
    /// Whether a copy that was found earlier still runs: a process of its id that is of its executable. Costs
    /// no walk through the processes.
    bool isRunning(const ProcessInstance &instance);

    /// Opens a Tdx process and finds its module Viewthem.dll (32-bit) or Viewthem64.dll (64-bit). The process
    /// is tdxPid if set, else `pid`, else (0) the first one named tdxw.exe; a tdxw64.exe is reached by id
    /// alone. False, and detached, if any of it fails.
    bool attachTdx(quint32 pid);
    /// Opens a Ths process and finds its main module hexin.exe. With tdxPid set, the process is thsPid, else
    /// it is `pid`; 0 stands for the first one named hexin.exe. False, and detached, if any of it fails.
    bool attachThs(quint32 pid);

    /// Reads the code open in Tdx: six bytes of text at module base plus offset. On true `code` is the code.
    /// On false `code` is either as it was or the text that was rejected; go by the result alone.
    bool readTdxCode(QString &code);
    /// Reads the code open in Ths: the 32-bit word at module base plus offset points to a marker byte
    /// followed by the text. The word is read once per attachment. Results as of readTdxCode().
    bool readThsCode(QString &code);

    /// Sets the offset from a hexadecimal number, with or without "0x". False if the text is none, which sets
    /// the offset to 0: not configured.
    bool setTdxOffset(const QString &offset);
    /// The same for Ths.
    bool setThsOffset(const QString &offset);
    /// Offset in bytes from the module's base, 0 while not configured.
    quint32 tdxOffset() const { return m_tdxOffset; }
    quint32 thsOffset() const { return m_thsOffset; }

    /// Closes both handles and forgets bases, pointer and offsets. tdxPid and thsPid stay.
    void detachAll();

    /// True if every character is a Unicode digit; so for an empty text too.
    static bool isAllDigits(QStringView text);

private:
    QList<ProcessInstance> listInstances(std::initializer_list<QStringView> names, QStringView titleWord);
    QString mainWindowTitle(quint32 pid, QStringView titleWord);
    quint64 findModuleBase(ProcessHandle process, const char *module, ModuleFilter filter);
    bool attach(ProcessHandle &process, quint64 &moduleBase, quint32 pid, QStringView name,
                const char *module32, const char *module64);
    void close(ProcessHandle &process);

    PlatformOperations &m_operations;
    ProcessHandle m_tdxProcess = ProcessHandle::Null;
    ProcessHandle m_thsProcess = ProcessHandle::Null;
    quint64 m_tdxModuleBase = 0;
    quint64 m_thsModuleBase = 0;
    quint64 m_thsCodePointer = 0; ///< address of the text in the Ths process, 0 while unknown
    quint32 m_tdxOffset = 0;
    quint32 m_thsOffset = 0;
};
