#include "service/Options.h"
#include "service/Service.h"

#include <csignal>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

/// Runs the service until SIGTERM or SIGINT.
int run(const service::Options &options)
{
    // Blocked ahead of the first thread, so that every thread inherits it and the signal waits for sigwait.
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    pthread_sigmask(SIG_BLOCK, &ending, nullptr);
    std::signal(SIGPIPE, SIG_IGN);

    service::Service service(options);
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
