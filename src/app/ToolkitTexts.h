#pragma once

#include <QTranslator>

/// The Chinese of the texts that Qt's own widgets bring along: the buttons of message boxes, the menus of
/// text fields, number boxes and scroll bars, and Qt's own file dialog, where the system has none. The
/// program's texts are Chinese as they stand and need no translation.
///
/// What is left out stays as it is: the words of network errors, as other texts are chosen by them, and the
/// colour dialog, whose captions the settings dialog changes.
class ToolkitTexts final : public QTranslator
{
public:
    ToolkitTexts() = default;
    ~ToolkitTexts() override = default;
    Q_DISABLE_COPY_MOVE(ToolkitTexts)

    /// \returns the Chinese text, or a null text for one that is not known here. \p context is the name of
    /// the Qt class that shows it, \p sourceText its English text with the mark of its key; the two others
    /// play no part.
    QString translate(const char *context, const char *sourceText, const char *disambiguation = nullptr,
                      int n = -1) const override;

    /// Never: Qt does not ask an empty translator.
    bool isEmpty() const override;
};
