#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

/// What a trading program is about, as far as this project's linkage can see it: one stock that is open,
/// changed by typing digits, by the arrow keys, on a timer or by a message, and the text of its code in
/// memory. No window, no system call; texts are UTF-8.
class TradingProgram
{
public:
    enum class Kind
    {
        Tdx, ///< 通达信
        Ths, ///< 同花顺
    };

    explicit TradingProgram(Kind kind) : m_kind(kind) {}

    Kind kind() const { return m_kind; }
    /// Code of the open stock, empty while none is open.
    const std::string &code() const { return m_code; }
    /// Name of the open stock; empty if none is open or the code is not among the known ones.
    std::string stockName() const;
    /// Digits typed so far.
    const std::string &typed() const { return m_typed; }
    /// Title of the main window: the program's word, then the open stock.
    std::string title() const;

    /// Opens a stock. Any text is taken, as a program under test must show odd ones too; what was typed is
    /// gone.
    void open(const std::string &code);
    /// Closes the stock: the program shows something else.
    void close();
    /// A digit key. The sixth digit opens the stock; other characters are ignored.
    void type(char digit);
    /// The Backspace key: takes the last digit back.
    void eraseDigit();
    /// The Down and Up keys and the timer: the stock after and before the open one in the list, round and
    /// round.
    void openNext();
    void openPrevious();

    /// The bytes that stand in memory for the open stock: for Tdx the digits, for Ths the marker byte of the
    /// market and the digits; zero bytes behind them, and nothing but those while no stock is open.
    std::array<char, 8> memoryText() const;

    /// The code in Tdx's message "Stock": the number's last six decimal digits; the one before is the market.
    static std::string codeOfNumber(std::int64_t number);
    /// The code in Ths's message block of `size` bytes: what stands behind the marker byte.
    static std::string codeOfBlock(const char *block, std::size_t size);

private:
    void openAt(std::size_t position);

    Kind m_kind;
    std::string m_code;
    std::string m_typed;
};
