#pragma once

#include "settings/ServiceAnswer.h"

#include <QString>
#include <QUrl>
#include <QVector>

/// What the settings dialog decides without any window: which entries are faulty, where a test of the service
/// goes, what its answer means, and in which colours a preview is drawn. Texts are as the user reads them.
namespace ConfigDialogRules {

/// Whether an address begins as one of the web does, in lower case.
bool hasWebScheme(const QString &address);

// What is wrong with trimmed entries, empty when nothing is. The same fault has other words at other places;
// that is meant.
/// Ahead of a test of the connection.
QString connectionTestFault(const QString &address);
/// Ahead of a test of the key. It leaves the scheme of the address to the request, as meant.
QString keyTestFault(const QString &address, const QString &apiKey);
/// Ahead of saving.
QString savingFault(const QString &address, const QString &apiKey);

/// The address of a service path such as "newsapi/health" under a base address, with one "/" in between.
QUrl serviceUrl(const QString &address, const QString &path);

/// Why no request can go to a URL: it is not of the web, or names no host. Empty when one can.
QString unreachableReason(const QUrl &url);

/// The outcome of a test and the text that tells it.
struct TestResult
{
    bool success = false;
    QString text;
};
TestResult connectionTestResult(const ServiceAnswer &answer);
TestResult keyTestResult(const ServiceAnswer &answer);

/// A colour that stock codes can have.
struct StockColor
{
    QString word;  ///< what is stored and drawn with
    QString value; ///< "#RRGGBB" of the swatch
};
/// The twenty colours in the order of the list. Some have equal values, so the word alone tells them apart;
/// that is meant.
const QVector<StockColor> &stockColors();

/// The colour of a preview: the entry where it is a word or "#rrggbb", else the fallback.
QString previewColor(const QString &entry, const QString &fallback);

/// The Chinese text of a caption of Qt's colour dialog; the caption itself where there is none.
QString colorDialogCaption(const QString &caption);

} // namespace ConfigDialogRules
