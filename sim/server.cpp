#include "sim/server.h"

#include "sim/control_socket.h"
#include "sim/instrument.h"
#include "sim/line_buffer.h"
#include "sim/pty_port.h"
#include "sim/rx_log.h"

#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <memory>
#include <poll.h>
#include <stdexcept>
#include <unistd.h>

namespace lumora::sim {

namespace {

using Clock = std::chrono::steady_clock;

bool blank(const std::string& line) {
    return line.find_first_not_of(" \t\r") == std::string::npos;
}

// Everything the loop owns.
class Session {
public:
    Session(Instrument& inst, PtyPort& port, ControlSocket& socket, RxLog& log)
        : inst_(inst), port_(port), socket_(socket), log_(log), start_(Clock::now()) {}

    void run(int stop_fd);

private:
    double elapsed() const { return std::chrono::duration<double>(Clock::now() - start_).count(); }
    // Brings the instrument up to the wall clock and writes out each reply that is due, one write each.
    void flush() {
        for (const Emission& e : inst_.advance_to(elapsed()))
            port_.write(e.bytes);
    }
    std::string answer(const std::string& line) {
        flush();
        return inst_.control(line);
    }
    void read_port();
    void read_stdin();

    Instrument& inst_;
    PtyPort& port_;
    ControlSocket& socket_;
    RxLog& log_;
    Clock::time_point start_;
    LineBuffer stdin_lines_;
    bool stdin_open_ = true;
};

void Session::run(int stop_fd) {
    const ControlSocket::Handler handler = [this](const std::string& line) {
        return blank(line) ? std::string("error: empty command") : answer(line);
    };
    while (true) {
        flush();
        const double wait = inst_.next_emission_time() - elapsed();
        timespec timeout{};
        if (std::isfinite(wait) && wait > 0.0) {
            timeout.tv_sec = static_cast<time_t>(wait);
            timeout.tv_nsec = static_cast<long>((wait - std::floor(wait)) * 1e9);
        }
        std::vector<pollfd> fds{{stop_fd, POLLIN, 0}, {port_.fd(), POLLIN, 0}};
        if (stdin_open_) fds.push_back(pollfd{STDIN_FILENO, POLLIN, 0});
        socket_.add_to(fds);
        if (::ppoll(fds.data(), fds.size(), std::isfinite(wait) ? &timeout : nullptr, nullptr) < 0) continue;
        if (fds[0].revents != 0) return;
        // Replies due before this input go out first.
        flush();
        if (fds[1].revents != 0) read_port();
        if (stdin_open_ && fds[2].revents != 0) read_stdin();
        socket_.serve(fds, handler);
    }
}

void Session::read_port() {
    const std::vector<std::uint8_t> bytes = port_.read();
    if (bytes.empty()) return;
    inst_.receive(bytes.data(), bytes.size());
    log_.write(inst_.now(), bytes);
    inst_.clear_received_log(); // the log file keeps the record; memory stays bounded
}

void Session::read_stdin() {
    char buf[1024];
    const ssize_t n = ::read(STDIN_FILENO, buf, sizeof buf);
    std::vector<std::string> lines;
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) return;
    if (n > 0) {
        lines = stdin_lines_.add(buf, static_cast<std::size_t>(n));
    } else {
        stdin_open_ = false; // end of input: serve on without it
        lines.push_back(stdin_lines_.rest());
    }
    for (const std::string& line : lines) {
        if (blank(line)) continue;
        std::cout << answer(line) << std::endl;
    }
}

} // namespace

int serve(const CliOptions& options, int stop_fd) {
    std::unique_ptr<Instrument> inst;
    try {
        inst = std::make_unique<Instrument>(options.instrument);
    } catch (const std::invalid_argument& e) {
        std::cerr << "lumora-sim: " << e.what() << "\n";
        return 2;
    }
    PtyPort port;
    ControlSocket socket;
    RxLog log;
    std::string error = port.open();
    if (error.empty() && !options.link.empty()) error = port.link(options.link);
    if (error.empty() && !options.control.empty()) error = socket.listen(options.control);
    if (error.empty() && !options.log.empty()) error = log.open(options.log);
    if (!error.empty()) {
        std::cerr << "lumora-sim: " << error << "\n";
        return 1;
    }
    std::cout << port.slave_path() << std::endl;
    Session(*inst, port, socket, log).run(stop_fd);
    return 0;
}

} // namespace lumora::sim
