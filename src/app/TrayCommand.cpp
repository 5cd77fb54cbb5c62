#include "app/TrayCommand.h"

TrayCommand trayCommandForText(const QString &text)
{
    static const struct
    {
        QString text;
        TrayCommand command;
    } entries[] = {
        {QStringLiteral("显示主窗口"), TrayCommand::ShowWindow},
        {QStringLiteral("Show"), TrayCommand::ShowWindow},
        {QStringLiteral("隐藏窗口"), TrayCommand::HideWindow},
        {QStringLiteral("Hide"), TrayCommand::HideWindow},
        {QStringLiteral("关键词管理"), TrayCommand::KeywordManager},
        {QStringLiteral("Keywords"), TrayCommand::KeywordManager},
        {QStringLiteral("设置"), TrayCommand::Settings},
        {QStringLiteral("Settings"), TrayCommand::Settings},
        {QStringLiteral("关于"), TrayCommand::About},
        {QStringLiteral("About"), TrayCommand::About},
        {QStringLiteral("退出"), TrayCommand::Exit},
        {QStringLiteral("Exit"), TrayCommand::Exit},
        {QStringLiteral("置顶"), TrayCommand::ToggleTopMost},
        {QStringLiteral("取消置顶"), TrayCommand::ToggleTopMost},
        {QStringLiteral("Always on Top"), TrayCommand::ToggleTopMost},
        {QStringLiteral("Remove Always on Top"), TrayCommand::ToggleTopMost},
    };
    for (const auto &entry : entries) {
        if (entry.text == text)
            return entry.command;
    }
    return TrayCommand::None;
}
