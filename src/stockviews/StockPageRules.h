#pragma once

#include "linkage/ProcessInstance.h"

#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>

/// What the stock page decides and says, apart from the figures of a stock: pure functions. Programs are
/// named "tdx" and "ths", as the settings and the service name them.
namespace StockPageRules {

// The trading programs

/// Whether the page works with a program of this name.
bool isKnownSoftware(const QString &software);
/// "tdx" for "ths" and the other way round; "tdx" for an unknown one.
QString otherSoftware(const QString &software);
/// The program's word, "通达信" or "同花顺"; empty for an unknown one.
QString softwareWord(const QString &software);
QString switchButtonText(const QString &software);
QString switchButtonToolTip(const QString &software);
/// The text of one copy in the list of copies: its window title, else the folder of its executable, else the
/// program's word; each with the process id.
QString instanceText(const ProcessInstance &instance, const QString &software);

// Linkage

/// The words of a linkage mode for the status line.
QString linkageModeText(int mode);
/// The program that a code read in `software` is sent to, "tdx" or "ths"; empty where the mode sends nothing.
QString linkageTarget(int mode, const QString &software);

// Codes

/// Whether a code is that of a stock: it begins with "6", "0", "3" or "92", but not with "399", which indices
/// do.
bool isStockCode(const QString &code);

// Hot keys

/// The key of a hot key setting; Qt::Key_Tab for any text that is none of the known names.
Qt::Key hotkey(const QString &name);

// Query errors

/// What a failed query does to the page.
struct QueryFailure
{
    QString status;             ///< for the status line
    bool clearsDisplay = false; ///< the service has nothing on this code: what is on show goes away
};
/// `code` is the code on show, `requestType` the kind of request that failed, empty if unknown.
QueryFailure queryFailure(const QString &error, const QString &requestType, const QString &code);

// Compact mode

/// Edges of a window, as bits.
enum Edge
{
    NoEdge = 0,
    TopEdge = 1,
    LeftEdge = 2,
    RightEdge = 4,
    BottomEdge = 8
};
/// The edges that a point of a window of this size lies on, as a sum of Edge. The outer band is nine pixels
/// wide at the top and left, eight at the right and bottom.
int edgesAt(const QPoint &point, const QSize &windowSize);
/// `start` with these edges moved by `delta`.
QRect resized(const QRect &start, int edges, const QPoint &delta);

// The hover popup

/// Where the popup goes: right of the label, or left of it where it would pass the right of the screen, and
/// up where it would pass the bottom. All in global coordinates and pixels.
QPoint popupPosition(const QRect &label, const QSize &popup, const QRect &screen);

} // namespace StockPageRules
