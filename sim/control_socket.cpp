#include "sim/control_socket.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace lumora::sim {

namespace {

std::string failure(const std::string& what) {
    return what + ": " + std::strerror(errno);
}

void send_line(int fd, std::string line) {
    line.push_back('\n');
    std::size_t off = 0;
    while (off < line.size()) {
        const ssize_t n = ::send(fd, line.data() + off, line.size() - off, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (n <= 0) return; // a client that stops reading loses its answers, nothing more
        off += static_cast<std::size_t>(n);
    }
}

} // namespace

ControlSocket::~ControlSocket() {
    for (const auto& [fd, buffer] : clients_)
        ::close(fd);
    if (listener_ >= 0) {
        ::close(listener_);
        ::unlink(path_.c_str());
    }
}

std::string ControlSocket::listen(const std::string& path) {
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    if (path.size() >= sizeof addr.sun_path) return "control socket path is too long: " + path;
    std::memcpy(addr.sun_path, path.c_str(), path.size() + 1);

    struct stat st {};
    if (::lstat(path.c_str(), &st) == 0) {
        if (!S_ISSOCK(st.st_mode)) return path + " exists and is not a socket; not replacing it";
        ::unlink(path.c_str());
    }
    listener_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (listener_ < 0) return failure("socket");
    if (::bind(listener_, reinterpret_cast<const sockaddr*>(&addr), sizeof addr) != 0)
        return failure("bind " + path);
    path_ = path;
    if (::listen(listener_, 8) != 0) return failure("listen " + path);
    return {};
}

void ControlSocket::add_to(std::vector<pollfd>& fds) const {
    if (listener_ < 0) return;
    fds.push_back(pollfd{listener_, POLLIN, 0});
    for (const auto& [fd, buffer] : clients_)
        fds.push_back(pollfd{fd, POLLIN, 0});
}

void ControlSocket::serve(const std::vector<pollfd>& fds, const Handler& handler) {
    std::vector<int> gone;
    for (const pollfd& p : fds) {
        if (p.revents == 0) continue;
        if (p.fd == listener_) {
            accept_client();
        } else if (clients_.count(p.fd) != 0 && !read_client(p.fd, handler)) {
            gone.push_back(p.fd);
        }
    }
    for (int fd : gone) {
        ::close(fd);
        clients_.erase(fd);
    }
}

void ControlSocket::accept_client() {
    const int fd = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (fd >= 0) clients_[fd];
}

bool ControlSocket::read_client(int fd, const Handler& handler) {
    char buf[1024];
    const ssize_t n = ::recv(fd, buf, sizeof buf, 0);
    if (n < 0 && (errno == EINTR || errno == EAGAIN)) return true;
    if (n <= 0) {
        const std::string last = clients_[fd].rest();
        if (!last.empty()) send_line(fd, handler(last));
        return false;
    }
    for (const std::string& line : clients_[fd].add(buf, static_cast<std::size_t>(n)))
        send_line(fd, handler(line));
    return true;
}

} // namespace lumora::sim
