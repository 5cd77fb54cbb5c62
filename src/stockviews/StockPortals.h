#pragma once

#include <QString>
#include <QUrl>

#include <array>

/// The web portals that the stock page opens for a stock.
namespace StockPortals {

/// Which of a portal's pages fits a code.
enum class CodeClass
{
    Shanghai, ///< begins with "6"
    Shenzhen, ///< begins with "0" or "3"
    Beijing,  ///< begins with "92"
    Home,     ///< any other, also none: the portal's start page
};
CodeClass classOf(const QString &code);

/// One portal. In a path, %1 stands for the code.
struct Portal
{
    QString buttonName; ///< object name of its button
    QString buttonText; ///< text of its button
    QString name;       ///< what it goes by in pageOf(); one differs from its button on purpose
    QString host;       ///< scheme and host of the stock pages
    QString homeHost;   ///< scheme and host of the start page
    QString shanghaiPath;
    QString shenzhenPath;
    QString beijingPath;
    QString homePath;
};

/// All portals in the order of their buttons.
const std::array<Portal, 8> &all();

/// The page that the portal of this name has for a code; not valid for an unknown name.
QUrl pageOf(const QString &name, const QString &code);

/// The tool tip of a portal's button.
QString toolTip(const Portal &portal, const QString &code);

} // namespace StockPortals
