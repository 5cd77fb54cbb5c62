#pragma once

#include "app/LarkspireApp.h"

#include <QDir>
#include <QString>

#include <functional>

class QDialog;
class QPushButton;
class QTabWidget;

/// Walks through the program as a user does, against a running service, and stores a picture of every dialog
/// and page on the way: NAME-light.png or NAME-dark.png. Needs a display with a window manager.
class PictureTour final
{
public:
    /// \param folder where the pictures go; exists
    /// \param apiKey of an account on the service, which the tour logs in with
    /// \param dark the skin that is stored, and that ends the name of every picture
    PictureTour(const QDir &folder, const QString &apiKey, bool dark);
    Q_DISABLE_COPY_MOVE(PictureTour)

    /// Starts the program and walks. Writes the first thing that goes wrong to standard error. @return
    /// whether all pictures were taken
    bool walk();

private:
    bool waysIn();
    bool login();
    bool accountDialogs();
    bool keywordManager();
    bool pages();
    bool settingsDialog();
    bool marketPage();
    bool stockPage();
    bool linkageSetUp();
    bool stockPanels();

    /// A window that has the focus, or takes it now.
    bool shoot(QWidget *window, const QString &name);
    /// A window that is shown without the focus.
    bool shootPanel(QWidget *panel, const QString &name);
    /// Waits; says what has not come when it does not.
    bool waitFor(const std::function<bool()> &condition, const QString &what);
    /// Opens a dialog that runs an event loop of its own, shows it to \p visit and closes it.
    bool visit(const QString &title, const std::function<void()> &open,
               const std::function<bool(QDialog &)> &visit);
    bool chooseTab(QTabWidget *tabs, const QString &text);
    bool failed(const QString &what);

    QDir m_folder;
    QString m_apiKey;
    QString m_ending;
    LarkspireApp m_window;
};
