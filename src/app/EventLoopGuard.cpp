#include "app/EventLoopGuard.h"

#include <QApplication>
#include <QMessageBox>

#include <exception>

namespace EventLoopGuard {

int exec()
{
    const QString title = QStringLiteral("程序异常");
    try {
        return QApplication::exec();
    } catch (const std::exception &exception) {
        QMessageBox::critical(
            nullptr, title,
            QStringLiteral("程序运行过程中发生异常:\n%1").arg(QString::fromUtf8(exception.what())));
    } catch (...) {
        QMessageBox::critical(nullptr, title, QStringLiteral("程序运行过程中发生未知异常"));
    }
    return 1;
}

} // namespace EventLoopGuard
