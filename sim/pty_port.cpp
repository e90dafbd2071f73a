#include "sim/pty_port.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace lumora::sim {

namespace {
std::string failure(const char* what) {
    return std::string(what) + ": " + std::strerror(errno);
}
} // namespace

PtyPort::~PtyPort() {
    if (!link_path_.empty()) ::unlink(link_path_.c_str());
    if (slave_ >= 0) ::close(slave_);
    if (master_ >= 0) ::close(master_);
}

std::string PtyPort::open() {
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    if (master_ < 0) return failure("posix_openpt");
    if (::grantpt(master_) != 0) return failure("grantpt");
    if (::unlockpt(master_) != 0) return failure("unlockpt");
    const char* name = ::ptsname(master_);
    if (name == nullptr) return failure("ptsname");
    slave_path_ = name;
    slave_ = ::open(name, O_RDWR | O_NOCTTY);
    if (slave_ < 0) return failure("open slave");

    // Raw 8N1 at the line's rate: no echo, no line editing, no translation of any byte.
    termios tio{};
    if (::tcgetattr(slave_, &tio) != 0) return failure("tcgetattr");
    ::cfmakeraw(&tio);
    tio.c_cflag |= CLOCAL | CREAD;
    tio.c_cc[VMIN] = 1;
    tio.c_cc[VTIME] = 0;
    ::cfsetispeed(&tio, B57600);
    ::cfsetospeed(&tio, B57600);
    if (::tcsetattr(slave_, TCSANOW, &tio) != 0) return failure("tcsetattr");

    const int flags = ::fcntl(master_, F_GETFL);
    if (flags < 0 || ::fcntl(master_, F_SETFL, flags | O_NONBLOCK) != 0) return failure("fcntl");
    return {};
}

std::string PtyPort::link(const std::string& path) {
    struct stat st {};
    if (::lstat(path.c_str(), &st) == 0) {
        if (!S_ISLNK(st.st_mode)) return path + " exists and is not a symlink; not replacing it";
        if (::unlink(path.c_str()) != 0) return failure(("unlink " + path).c_str());
    }
    if (::symlink(slave_path_.c_str(), path.c_str()) != 0) return failure(("symlink " + path).c_str());
    link_path_ = path;
    return {};
}

std::vector<std::uint8_t> PtyPort::read() {
    std::vector<std::uint8_t> buf(4096);
    const ssize_t n = ::read(master_, buf.data(), buf.size());
    buf.resize(n > 0 ? static_cast<std::size_t>(n) : 0);
    return buf;
}

bool PtyPort::write(const std::vector<std::uint8_t>& bytes) {
    for (int attempt = 0; attempt < 2; ++attempt) {
        const ssize_t n = ::write(master_, bytes.data(), bytes.size());
        if (n == static_cast<ssize_t>(bytes.size())) return true;
        if (n >= 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) return false;
        ::tcflush(slave_, TCIFLUSH);
    }
    return false;
}

} // namespace lumora::sim
