// larkspire-pictures FOLDER light|dark API_KEY
// Takes the pictures of the documents. The settings file of the profile that it runs in names the service;
// the profile must be one of its own.

#include "PictureTour.h"
#include "app/FontSubstitution.h"
#include "app/ToolkitTexts.h"
#include "newsclient/NewsRecords.h"
#include "resources/LarkspireResources.h"
#include "support/IsolatedHome.h"

#include <QApplication>
#include <QIcon>
#include <QStyleFactory>
#include <QTextCodec>

#include <cstdio>

int main(int argc, char *argv[])
{
    if (argc != 4) {
        std::fprintf(stderr, "Usage: larkspire-pictures FOLDER light|dark API_KEY\n");
        return 2;
    }
    // The same as in the program.
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    QApplication application(argc, argv);
    initLarkspireResources();
    setProgramIdentity();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    qRegisterMetaType<NewsData>("NewsData");
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/app.ico")));
    QGuiApplication::setQuitOnLastWindowClosed(false);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    FontSubstitution::apply();
    ToolkitTexts toolkitTexts;
    QCoreApplication::installTranslator(&toolkitTexts);

    const QDir folder(QString::fromLocal8Bit(argv[1]));
    PictureTour tour(folder, QString::fromLocal8Bit(argv[3]), qstrcmp(argv[2], "dark") == 0);
    return tour.walk() ? 0 : 1;
}
