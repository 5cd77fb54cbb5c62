#pragma once

#include <QString>

/// The names of the two trading programs that the desktop works with.
namespace TradingSoftware {

// As the settings and the service name them.
inline const QString tdx = QStringLiteral("tdx");
inline const QString ths = QStringLiteral("ths");

// As users know them.
inline const QString tdxWord = QStringLiteral("通达信");
inline const QString thsWord = QStringLiteral("同花顺");

} // namespace TradingSoftware
