// The lumora-sim executable with a real client on its pseudo-terminal, its control channels and log.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <signal.h>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

// Reads exactly n bytes, or fewer if three seconds pass first.
Bytes read_bytes(int fd, std::size_t n) {
    Bytes out;
    while (out.size() < n) {
        pollfd p{fd, POLLIN, 0};
        std::uint8_t buf[256];
        if (::poll(&p, 1, 3000) <= 0) break;
        const ssize_t got = ::read(fd, buf, std::min(sizeof buf, n - out.size()));
        if (got <= 0) break;
        out.insert(out.end(), buf, buf + got);
    }
    return out;
}

std::string read_line(int fd) {
    std::string line;
    for (Bytes b; (b = read_bytes(fd, 1)).size() == 1 && b[0] != '\n';)
        line.push_back(static_cast<char>(b[0]));
    return line;
}

void write_all(int fd, const std::string& s) {
    ASSERT_EQ(::write(fd, s.data(), s.size()), ssize_t(s.size()));
}

class SimProcess : public ::testing::Test {
protected:
    void SetUp() override {
        char tmpl[] = "/tmp/lumora-sim-test-XXXXXX";
        ASSERT_NE(::mkdtemp(tmpl), nullptr);
        dir_ = tmpl;
        int in[2], out[2];
        ASSERT_EQ(::pipe(in), 0);
        ASSERT_EQ(::pipe(out), 0);
        pid_ = ::fork();
        ASSERT_GE(pid_, 0);
        if (pid_ == 0) {
            ::dup2(in[0], STDIN_FILENO);
            ::dup2(out[1], STDOUT_FILENO);
            ::execl(LUMORA_SIM_EXE, LUMORA_SIM_EXE, "--link", (dir_ + "/tty").c_str(), "--control",
                    (dir_ + "/ctl").c_str(), "--log", (dir_ + "/rx.log").c_str(), "--sample", "holmium",
                    static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(in[0]);
        ::close(out[1]);
        stdin_ = in[1];
        stdout_ = out[0];
        tty_path_ = read_line(stdout_);
    }
    void TearDown() override {
        if (pid_ > 0) {
            ::kill(pid_, SIGKILL);
            ::waitpid(pid_, nullptr, 0);
        }
        ::close(stdin_);
        ::close(stdout_);
        for (const char* f : {"/tty", "/ctl", "/rx.log"})
            ::unlink((dir_ + f).c_str());
        ::rmdir(dir_.c_str());
    }

    std::string dir_, tty_path_;
    pid_t pid_ = -1;
    int stdin_ = -1, stdout_ = -1;
};

TEST_F(SimProcess, ServesThePtyAfterAClientLeavesAnswersControlLinesLogsAndCleansUpOnTerm) {
    ASSERT_EQ(tty_path_.rfind("/dev/pts/", 0), 0u) << tty_path_;
    char target[256] = {};
    ASSERT_GT(::readlink((dir_ + "/tty").c_str(), target, sizeof target - 1), 0);
    EXPECT_EQ(tty_path_, target);
    for (const std::string& path : {dir_ + "/tty", tty_path_}) { // the second client after the first left
        const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY);  // raw 8N1 is the simulator's to set
        ASSERT_GE(fd, 0) << path;
        write_all(fd, "\x78");
        EXPECT_EQ(read_bytes(fd, 6), (Bytes{120, 0, 0, 0, 0, 0})) << path;
        ::close(fd);
    }
    std::stringstream log; // written as the bytes come in, not at the end
    log << std::ifstream(dir_ + "/rx.log").rdbuf();
    EXPECT_EQ(log.str().rfind("{\"t\":", 0), 0u);
    EXPECT_NE(log.str().find(",\"rx\":\"78\"}\n{\"t\":"), std::string::npos) << "one line per chunk";

    write_all(stdin_, "state\n\nfault garbage sometimes\n");
    const std::string state = read_line(stdout_);
    EXPECT_NE(state.find("sample=holmium"), std::string::npos) << state;
    EXPECT_NE(state.find("streaming=no"), std::string::npos) << state;
    EXPECT_EQ(read_line(stdout_).rfind("error: ", 0), 0u) << "a blank line has no answer";
    const int sock = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    std::snprintf(addr.sun_path, sizeof addr.sun_path, "%s/ctl", dir_.c_str());
    ASSERT_EQ(::connect(sock, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    write_all(sock, "sample neutral:1\r\nabsorbance 600");
    ::shutdown(sock, SHUT_WR); // the last line has no newline: it is answered at the end
    EXPECT_EQ(read_line(sock), "ok sample neutral:1");
    EXPECT_EQ(read_line(sock), "1.000000");
    ::close(sock);

    int status = -1;
    ::kill(pid_, SIGTERM);
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    struct stat st {};
    EXPECT_NE(::lstat((dir_ + "/tty").c_str(), &st), 0) << "the link, not only what it points to, is gone";
    EXPECT_NE(::lstat((dir_ + "/ctl").c_str(), &st), 0);
}

} // namespace
