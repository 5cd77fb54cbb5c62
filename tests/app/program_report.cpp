#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStyle>
#include <QTextCodec>
#include <QTimer>

// Makes the program itself, into which this is linked, write down how its main() has set up the application,
// once its event loop runs, and end with a code of its own; where the environment names a file for that.
namespace {

constexpr int exitCode = 42;

void report()
{
    const QSize iconSize(32, 32);
    const QImage icon = QApplication::windowIcon().pixmap(iconSize).toImage();
    const QJsonObject found{
        {QStringLiteral("name"), QCoreApplication::applicationName()},
        {QStringLiteral("display name"), QGuiApplication::applicationDisplayName()},
        {QStringLiteral("version"), QCoreApplication::applicationVersion()},
        {QStringLiteral("organisation"), QCoreApplication::organizationName()},
        {QStringLiteral("domain"), QCoreApplication::organizationDomain()},
        {QStringLiteral("locale codec"), QString::fromLatin1(QTextCodec::codecForLocale()->name())},
        {QStringLiteral("has its icon"),
         !icon.isNull() && icon == QIcon(QStringLiteral(":/icons/app.ico")).pixmap(iconSize).toImage()},
        {QStringLiteral("ends with its last window"), QGuiApplication::quitOnLastWindowClosed()},
        {QStringLiteral("style"), QApplication::style()->objectName()},
    };
    QFile file(QFile::decodeName(qgetenv("LARKSPIRE_TEST_REPORT")));
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(found).toJson()) < 0)
        qFatal("The report could not be written");
    file.close();
    QCoreApplication::exit(exitCode);
}

void arrangeReport()
{
    if (!qEnvironmentVariableIsSet("LARKSPIRE_TEST_REPORT"))
        return;
    // As on a system whose locale has another one.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("ISO-8859-1"));
    QTimer::singleShot(0, QCoreApplication::instance(), report);
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(arrangeReport)
