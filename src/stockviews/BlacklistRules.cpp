#include "stockviews/BlacklistRules.h"

#include "stockviews/StockRendering.h"

#include <QLatin1String>

namespace {

constexpr int BadgeSmaller = 2; // points below the name's size

QString statusStyle(const char *color)
{
    return QStringLiteral("QLabel { color: %1; font-weight: bold; }").arg(QLatin1String(color));
}

bool hasName(const QString &name, const QString &code)
{
    return !name.isEmpty() && name != code;
}

QString reasonToolTip(const QString &reason)
{
    return reason.isEmpty() ? QStringLiteral("已在黑名单中") : QStringLiteral("已在黑名单中：") + reason;
}

// Without padding, which would leave no room for the text.
const QString plainButtonStyle = QStringLiteral("QPushButton { padding: 0px; }");
const QString redButtonStyle =
    QStringLiteral("QPushButton { padding: 0px; color: #e74c3c; font-weight: bold; }");

} // namespace

namespace BlacklistRules {

QStringList quickReasons()
{
    return {
        QStringLiteral("业绩巨亏爆雷"),     QStringLiteral("题材被证伪"),     QStringLiteral("股东减持"),
        QStringLiteral("财务造假立案调查"), QStringLiteral("ST风险"),         QStringLiteral("股票被监管"),
        QStringLiteral("股性差庄股"),       QStringLiteral("限售股巨额解禁"), QStringLiteral("涨幅过大")};
}

QString reasonProblem(const QString &reason)
{
    if (reason.size() < ShortestReason)
        return QStringLiteral("原因至少需要3个字");
    if (reason.size() > LongestReason)
        return QStringLiteral("原因最多20个字");
    return {};
}

QString counterText(int typed)
{
    return QStringLiteral("已输入：%1 字").arg(typed);
}

QString counterStyle(int typed)
{
    return QStringLiteral("QLabel { color: %1; font-size: 16px; }")
        .arg(QLatin1String(typed < ShortestReason ? "#e74c3c" : "#27ae60"));
}

QString shownReason(const QJsonObject &check)
{
    const QString own = check.value(QLatin1String("custom_reason")).toString();
    return own.isEmpty() ? check.value(QLatin1String("reason_text")).toString() : own;
}

QString stockText(const QString &name, const QString &code)
{
    return hasName(name, code) ? QStringLiteral("%1(%2)").arg(name, code) : code;
}

QString dialogHeading(const QString &name, const QString &code)
{
    return QStringLiteral("股票：") +
           (hasName(name, code) ? QStringLiteral("%1 (%2)").arg(name, code) : code);
}

QString removalQuestion(const QString &name, const QString &code, const QString &reason)
{
    return QStringLiteral("股票 %1 已在黑名单中\n\n原因：%2\n\n是否要从黑名单中移除？")
        .arg(stockText(name, code), reason);
}

LabelContent listedName(const QString &name, const QString &code, const QString &reason,
                        const StockRenderSettings &settings)
{
    const QString badge =
        QStringLiteral("<span style='background-color: #e74c3c; color: white; padding: 2px 6px; "
                       "border-radius: 3px; font-size: %1pt; font-weight: bold; margin-right: 5px;'>"
                       "⚠️黑名单</span>")
            .arg(settings.stockCodeNameFontSize - BadgeSmaller);
    const QString shown = (hasName(name, code) ? name : code).toHtmlEscaped();
    QString html = QStringLiteral("<a href=\"search:%2\" style=\"color: %3; text-decoration: none; "
                                  "font-weight: bold; font-size: %4pt;\">%2</a>%1")
                       .arg(badge, shown, StockRendering::getMarketColor(code, settings),
                            QString::number(settings.stockCodeNameFontSize));
    if (hasName(name, code))
        html += QLatin1Char(' ') + code.toHtmlEscaped();
    return {html, QString(), reasonToolTip(reason)};
}

LabelContent unlistedName(const QString &name, const QString &code, const StockRenderSettings &settings)
{
    if (!hasName(name, code))
        return StockRendering::nonStockName(code, settings);
    return {StockRendering::stockLink(name, code, settings), QString(), {}};
}

LabelContent listedButton(const QString &reason)
{
    return {QStringLiteral("移"), redButtonStyle, reasonToolTip(reason)};
}

LabelContent unlistedButton()
{
    return {QStringLiteral("黑"), plainButtonStyle, QStringLiteral("黑名单管理")};
}

QString failureStyle()
{
    return statusStyle("#e74c3c");
}

QString checkingText()
{
    return QStringLiteral("正在检查黑名单状态...");
}

QString progressStyle()
{
    return statusStyle("#3498db");
}

QString successStyle()
{
    return statusStyle("#27ae60");
}

} // namespace BlacklistRules
