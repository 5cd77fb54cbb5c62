#include "native/StandInWindow.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QThread>
#include <QVBoxLayout>

#include <cstdio>

#include <unistd.h>

namespace {

QLabel *addLabel(QVBoxLayout *layout, const QString &style)
{
    auto *label = new QLabel;
    label->setAlignment(Qt::AlignCenter);
    label->setStyleSheet(style);
    layout->addWidget(label);
    return label;
}

} // namespace

StandInWindow::StandInWindow(TradingProgram &program, TargetMemory &memory)
    : m_program(program), m_memory(memory), m_input(STDIN_FILENO, QSocketNotifier::Read)
{
    setStyleSheet(QStringLiteral("StandInWindow { background: #101216; }"));
    setAttribute(Qt::WA_StyledBackground);
    auto *layout = new QVBoxLayout(this);
    layout->addStretch();
    m_code = addLabel(layout, QStringLiteral("color: #ff5a4f; font-size: 44px; font-weight: 600;"));
    m_name = addLabel(layout, QStringLiteral("color: #f2d75c; font-size: 22px;"));
    m_typed = addLabel(layout, QStringLiteral("color: #8fd3ff; font-size: 18px;"));
    layout->addStretch();
    addLabel(layout, QStringLiteral("color: #7d8590; font-size: 13px;"))
        ->setText(QStringLiteral("输入六位代码打开股票，↑ ↓ 切换，Esc 关闭"));
    resize(360, 240);

    connect(&m_timer, &QTimer::timeout, this, [this] {
        m_program.openNext();
        showProgram();
        reportCode();
    });
    connect(&m_input, &QSocketNotifier::activated, this, &StandInWindow::readInput);
    showProgram();
}

void StandInWindow::start(const QString &code)
{
    m_program.open(code.toStdString());
    showProgram();
    reportCode();
    report(m_program.kind() == TradingProgram::Kind::Tdx ? "ready tdxw.exe" : "ready hexin.exe");
}

void StandInWindow::setTimer(int milliseconds)
{
    if (milliseconds > 0)
        m_timer.start(milliseconds);
    else
        m_timer.stop();
}

void StandInWindow::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Down:
        m_program.openNext();
        break;
    case Qt::Key_Up:
        m_program.openPrevious();
        break;
    case Qt::Key_Backspace:
        m_program.eraseDigit();
        break;
    case Qt::Key_Escape:
        m_program.close();
        break;
    default:
        for (const QChar character : event->text())
            m_program.type(character.toLatin1());
    }
    showProgram();
    reportCode();
}

void StandInWindow::readInput()
{
    char buffer[4096];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof(buffer));
    if (count <= 0) {
        m_input.setEnabled(false);
        if (m_endsWithInput)
            QCoreApplication::quit();
        return;
    }
    m_pending.append(buffer, int(count));
    for (int end = m_pending.indexOf('\n'); end >= 0; end = m_pending.indexOf('\n')) {
        const ControlLine line = ControlLine::parse({m_pending.constData(), std::size_t(end)});
        m_pending.remove(0, end + 1);
        obey(line);
    }
}

void StandInWindow::obey(const ControlLine &line)
{
    switch (line.order) {
    case ControlLine::Order::Open:
        m_program.open(line.text);
        break;
    case ControlLine::Order::Close:
        m_program.close();
        break;
    case ControlLine::Order::Type:
        for (const char digit : line.text)
            m_program.type(digit);
        break;
    case ControlLine::Order::Next:
        m_program.openNext();
        break;
    case ControlLine::Order::Previous:
        m_program.openPrevious();
        break;
    case ControlLine::Order::Timer:
        setTimer(line.milliseconds);
        break;
    case ControlLine::Order::Hang:
        QThread::msleep(std::uint32_t(line.milliseconds));
        break;
    case ControlLine::Order::Crash: // nobody can send to a native program
    case ControlLine::Order::State:
        break;
    case ControlLine::Order::Quit:
        QCoreApplication::quit();
        return;
    case ControlLine::Order::Unknown:
        report("unknown " + QByteArray::fromStdString(line.text));
        return;
    }
    showProgram();
    reportCode();
}

void StandInWindow::showProgram()
{
    m_memory.setText(m_program.memoryText());
    setWindowTitle(QString::fromStdString(m_program.title()));
    m_code->setText(m_program.code().empty() ? QStringLiteral("—")
                                             : QString::fromStdString(m_program.code()));
    m_name->setText(QString::fromStdString(m_program.stockName()));
    m_typed->setText(QString::fromStdString(m_program.typed()));
}

void StandInWindow::report(const QByteArray &line)
{
    std::fputs((line + '\n').constData(), stdout);
    std::fflush(stdout);
}

void StandInWindow::reportCode()
{
    report(m_program.code().empty() ? QByteArray("code")
                                    : "code " + QByteArray::fromStdString(m_program.code()));
}
