// lumora-sim: the simulated instrument on a pseudo-terminal.
#include "sim/cli_options.h"
#include "sim/server.h"

#include <csignal>
#include <fcntl.h>
#include <iostream>
#include <stdexcept>
#include <unistd.h>

namespace {

int g_stop_pipe[2] = {-1, -1};

extern "C" void on_stop_signal(int) {
    const char b = 1;
    [[maybe_unused]] const ssize_t n = ::write(g_stop_pipe[1], &b, 1);
}

bool install_signals() {
    if (::pipe2(g_stop_pipe, O_CLOEXEC | O_NONBLOCK) != 0) return false;
    struct sigaction sa {};
    sa.sa_handler = on_stop_signal;
    sigemptyset(&sa.sa_mask);
    for (int sig : {SIGINT, SIGTERM, SIGHUP})
        if (::sigaction(sig, &sa, nullptr) != 0) return false;
    std::signal(SIGPIPE, SIG_IGN);
    return true;
}

} // namespace

int main(int argc, char** argv) {
    lumora::sim::CliOptions options;
    try {
        options = lumora::sim::parse_cli(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::invalid_argument& e) {
        std::cerr << "lumora-sim: " << e.what() << " (try --help)\n";
        return 2;
    }
    if (options.help) {
        std::cout << lumora::sim::usage();
        return 0;
    }
    if (!install_signals()) {
        std::cerr << "lumora-sim: cannot install signal handlers\n";
        return 1;
    }
    // Returning (rather than exiting from the handler) runs the destructors that remove the link and
    // the control socket.
    return lumora::sim::serve(options, g_stop_pipe[0]);
}
