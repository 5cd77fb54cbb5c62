#include "stockviews/StockPageRules.h"

#include "linkage/TradingSoftware.h"

using TradingSoftware::tdx;
using TradingSoftware::ths;

namespace {

constexpr int NearEdge = 9;
constexpr int FarEdge = 8;
constexpr int PopupGap = 10;
constexpr int DetailErrorLength = 50;
constexpr int ErrorLength = 100;

QString cutTo(const QString &text, int length)
{
    return text.size() > length ? text.left(length) + QStringLiteral("...") : text;
}

} // namespace

namespace StockPageRules {

bool isKnownSoftware(const QString &software)
{
    return software == tdx || software == ths;
}

QString otherSoftware(const QString &software)
{
    return software == tdx ? ths : tdx;
}

QString softwareWord(const QString &software)
{
    if (software == tdx)
        return TradingSoftware::tdxWord;
    return software == ths ? TradingSoftware::thsWord : QString();
}

QString switchButtonText(const QString &software)
{
    if (software == tdx)
        return QStringLiteral("通");
    return software == ths ? QStringLiteral("同") : QStringLiteral("切");
}

QString switchButtonToolTip(const QString &software)
{
    if (!isKnownSoftware(software))
        return QStringLiteral("点击切换联动软件并开启自动刷新");
    return QStringLiteral("当前: %1\n点击切换到%2并开启自动刷新")
        .arg(softwareWord(software), softwareWord(otherSoftware(software)));
}

QString instanceText(const ProcessInstance &instance, const QString &software)
{
    QString name = instance.windowTitle;
    if (name.isEmpty()) {
        // A path of Windows also where the desktop runs elsewhere.
        const QString path = QString(instance.exePath).replace(QLatin1Char('\\'), QLatin1Char('/'));
        if (path.contains(QLatin1Char('/')))
            name = path.section(QLatin1Char('/'), -2, -2);
    }
    if (name.isEmpty())
        name = softwareWord(software);
    return name + QStringLiteral(" (PID:%1)").arg(instance.pid);
}

QString linkageModeText(int mode)
{
    switch (mode) {
    case 0:
        return QStringLiteral("不联动");
    case 1:
        return QStringLiteral("通➜同 (通达信 ➜ 同花顺)");
    case 2:
        return QStringLiteral("同➜通 (同花顺 ➜ 通达信)");
    case 3:
        return QStringLiteral("通➜通 (通达信 ➜ 其他通达信)");
    default:
        return QStringLiteral("未知模式");
    }
}

QString linkageTarget(int mode, const QString &software)
{
    if (mode == 1 && software == tdx)
        return ths;
    if ((mode == 2 && software == ths) || (mode == 3 && software == tdx))
        return tdx;
    return {};
}

bool isStockCode(const QString &code)
{
    if (code.startsWith(QLatin1String("399")))
        return false;
    return code.startsWith(QLatin1Char('6')) || code.startsWith(QLatin1Char('0')) ||
           code.startsWith(QLatin1Char('3')) || code.startsWith(QLatin1String("92"));
}

Qt::Key hotkey(const QString &name)
{
    struct NamedKey
    {
        const char *name;
        Qt::Key key;
    };
    static constexpr NamedKey keys[] = {
        {"F13", Qt::Key_F13},          {"F14", Qt::Key_F14},
        {"F15", Qt::Key_F15},          {"F16", Qt::Key_F16},
        {"F17", Qt::Key_F17},          {"F18", Qt::Key_F18},
        {"F19", Qt::Key_F19},          {"F20", Qt::Key_F20},
        {"F21", Qt::Key_F21},          {"F22", Qt::Key_F22},
        {"F23", Qt::Key_F23},          {"F24", Qt::Key_F24},
        {"Tilde", Qt::Key_AsciiTilde}, {"HomePage", Qt::Key_Home},
        {"Search", Qt::Key_Search},    {"LauchMail", Qt::Key_LaunchMail}, // spelt so in the settings
        {"Launch", Qt::Key_Launch0},
    };
    for (const NamedKey &named : keys) {
        if (name == QLatin1String(named.name))
            return named.key;
    }
    return Qt::Key_Tab;
}

QueryFailure queryFailure(const QString &error, const QString &requestType, const QString &code)
{
    const QString notFound = QStringLiteral("NOT FOUND");
    if (requestType == QLatin1String("limitUpDetailInfo")) {
        const QString message =
            error.contains(notFound) ? QStringLiteral("查无记录") : cutTo(error, DetailErrorLength);
        return {QStringLiteral("涨停详情查询: ") + message, false};
    }
    if (error.contains(notFound) || error.contains(QStringLiteral("无数据")) ||
        error.contains(QStringLiteral("ETF")))
        return {(code.isEmpty() ? QStringLiteral("该股票") : code) + QStringLiteral("无数据"), true};
    return {QStringLiteral("查询失败: ") + cutTo(error, ErrorLength), false};
}

int edgesAt(const QPoint &point, const QSize &windowSize)
{
    int edges = NoEdge;
    if (point.y() < NearEdge)
        edges |= TopEdge;
    if (point.x() < NearEdge)
        edges |= LeftEdge;
    if (point.x() >= windowSize.width() - FarEdge)
        edges |= RightEdge;
    if (point.y() >= windowSize.height() - FarEdge)
        edges |= BottomEdge;
    return edges;
}

QRect resized(const QRect &start, int edges, const QPoint &delta)
{
    return start.adjusted((edges & LeftEdge) != 0 ? delta.x() : 0, (edges & TopEdge) != 0 ? delta.y() : 0,
                          (edges & RightEdge) != 0 ? delta.x() : 0,
                          (edges & BottomEdge) != 0 ? delta.y() : 0);
}

QPoint popupPosition(const QRect &label, const QSize &popup, const QRect &screen)
{
    const int screenRight = screen.x() + screen.width();
    const int screenBottom = screen.y() + screen.height();
    int x = label.x() + label.width() + PopupGap;
    if (x + popup.width() > screenRight)
        x = label.x() - popup.width() - PopupGap;
    int y = label.y();
    if (y + popup.height() > screenBottom)
        y = screenBottom - popup.height() - PopupGap;
    return {x, y};
}

} // namespace StockPageRules
