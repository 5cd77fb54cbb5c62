#pragma once

#include <string>
#include <string_view>

/// The control channel of a stand-in: one line per order on standard input, one line per event on standard
/// output.
///
///     open CODE      opens a stock, whatever the text is          close          closes it
///     type DIGITS    as typed on the keyboard                     next, previous as the arrow keys
///     timer MS       opens the next stock every MS milliseconds; 0 ends that
///     hang MS        does nothing at all for MS milliseconds
///     crash          ends by force at the next message that a program sends, in the midst of it
///     state          asks for the state                           quit           ends the program
///
/// Every order but quit is answered by a line "code CODE", "code" alone while no stock is open; an order that
/// is none of these by "unknown LINE". A program that is up says "ready NAME", behind its first "code CODE";
/// one that a message reached "received CODE", before its "code CODE".
struct ControlLine
{
    enum class Order
    {
        Unknown,
        Open,
        Close,
        Type,
        Next,
        Previous,
        Timer,
        Hang,
        Crash,
        State,
        Quit
    };

    Order order = Order::Unknown;
    std::string text;     ///< the word behind the order
    int milliseconds = 0; ///< the same as a number; 0 if it is none

    static ControlLine parse(std::string_view line);
};
