#include "service/Options.h"
#include "service/Service.h"

#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

/// Lets the process hold as many sockets as the system gives it: a request takes three of them.
void raiseDescriptorLimit()
{
    rlimit limit{};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 8192);
    // Where it is refused the usual limit does; the relay then takes fewer connections.
    static_cast<void>(setrlimit(RLIMIT_NOFILE, &limit));
}

/// Runs the service until SIGTERM or SIGINT.
int run(const service::Options &options)
{
    std::signal(SIGPIPE, SIG_IGN);
    raiseDescriptorLimit();

    service::Service service(options);
    // Blocked ahead of the first thread, so that every thread inherits it and the signal waits for sigwait;
    // but no earlier, as a long history is written before and must not outlive a signal.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    const int port = service.start(options);
    std::printf("larkspire-service listening on http://127.0.0.1:%d\n", port);
    std::fflush(stdout);

    int signal = 0;
    sigwait(&ending, &signal);
    service.stop();
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    try {
        const service::Options options =
            service::parseOptions(std::vector<std::string>(argv + 1, argv + argc));
        if (options.wantsHelp) {
            std::fputs(service::helpText().c_str(), stdout);
            return 0;
        }
        return run(options);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "larkspire-service: %s\n", error.what());
        return 1;
    }
}
