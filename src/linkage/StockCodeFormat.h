#pragma once

#include <QByteArray>
#include <QString>

/// The forms in which the trading programs take a stock code.
namespace StockCodeFormat {

/// Tdx's form: the code behind one decimal digit for its market, by the code's leading characters. A code
/// that no rule fits, an empty one among them, comes back as it is.
QString formatTdxCode(const QString &code);

/// Ths's form: one marker byte for the market, by the code's leading characters, and the code in Latin-1,
/// without a terminator. Empty for an empty code.
QByteArray formatThsCode(const QString &code);

} // namespace StockCodeFormat
