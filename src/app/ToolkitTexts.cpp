#include "app/ToolkitTexts.h"

#include <QHash>

namespace {

struct Text
{
    const char *source;
    const char *chinese;
};

struct Context
{
    const char *name;
    QList<Text> texts;
};

using Texts = QHash<QByteArray, QHash<QByteArray, QString>>;

QList<Text> editMenu()
{
    return {{"&Undo", "撤销(&U)"},  {"&Redo", "重做(&R)"},
            {"Cu&t", "剪切(&T)"},   {"&Copy", "复制(&C)"},
            {"&Paste", "粘贴(&P)"}, {"Delete", "删除"},
            {"Select All", "全选"}, {"Copy &Link Location", "复制链接地址(&L)"}};
}

QList<Text> buttons()
{
    return {{"OK", "确定"},           {"Save", "保存"},
            {"Save All", "全部保存"}, {"Open", "打开"},
            {"&Yes", "是(&Y)"},       {"Yes to &All", "全部是(&A)"},
            {"&No", "否(&N)"},        {"N&o to All", "全部否(&O)"},
            {"Abort", "中止"},        {"Retry", "重试"},
            {"Ignore", "忽略"},       {"Close", "关闭"},
            {"Cancel", "取消"},       {"Discard", "放弃"},
            {"Help", "帮助"},         {"Apply", "应用"},
            {"Reset", "重置"},        {"Restore Defaults", "恢复默认"}};
}

QList<Text> fileDialog()
{
    return {{"Look in:", "查找范围:"},
            {"Back", "后退"},
            {"Go back", "后退"},
            {"Forward", "前进"},
            {"Go forward", "前进"},
            {"Parent Directory", "上级文件夹"},
            {"Go to the parent directory", "转到上级文件夹"},
            {"Create New Folder", "新建文件夹"},
            {"Create a New Folder", "新建文件夹"},
            {"List View", "列表"},
            {"Change to list view mode", "显示为列表"},
            {"Detail View", "详细信息"},
            {"Change to detail view mode", "显示详细信息"},
            {"Sidebar", "侧栏"},
            {"List of places and bookmarks", "常用位置"},
            {"Files", "文件"},
            {"Files of type:", "文件类型:"},
            {"File &name:", "文件名(&N):"},
            {"Directory:", "文件夹:"},
            {"Directories", "文件夹"},
            {"All Files (*)", "所有文件 (*)"},
            {"&Open", "打开(&O)"},
            {"&Choose", "选择(&C)"},
            {"&Save", "保存(&S)"},
            {"Open", "打开"},
            {"Save As", "另存为"},
            {"Find Directory", "查找文件夹"},
            {"Show ", "显示 "},
            {"Recent Places", "最近的位置"},
            {"Remove", "移除"},
            {"&Rename", "重命名(&R)"},
            {"&Delete", "删除(&D)"},
            {"Delete", "删除"},
            {"Show &hidden files", "显示隐藏文件(&H)"},
            {"&New Folder", "新建文件夹(&N)"},
            {"New Folder", "新建文件夹"},
            {"My Computer", "我的电脑"},
            {"Drive", "驱动器"},
            {"File", "文件"},
            {"File Folder", "文件夹"},
            {"Folder", "文件夹"},
            {"%1 File", "%1 文件"},
            {"%1 already exists.\nDo you want to replace it?", "%1 已存在。\n要替换它吗？"},
            {"%1\nFile not found.\nPlease verify the correct file name was given.",
             "%1\n找不到文件。\n请检查文件名是否正确。"},
            {"%1\nDirectory not found.\nPlease verify the correct directory name was given.",
             "%1\n找不到文件夹。\n请检查文件夹名是否正确。"},
            {"'%1' is write protected.\nDo you want to delete it anyway?", "“%1”是只读的。\n仍要删除吗？"},
            {"Are you sure you want to delete '%1'?", "确定要删除“%1”吗？"},
            {"Could not delete directory.", "无法删除文件夹。"}};
}

Texts read(const QList<Context> &contexts)
{
    Texts all;
    for (const Context &context : contexts) {
        QHash<QByteArray, QString> &texts = all[context.name];
        for (const Text &text : context.texts)
            texts.insert(text.source, QString::fromUtf8(text.chinese));
    }
    return all;
}

const Texts &allTexts()
{
    static const Texts all = read({
        {"QPlatformTheme", buttons()},
        {"QLineEdit", editMenu()},
        {"QWidgetTextControl", editMenu()},
        {"QAbstractSpinBox",
         {{"&Select All", "全选(&S)"}, {"&Step up", "增加(&S)"}, {"Step &down", "减少(&D)"}}},
        {"QScrollBar",
         {{"Scroll here", "滚动到此处"},
          {"Top", "顶部"},
          {"Bottom", "底部"},
          {"Page up", "上一页"},
          {"Page down", "下一页"},
          {"Scroll up", "向上滚动"},
          {"Scroll down", "向下滚动"},
          {"Left edge", "最左"},
          {"Right edge", "最右"},
          {"Page left", "向左一页"},
          {"Page right", "向右一页"},
          {"Scroll left", "向左滚动"},
          {"Scroll right", "向右滚动"}}},
        {"QFileDialog", fileDialog()},
        {"QFileSystemModel",
         {{"Name", "名称"},
          {"Size", "大小"},
          {"Type", "类型"},
          {"Date Modified", "修改时间"},
          {"My Computer", "我的电脑"},
          {"Computer", "计算机"},
          {"%1 bytes", "%1 字节"},
          {"Invalid filename", "文件名无效"},
          {"<b>The name \"%1\" cannot be used.</b><p>Try using another name, with fewer characters or no "
           "punctuations marks.",
           "<b>不能使用名称“%1”。</b><p>请换一个更短或不含标点的名称。"}}},
        {"QColorDialog", {{"Cursor at %1, %2\nPress ESC to cancel", "光标位于 %1, %2\n按 ESC 取消"}}},
    });
    return all;
}

} // namespace

QString ToolkitTexts::translate(const char *context, const char *sourceText, const char *disambiguation,
                                int n) const
{
    Q_UNUSED(disambiguation)
    Q_UNUSED(n)
    const Texts &all = allTexts();
    const auto texts = all.constFind(context);
    return texts == all.constEnd() ? QString() : texts->value(sourceText);
}

bool ToolkitTexts::isEmpty() const
{
    return false;
}
