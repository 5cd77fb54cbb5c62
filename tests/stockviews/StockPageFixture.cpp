#include "stockviews/StockPageFixture.h"

#include "settings/ConfigManager.h"
#include "stockclient/StockApiConfig.h"
#include "support/IsolatedHome.h"
#include "support/WaitUntil.h"

#include <QCheckBox>
#include <QLabel>
#include <QNetworkReply>
#include <QTimer>
#include <QVBoxLayout>
#include <QtEndian>

#include <algorithm>

namespace {

constexpr std::uint64_t tdxBase = 0x180000000;
constexpr std::uint64_t thsBase = 0x140000000;
constexpr std::uint32_t thsTextAddress = 0xFEDC0010;

} // namespace

const QString StockPageFixture::tdxOffset = QStringLiteral("1A20");
const QString StockPageFixture::thsOffset = QStringLiteral("1A2B3C");

StockPageFixture::StockPageFixture()
    : m_nextReading(std::make_unique<FakePlatform>()), m_nextSending(std::make_unique<FakePlatform>())
{
    clearSettings();
    ConfigManager *settings = ConfigManager::instance();
    settings->setApiServerUrl(service.url());
    settings->setSessionToken(QStringLiteral("stored-token"));
    StockApiConfig *config = StockApiConfig::instance();
    config->refreshFromSettings();
    config->setTdxOffset(tdxOffset);
    config->setThsOffset(thsOffset);
    reading = m_nextReading.get();
    sending = m_nextSending.get();
}

StockPageFixture::~StockPageFixture() = default;

void StockPageFixture::openPage()
{
    StockAnalysisWidget::Surroundings surroundings;
    surroundings.reading = std::move(m_nextReading);
    surroundings.sending = std::move(m_nextSending);
    surroundings.clock = [this] { return now; };
    window = std::make_unique<QWidget>();
    page = new StockAnalysisWidget(std::move(surroundings), window.get());
    auto *layout = new QVBoxLayout(window.get());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(page);
    window->show();
}

void StockPageFixture::openInTdx(const QByteArray &code, quint32 pid, const QString &folder)
{
    FakePlatform::Process process;
    process.pid = pid;
    process.name = QStringLiteral("tdxw.exe");
    process.path = QStringLiteral("C:\\%1\\tdxw.exe")
                       .arg(folder.isEmpty() ? QStringLiteral("new_tdx%1").arg(pid) : folder);
    process.modules = {{tdxBase, QStringLiteral("Viewthem64.dll"), false}};
    process.memory.insert(tdxBase + tdxOffset.toUInt(nullptr, 16), code);
    for (FakePlatform::Process &running : reading->processes) {
        if (running.pid == pid) {
            running = process;
            return;
        }
    }
    reading->processes.append(process);
}

void StockPageFixture::openInThs(const QByteArray &code, quint32 pid)
{
    QByteArray pointer(sizeof(thsTextAddress), '\0');
    qToLittleEndian(thsTextAddress, pointer.data());
    FakePlatform::Process process;
    process.pid = pid;
    process.name = QStringLiteral("hexin.exe");
    process.path = QStringLiteral("D:\\ths%1\\hexin.exe").arg(pid);
    process.modules = {{thsBase, QStringLiteral("hexin.exe"), false}};
    process.memory.insert(thsBase + thsOffset.toUInt(nullptr, 16), pointer);
    process.memory.insert(thsTextAddress, QByteArray(1, '\x11') + code + QByteArray(1, '\0'));
    for (FakePlatform::Process &running : reading->processes) {
        if (running.pid == pid) {
            running = process;
            return;
        }
    }
    reading->processes.append(process);
}

void StockPageFixture::closeTdx(quint32 pid)
{
    QList<FakePlatform::Process> &processes = reading->processes;
    processes.erase(std::remove_if(processes.begin(), processes.end(),
                                   [pid](const FakePlatform::Process &process) {
                                       return process.name == QLatin1String("tdxw.exe") &&
                                              (pid == 0 || process.pid == pid);
                                   }),
                    processes.end());
}

void StockPageFixture::tick()
{
    QMetaObject::invokeMethod(page, "onStockCodeChanged");
}

void StockPageFixture::switchOn()
{
    find<QCheckBox>("autoRefreshCheckBox")->click();
}

void StockPageFixture::openPageOn(const QByteArray &code)
{
    openInTdx(code);
    openPage();
    switchOn();
    follow(code);
}

void StockPageFixture::follow(const QByteArray &code)
{
    openInTdx(code);
    tick();
    QVERIFY2(waitUntil([&] { return status() == updated(code); }), qPrintable(status()));
}

QString StockPageFixture::updated(const QByteArray &code)
{
    return QStringLiteral("已更新 %1 综合信息").arg(QString::fromLatin1(code));
}

void StockPageFixture::settle() const
{
    const auto isSettled = [this] {
        const QList<QNetworkReply *> replies = page->findChildren<QNetworkReply *>();
        return std::all_of(replies.begin(), replies.end(),
                           [](const QNetworkReply *reply) { return reply->isFinished(); });
    };
    QVERIFY(waitUntil(isSettled));
}

QString StockPageFixture::text(const char *label) const
{
    return find<QLabel>(label)->text();
}

QString StockPageFixture::style(const char *label) const
{
    return find<QLabel>(label)->styleSheet();
}
