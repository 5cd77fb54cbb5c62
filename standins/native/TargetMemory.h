#pragma once

#include "program/TradingProgram.h"

#include <QtGlobal>

#include <array>

/// The memory of a native stand-in, laid out as the memory of the Windows program it stands for: files with
/// the names of its modules, mapped from their headers on, and the text of the open stock where the real
/// program keeps it. The files are made in the folder "modules" beside the program, and stay there.
class TargetMemory
{
public:
    /// Which program is stood for: a 64-bit Windows program, or a 32-bit one (whose modules have other
    /// names).
    enum class Width
    {
        Bits32,
        Bits64
    };

    /// Maps everything. Ends the process with a message if that cannot be done.
    TargetMemory(TradingProgram::Kind kind, Width width);
    Q_DISABLE_COPY_MOVE(TargetMemory)

    /// Puts the text to where a reader expects it.
    void setText(const std::array<char, 8> &text);

private:
    char *m_text = nullptr;
};
