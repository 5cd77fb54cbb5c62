// How long the program takes from the start of its process to the constructed main window, and how much
// memory it holds then, beside an empty Qt Widgets program measured in turn with it. Both are whole processes
// that end at the point where the event loop would begin.

#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

namespace {

struct Run
{
    double seconds = 0;
    double peakMebibytes = 0;
};

Run runOnce(const char *program)
{
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
#ifdef LAUNCHER
        execlp(LAUNCHER, LAUNCHER, program, static_cast<char *>(nullptr));
#else
        execl(program, program, static_cast<char *>(nullptr));
#endif
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) ||
        WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "%s did not come up\n", program);
        std::exit(1);
    }
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    return {taken.count(), double(usage.ru_maxrss) / 1024.0};
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void startToConstructedWindow(benchmark::State &state)
{
    std::vector<double> empty;
    std::vector<double> larkspire;
    std::vector<double> emptyMemory;
    std::vector<double> larkspireMemory;
    runOnce(EMPTY_PROGRAM);
    runOnce(LARKSPIRE_PROGRAM);
    for (auto iteration : state) {
        static_cast<void>(iteration);
        const Run yardstick = runOnce(EMPTY_PROGRAM);
        const Run measured = runOnce(LARKSPIRE_PROGRAM);
        empty.push_back(yardstick.seconds * 1000);
        larkspire.push_back(measured.seconds * 1000);
        emptyMemory.push_back(yardstick.peakMebibytes);
        larkspireMemory.push_back(measured.peakMebibytes);
        state.SetIterationTime(measured.seconds);
    }
    state.counters["empty_ms"] = median(empty);
    state.counters["larkspire_ms"] = median(larkspire);
    state.counters["ratio"] = median(larkspire) / median(empty);
    state.counters["empty_MiB"] = median(emptyMemory);
    state.counters["larkspire_MiB"] = median(larkspireMemory);
}

} // namespace

BENCHMARK(startToConstructedWindow)->UseManualTime()->Iterations(15)->Unit(benchmark::kMillisecond);

int main(int argc, char **argv)
{
    // A home of their own for the programs measured: no settings of the user's, and no login.
    const std::filesystem::path home =
        std::filesystem::temp_directory_path() / ("startup-" + std::to_string(getpid()));
    for (const char *variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_CACHE_HOME", "TMPDIR"}) {
        const std::filesystem::path folder = home / variable;
        std::filesystem::create_directories(folder);
        setenv(variable, folder.c_str(), 1);
    }
    // The system's speech service takes anything from nothing to seconds to come up; that time is not the
    // program's.
    setenv("SPEECHD_CMD", "/bin/false", 1);
    setenv("SPEECHD_ADDRESS", ("unix_socket:" + (home / "none").string()).c_str(), 1);
    if (std::getenv("DISPLAY") == nullptr)
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    std::filesystem::remove_all(home);
    return 0;
}
