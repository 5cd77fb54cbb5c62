#pragma once

#include <QString>

/// Address space that both the test and its forked children leave free until a child maps something there.
/// What cannot be mapped ends the process with a message.
class ReservedSpace final
{
public:
    static constexpr int pageSize = 4096;
    static constexpr int pageCount = 16;

    ReservedSpace();
    ~ReservedSpace();
    Q_DISABLE_COPY_MOVE(ReservedSpace)

    char *page(int number) const { return m_start + number * pageSize; }
    quint64 address(int number) const { return reinterpret_cast<quintptr>(page(number)); }

    /// Maps one page of a file, from `offset` on, privately, at the page of that number.
    void mapFile(const QString &path, int number, int offset = 0) const;
    /// Maps `count` pages of memory of their own, filled with zero bytes. Returns the first byte.
    char *mapMemory(int number, int count) const;

private:
    char *m_start;
};
