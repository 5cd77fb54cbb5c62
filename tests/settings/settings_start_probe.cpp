// Starts on the settings file of its environment as the desktop does, writes what it is told to and prints
// what it reads as one JSON object.
//   settings_start_probe [--without-rights] [--username NAME] [--die-with-lock]

#include "settings/ConfigManager.h"
#include "support/IsolatedHome.h"

#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>

#include <csignal>
#include <cstdio>

#include <unistd.h>

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    setProgramIdentity();
    const QStringList arguments = QCoreApplication::arguments();
    // The administrator may read and write anything: step down to see what others see.
    constexpr uid_t nobody = 65534;
    if (arguments.contains(QStringLiteral("--without-rights")) && geteuid() == 0 && setuid(nobody) != 0)
        return 3;

    ConfigManager *const config = ConfigManager::instance();
    if (arguments.contains(QStringLiteral("--die-with-lock"))) {
        // As a copy that is killed in the middle of writing.
        QLockFile lock(settingsFilePath() + QStringLiteral(".lock"));
        if (lock.lock())
            std::raise(SIGKILL);
    }
    const int username = arguments.indexOf(QStringLiteral("--username"));
    if (username > 0)
        config->setAuthUsername(arguments.value(username + 1));
    const QJsonObject seen{
        {QStringLiteral("serverUrl"), config->getApiServerUrl()},
        {QStringLiteral("timeout"), config->getApiTimeout()},
        {QStringLiteral("username"), config->getAuthUsername()},
        {QStringLiteral("lastLoginTime"), config->getLastLoginTime().toString(Qt::ISODate)},
        {QStringLiteral("refreshInterval"), config->getRefreshInterval()},
        {QStringLiteral("enableSound"), config->getEnableSound()},
        {QStringLiteral("volume"), config->getTtsVolume()},
        {QStringLiteral("width"), config->getWindowSize().width()},
        {QStringLiteral("x"), config->getWindowPosition().x()},
        {QStringLiteral("geometry"), QString::fromLatin1(config->getWindowGeometry().toHex())},
        {QStringLiteral("mainBoardColor"), config->getMainBoardColor()},
    };
    config->sync();
    std::fputs(QJsonDocument(seen).toJson(QJsonDocument::Compact).constData(), stdout);
    return 0;
}
