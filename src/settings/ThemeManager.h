#pragma once

#include <QObject>
#include <QString>

/// The skin of the login-side dialogs: holds the mode, sets the application's palette for it and hands out
/// style sheets in one green-accented family of colours. The main window lays its own skin on top of the
/// palette (MainWindowSkin). The mode is not stored here. GUI thread only.
class ThemeManager final : public QObject
{
    Q_OBJECT

public:
    enum ThemeMode
    {
        LightTheme = 0,
        DarkTheme = 1
    };
    Q_ENUM(ThemeMode)

    /// The one instance, created at the first call in DarkTheme and never deleted.
    static ThemeManager *instance();

    Q_DISABLE_COPY_MOVE(ThemeManager)

    /// Stores the mode, sets the application's palette and emits themeChanged(). Does nothing at all when the
    /// mode is the current one, so a first call with DarkTheme leaves the application's palette alone.
    void setTheme(ThemeMode mode);
    ThemeMode currentTheme() const { return m_mode; }

    // Style sheets for the current mode.
    QString getButtonStyle() const;
    QString getDialogStyle() const;
    QString getLineEditStyle() const;
    QString getLabelStyle() const;

signals:
    void themeChanged();

private:
    ThemeManager() = default;

    ThemeMode m_mode = DarkTheme;
};
