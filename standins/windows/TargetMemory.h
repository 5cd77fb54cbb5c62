#pragma once

#include "program/TradingProgram.h"

#include <array>

/// The memory of a stand-in that is a Windows program: the text of the open stock lies where the real program
/// keeps it, counted from the base of the module that the real program keeps it in.
class TargetMemory
{
public:
    explicit TargetMemory(TradingProgram::Kind kind);
    TargetMemory(const TargetMemory &) = delete;
    TargetMemory &operator=(const TargetMemory &) = delete;

    /// False if the module was linked so that the place does not lie in its data.
    bool isValid() const { return m_text != nullptr; }
    /// Puts the text to where a reader expects it.
    void setText(const std::array<char, 8> &text);

private:
    char *m_text = nullptr;
};
