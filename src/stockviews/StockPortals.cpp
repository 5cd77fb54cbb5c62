#include "stockviews/StockPortals.h"

namespace {

// Where each portal is: what a distributor sets, all in this one place.
const QString clsHost = QStringLiteral("https://cls.portals.larkspire.example");
const QString lhbHost = QStringLiteral("https://lhb.portals.larkspire.example");
const QString eastmoneyHost = QStringLiteral("https://guba.eastmoney.portals.larkspire.example");
const QString eastmoneyMainHost = QStringLiteral("https://www.eastmoney.portals.larkspire.example");
const QString taogubaHost = QStringLiteral("https://www.taoguba.portals.larkspire.example");
const QString taogubaNewsHost = QStringLiteral("https://news.taoguba.portals.larkspire.example");
const QString jiucaiHost = QStringLiteral("https://jiucai.portals.larkspire.example");
const QString aigupiaoHost = QStringLiteral("https://aigupiao.portals.larkspire.example");
const QString sinaHost = QStringLiteral("https://stock.sina.portals.larkspire.example");
const QString sinaMainHost = QStringLiteral("https://www.sina.portals.larkspire.example");
const QString xueqiuHost = QStringLiteral("https://xueqiu.portals.larkspire.example");

} // namespace

namespace StockPortals {

CodeClass classOf(const QString &code)
{
    if (code.startsWith(QLatin1Char('6')))
        return CodeClass::Shanghai;
    if (code.startsWith(QLatin1Char('0')) || code.startsWith(QLatin1Char('3')))
        return CodeClass::Shenzhen;
    if (code.startsWith(QLatin1String("92")))
        return CodeClass::Beijing;
    return CodeClass::Home;
}

const std::array<Portal, 8> &all()
{
    static const QString lhbPath = QStringLiteral("/market/lhbgg/code/%1/");
    static const QString jiucaiPath = QStringLiteral("/search/new?k=%1&type=stock");
    static const QString aigupiaoPath = QStringLiteral("/search/lists/type/WZ/content/%1");
    static const QString slash = QStringLiteral("/");
    static const std::array<Portal, 8> portals = {
        Portal{QStringLiteral("clsButton"), QStringLiteral("财联社"), QStringLiteral("财联社"), clsHost,
               clsHost, QStringLiteral("/stock?code=sh%1"), QStringLiteral("/stock?code=sz%1"),
               QStringLiteral("/stock?code=%1.BJ"), slash},
        Portal{QStringLiteral("lhbButton"), QStringLiteral("龙虎榜"), QStringLiteral("龙虎榜"), lhbHost,
               lhbHost, lhbPath, lhbPath, lhbPath, QStringLiteral("/market/longhu/")},
        Portal{QStringLiteral("eastmoneyButton"), QStringLiteral("东财股吧"), QStringLiteral("东财股吧"),
               eastmoneyHost, eastmoneyMainHost, QStringLiteral("/list,sh%1.html"),
               QStringLiteral("/list,sz%1.html"), QStringLiteral("/list,%1.html"), slash},
        Portal{QStringLiteral("taogubaButton"), QStringLiteral("淘股吧"), QStringLiteral("淘股吧"),
               taogubaHost, taogubaNewsHost, QStringLiteral("/quotes/sh%1"), QStringLiteral("/quotes/sz%1"),
               QStringLiteral("/quotes/bj%1"), QStringLiteral("/newsFlash/")},
        // Its button says another word than the name that it goes by, on purpose.
        Portal{QStringLiteral("jiucaiButton"), QStringLiteral("韭研公社"), QStringLiteral("韭菜公社"),
               jiucaiHost, jiucaiHost, jiucaiPath, jiucaiPath, jiucaiPath, slash},
        Portal{QStringLiteral("aigupiaoButton"), QStringLiteral("爱股票"), QStringLiteral("爱股票"),
               aigupiaoHost, aigupiaoHost, aigupiaoPath, aigupiaoPath, aigupiaoPath, slash},
        Portal{QStringLiteral("sinaButton"), QStringLiteral("新浪财经"), QStringLiteral("新浪财经"), sinaHost,
               sinaMainHost, QStringLiteral("/corp/go.php/vCB_AllNewsStock/symbol/sh%1.phtml"),
               QStringLiteral("/corp/go.php/vCB_AllNewsStock/symbol/sz%1.phtml"),
               QStringLiteral("/corp/go.php/vCB_AllNewsStock/symbol/bj%1.phtml"), slash},
        Portal{QStringLiteral("xueqiuButton"), QStringLiteral("雪球"), QStringLiteral("雪球"), xueqiuHost,
               xueqiuHost, QStringLiteral("/S/SH%1"), QStringLiteral("/S/SZ%1"), QStringLiteral("/S/BJ%1"),
               slash},
    };
    return portals;
}

QUrl pageOf(const QString &name, const QString &code)
{
    for (const Portal &portal : all()) {
        if (portal.name != name)
            continue;
        switch (classOf(code)) {
        case CodeClass::Shanghai:
            return QUrl(portal.host + portal.shanghaiPath.arg(code));
        case CodeClass::Shenzhen:
            return QUrl(portal.host + portal.shenzhenPath.arg(code));
        case CodeClass::Beijing:
            return QUrl(portal.host + portal.beijingPath.arg(code));
        case CodeClass::Home:
            return QUrl(portal.homeHost + portal.homePath);
        }
    }
    return {};
}

QString toolTip(const Portal &portal, const QString &code)
{
    return QStringLiteral("点击打开 %1 查看股票 %2 的详细信息").arg(portal.buttonText, code);
}

} // namespace StockPortals
