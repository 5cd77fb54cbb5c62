// How much a tick costs that finds the same stock as the tick before, beyond the system call that it cannot
// do without; and what attaching costs on a machine with many processes. The trading programs are the native
// stand-ins. Counters of the ticks: "ns", processor time of a tick in nanoseconds; "ratio", the same divided
// by the time of the bare calls of process_vm_readv that fetch the same bytes; "allocations", blocks from the
// heap per tick. Counters of attaching: "ms", processor time in milliseconds; "ratio", the same divided by
// the time of reading nothing but the command line of every process. What is compared takes turns inside one
// loop, whose own time means nothing; the counters of time are the median of all turns.

#include "AllocationCounter.h"
#include "linkage/ProcessUtils.h"
#include "program/Layout.h"

#include <QProcess>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <memory>
#include <string>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Processor time of this thread in nanoseconds: what other programs use does not count.
std::int64_t processorTime()
{
    timespec time = {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    constexpr std::int64_t nanosecondsPerSecond = 1000000000;
    return time.tv_sec * nanosecondsPerSecond + time.tv_nsec;
}

double median(std::vector<double> values)
{
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// A stand-in that is up and shows 600519.
class TradingProgram final
{
public:
    explicit TradingProgram(const char *program)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        m_process.setProcessEnvironment(environment);
        m_process.start(QString::fromUtf8(program), {QStringLiteral("--end-with-input")});
        QByteArray output;
        while (!output.contains("ready ")) {
            if (!m_process.waitForReadyRead())
                qFatal("%s did not start", program);
            output += m_process.readAllStandardOutput();
        }
    }
    ~TradingProgram()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(TradingProgram)

    quint32 pid() const { return quint32(m_process.processId()); }

private:
    QProcess m_process;
};

/// Idle processes, so many that the machine has at least `wanted` in all.
class Crowd final
{
public:
    explicit Crowd(int wanted)
    {
        for (int missing = wanted - processCount(); missing > 0; --missing) {
            const pid_t pid = ::fork();
            if (pid == 0) {
                ::prctl(PR_SET_PDEATHSIG, SIGKILL);
                for (;;)
                    ::pause();
            }
            m_processes.push_back(pid);
        }
    }
    ~Crowd()
    {
        for (const pid_t pid : m_processes) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
    }
    Q_DISABLE_COPY_MOVE(Crowd)

    static int processCount()
    {
        int count = 0;
        const std::unique_ptr<DIR, int (*)(DIR *)> folder(::opendir("/proc"), ::closedir);
        while (const dirent *entry = ::readdir(folder.get()))
            count += entry->d_name[0] >= '0' && entry->d_name[0] <= '9' ? 1 : 0;
        return count;
    }

private:
    std::vector<pid_t> m_processes;
};

/// The bytes that a tick fetches, as a bare call.
void fetch(benchmark::State &state, quint32 pid, std::uint64_t address, std::size_t size)
{
    char buffer[8];
    const iovec local = {buffer, size};
    const iovec remote = {reinterpret_cast<void *>(address), size}; // NOLINT(performance-no-int-to-ptr)
    if (::process_vm_readv(pid_t(pid), &local, 1, &remote, 1, 0) != ssize_t(size))
        state.SkipWithError("the bare call failed");
    benchmark::DoNotOptimize(buffer);
}

/// Where the stand-in keeps its text. Only the bare calls need to know: they are to fetch the same bytes.
std::uint64_t addressOf(PlatformOperations &operations, quint32 pid, const char *module, std::uint32_t offset,
                        bool isPointer)
{
    const ProcessHandle process = operations.openProcess(pid, ProcessAccess::QueryAndRead);
    std::uint32_t needed = 0;
    operations.listModules(process, ModuleFilter::Modules64Bit, nullptr, 0, needed);
    std::vector<std::uint64_t> bases(needed / sizeof(std::uint64_t));
    operations.listModules(process, ModuleFilter::Modules64Bit, bases.data(), needed, needed);
    std::uint64_t address = 0;
    for (const std::uint64_t base : bases) {
        if (address == 0 && operations.moduleBaseName(process, base) == module)
            address = base + offset;
    }
    std::uint32_t pointer = 0;
    if (isPointer && operations.readMemory(process, address, &pointer, sizeof(pointer), nullptr))
        address = pointer;
    operations.closeProcess(process);
    return address;
}

enum Programs
{
    TdxAlone,
    ThsAlone,
    Both
};

void linkage_tick(benchmark::State &state, Programs programs)
{
    const bool withTdx = programs != ThsAlone;
    const bool withThs = programs != TdxAlone;
    const TradingProgram tdx(STANDIN_TDXW);
    const TradingProgram ths(STANDIN_HEXIN);
    const auto operations = PlatformOperations::forReading();
    const std::uint64_t tdxAddress =
        addressOf(*operations, tdx.pid(), "Viewthem64.dll", Layout::tdxCodeOffset, false);
    const std::uint64_t thsAddress =
        addressOf(*operations, ths.pid(), "hexin.exe", Layout::thsPointerOffset, true);

    ProcessUtils utils(*operations);
    utils.tdxPid = tdx.pid();
    utils.thsPid = ths.pid();
    utils.setTdxOffset(QString::number(Layout::tdxCodeOffset, 16));
    utils.setThsOffset(QString::number(Layout::thsPointerOffset, 16));
    QString tdxCode;
    QString thsCode;
    if (!utils.readTdxCode(tdxCode) || !utils.readThsCode(thsCode) || tdxCode != QLatin1String("600519") ||
        thsCode != QLatin1String("600519")) {
        state.SkipWithError("the stand-ins cannot be read");
        return;
    }

    constexpr int ticksPerTurn = 100;
    std::vector<double> ratios;
    std::vector<double> nanoseconds;
    std::uint64_t allocations = 0;
    for (auto _ : state) {
        const std::int64_t start = processorTime();
        for (int tick = 0; tick < ticksPerTurn; ++tick) {
            if (withTdx)
                fetch(state, tdx.pid(), tdxAddress, 6);
            if (withThs)
                fetch(state, ths.pid(), thsAddress, 8);
        }
        const std::int64_t middle = processorTime();
        const std::uint64_t before = AllocationCounter::count();
        bool success = true;
        for (int tick = 0; tick < ticksPerTurn; ++tick) {
            if (withTdx)
                success = utils.readTdxCode(tdxCode) && success;
            if (withThs)
                success = utils.readThsCode(thsCode) && success;
        }
        allocations += AllocationCounter::count() - before;
        const std::int64_t end = processorTime();
        if (!success)
            state.SkipWithError("a tick failed");
        ratios.push_back(double(end - middle) / double(middle - start));
        nanoseconds.push_back(double(end - middle) / ticksPerTurn);
    }
    state.counters["allocations"] = double(allocations) / double(ratios.size() * ticksPerTurn);
    state.counters["ns"] = median(nanoseconds);
    state.counters["ratio"] = median(ratios);
}

/// What no walk through the processes can do without: reading the command line of each.
void readCommandLines()
{
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(::opendir("/proc"), ::closedir);
    while (const dirent *entry = ::readdir(folder.get())) {
        if (entry->d_name[0] < '0' || entry->d_name[0] > '9')
            continue;
        const std::string path = std::string(entry->d_name) + "/cmdline";
        const int file = ::openat(::dirfd(folder.get()), path.c_str(), O_RDONLY | O_CLOEXEC);
        char commandLine[4096];
        benchmark::DoNotOptimize(::read(file, commandLine, sizeof(commandLine)));
        ::close(file);
    }
}

/// Attaching by name, as the first tick after a start does. The stand-ins come last in the list of processes,
/// so the whole list is walked.
void attach(benchmark::State &state, bool isTdx, int processes)
{
    const Crowd crowd(processes);
    const TradingProgram tdx(STANDIN_TDXW);
    const TradingProgram ths(STANDIN_HEXIN);
    const auto operations = PlatformOperations::forReading();
    std::vector<double> ratios;
    std::vector<double> milliseconds;
    for (auto _ : state) {
        const std::int64_t start = processorTime();
        readCommandLines();
        const std::int64_t middle = processorTime();
        ProcessUtils utils(*operations);
        if (!(isTdx ? utils.attachTdx(0) : utils.attachThs(0)))
            state.SkipWithError("the stand-ins cannot be attached to");
        const std::int64_t end = processorTime();
        ratios.push_back(double(end - middle) / double(middle - start));
        constexpr double nanosecondsPerMillisecond = 1e6;
        milliseconds.push_back(double(end - middle) / nanosecondsPerMillisecond);
    }
    state.counters["ms"] = median(milliseconds);
    state.counters["processes"] = Crowd::processCount();
    state.counters["ratio"] = median(ratios);
}

BENCHMARK_CAPTURE(linkage_tick, tdx, TdxAlone);
BENCHMARK_CAPTURE(linkage_tick, ths, ThsAlone);
BENCHMARK_CAPTURE(linkage_tick, both, Both);
BENCHMARK_CAPTURE(attach, tdx, true, 500);
BENCHMARK_CAPTURE(attach, ths, false, 500);

} // namespace

BENCHMARK_MAIN();
