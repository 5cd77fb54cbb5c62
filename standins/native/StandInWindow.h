#pragma once

#include "native/TargetMemory.h"
#include "program/ControlLine.h"
#include "program/TradingProgram.h"

#include <QByteArray>
#include <QSocketNotifier>
#include <QTimer>
#include <QWidget>

class QLabel;

/// The main window of a native stand-in: shows the open stock, takes keys, and obeys the control channel.
class StandInWindow final : public QWidget
{
    Q_OBJECT

public:
    StandInWindow(TradingProgram &program, TargetMemory &memory);
    Q_DISABLE_COPY_MOVE(StandInWindow)

    /// Opens `code` at the start, or nothing for an empty one, and says that the program is up.
    void start(const QString &code);
    /// Opens the next stock every `milliseconds`; 0 ends that.
    void setTimer(int milliseconds);
    /// Ends the program once standard input has ended.
    void setEndsWithInput(bool ends) { m_endsWithInput = ends; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void readInput();
    void obey(const ControlLine &line);
    void showProgram();
    void report(const QByteArray &line);
    void reportCode();

    TradingProgram &m_program;
    TargetMemory &m_memory;
    QLabel *m_code = nullptr;
    QLabel *m_name = nullptr;
    QLabel *m_typed = nullptr;
    QTimer m_timer;
    QSocketNotifier m_input;
    QByteArray m_pending; ///< of standard input, up to the next newline
    bool m_endsWithInput = false;
};
