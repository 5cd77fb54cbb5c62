#pragma once

#include "linkage/FakePlatform.h"
#include "stockviews/ScriptedStockService.h"
#include "stockviews/StockAnalysisWidget.h"

#include <QDateTime>
#include <QString>
#include <QWidget>

#include <memory>

/// A stock page in a window, with a scripted service and trading programs made of tables. Link
/// larkspire_stock_page_fixture.
class StockPageFixture
{
public:
    static constexpr quint32 tdxPid = 71;
    static constexpr quint32 thsPid = 72;
    static const QString tdxOffset;
    static const QString thsOffset;

    /// Empties the settings, stores a session and an address, and gives the linkage configuration both
    /// offsets.
    StockPageFixture();
    ~StockPageFixture();
    Q_DISABLE_COPY_MOVE(StockPageFixture)

    /// Builds the page with the settings of now; with it the window, which is shown. The programs that run
    /// are those of the tables at this moment.
    void openPage();

    /// The code that is open in a program; the program runs from then on.
    void openInTdx(const QByteArray &code, quint32 pid = tdxPid, const QString &folder = {});
    void openInThs(const QByteArray &code, quint32 pid = thsPid);
    /// Ends all copies of Tdx, or the one of this id.
    void closeTdx(quint32 pid = 0);

    /// The page's next tick, now.
    void tick();
    /// Switches the loop on as the user does.
    void switchOn();
    /// Builds the page with this code open in Tdx, switches the loop on and waits until the stock is shown.
    void openPageOn(const QByteArray &code);
    /// Opens the code in Tdx and waits until the page that runs shows the stock.
    void follow(const QByteArray &code);
    /// What the status line says of a stock whose record has come.
    static QString updated(const QByteArray &code);
    /// Waits until no answer is awaited any more: what the service has not been asked for then, it is not
    /// asked for any more.
    void settle() const;

    template <typename Kind>
    Kind *find(const char *objectName) const
    {
        return page->findChild<Kind *>(QString::fromLatin1(objectName));
    }
    QString text(const char *label) const;
    QString style(const char *label) const;
    QString status() const { return text("statusLabel"); }

    ScriptedStockService service;
    FakePlatform *reading = nullptr; ///< goes with the page
    FakePlatform *sending = nullptr;
    QDateTime now{QDate(2024, 6, 12), QTime(9, 31)}; // a Wednesday
    std::unique_ptr<QWidget> window;
    StockAnalysisWidget *page = nullptr;

private:
    std::unique_ptr<FakePlatform> m_nextReading;
    std::unique_ptr<FakePlatform> m_nextSending;
};
