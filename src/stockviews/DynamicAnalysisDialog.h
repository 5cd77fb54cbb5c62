#pragma once

#include "stockclient/StockRecords.h"
#include "stockviews/FloatingPanel.h"

#include <QDate>
#include <QString>

#include <functional>

class QTextBrowser;
class QUrl;

/// The floating panel "异动解析": why a stock moved. It shows one analysis at a time, in the colours and
/// sizes of the concept panel's settings, as high as its text up to the height of the screen. Where the
/// settings allow it, the user enters an analysis of their own, which is saved on the service and shown at
/// once.
class DynamicAnalysisDialog final : public FloatingPanel
{
    Q_OBJECT

public:
    /// \p today is the day that a saved analysis belongs to where nothing else says one.
    explicit DynamicAnalysisDialog(QWidget *parent = nullptr,
                                   std::function<QDate()> today = QDate::currentDate);
    Q_DISABLE_COPY_MOVE(DynamicAnalysisDialog)

    /// Replaces the analysis on show; with neither title nor content, the panel says that there is nothing.
    /// \p publishTime is in the form of mails, \p tradeDate is "yyyy-MM-dd". The settings are read anew.
    void setAnalysis(const QString &stockCode, const QString &stockName, const QString &tradeDate,
                     const QString &title, const QString &publishTime, const QString &content,
                     const QString &sourceUrl);
    /// What is on show.
    const DynamicAnalysisRecord &analysis() const { return m_record; }
    /// Whether the user is at a dialog of the panel, which then has to stay.
    bool isWaitingForUser() const;
    /// Shows it anew, with the settings of now.
    void reloadSettings();

protected:
    QPoint defaultPosition(const QRect &available) const override;

private slots:
    void onManualInputClicked();
    void onAnchorClicked(const QUrl &url);

private:
    void applyStyle();
    void adjustHeight();
    /// Sends the analysis to the service and shows it when it has been stored.
    void save(const DynamicAnalysisRecord &record);

    std::function<QDate()> m_today;
    DynamicAnalysisRecord m_record;
    QTextBrowser *m_browser;
    QWidget *m_manualBar;
};
