#pragma once

#include <QMap>
#include <QString>

#include <optional>

/// What one label of the stock page or the market page shows.
struct LabelContent
{
    /// Rich text for the values and the name; plain text for captions, region, industry and business.
    QString text;
    /// The label's whole style sheet, empty for the plain look. Without a value the label keeps the one it
    /// has.
    std::optional<QString> style;
    /// Plain text, whatever it looks like: what the label cannot show whole. Empty takes the tool tip away.
    QString toolTip;
};

/// By the object names of the labels.
using LabelContents = QMap<QString, LabelContent>;
