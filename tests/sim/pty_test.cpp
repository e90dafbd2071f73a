// The lumora-sim executable with a real client on its pseudo-terminal, its control channels and log.
#include <gtest/gtest.h>

#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sstream>
#include <string>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

using Bytes = std::vector<std::uint8_t>;

// Reads exactly n bytes, or fewer if `seconds` pass first.
Bytes read_bytes(int fd, std::size_t n, double seconds = 3.0) {
    Bytes out;
    while (out.size() < n) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, static_cast<int>(seconds * 1000)) <= 0) break;
        std::uint8_t buf[256];
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

int open_serial(const std::string& path) {
    const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY);
    if (fd < 0) return fd;
    termios tio{};
    ::tcgetattr(fd, &tio);
    ::cfmakeraw(&tio);
    tio.c_cflag = (tio.c_cflag & ~(CSIZE | PARENB | CSTOPB)) | CS8 | CLOCAL | CREAD;
    ::cfsetispeed(&tio, B57600);
    ::cfsetospeed(&tio, B57600);
    ::tcsetattr(fd, TCSANOW, &tio);
    ::tcflush(fd, TCIOFLUSH);
    return fd;
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
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in[0], STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
        for (int fd : {in[0], in[1], out[0], out[1]})
            posix_spawn_file_actions_addclose(&actions, fd);
        std::vector<std::string> args{LUMORA_SIM_EXE,   "--link",      dir_ + "/tty",
                                      "--control",      dir_ + "/ctl", "--log",
                                      dir_ + "/rx.log", "--sample",    "holmium"};
        std::vector<char*> argv;
        for (auto& a : args)
            argv.push_back(a.data());
        argv.push_back(nullptr);
        ASSERT_EQ(::posix_spawn(&pid_, LUMORA_SIM_EXE, &actions, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&actions);
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
    int stop() {
        int status = -1;
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, &status, 0);
        pid_ = -1;
        return status;
    }

    std::string dir_, tty_path_;
    pid_t pid_ = -1;
    int stdin_ = -1, stdout_ = -1;
};

TEST_F(SimProcess, ServesPingAndGotoOnThePseudoTerminalAndSurvivesTheClientClosing) {
    ASSERT_EQ(tty_path_.rfind("/dev/pts/", 0), 0u) << tty_path_;
    char target[256] = {};
    ASSERT_GT(::readlink((dir_ + "/tty").c_str(), target, sizeof target - 1), 0);
    EXPECT_EQ(tty_path_, target);

    int fd = open_serial(dir_ + "/tty");
    ASSERT_GE(fd, 0);
    write_all(fd, "\x78");
    EXPECT_EQ(read_bytes(fd, 6), (Bytes{120, 0, 0, 0, 0, 0}));

    write_all(fd, std::string("\x06\x01\xf4", 3)); // goto 500 nm, where the grating already is
    const Bytes reply = read_bytes(fd, 1 + 6 * 5);
    ASSERT_EQ(reply.size(), 31u);
    EXPECT_EQ(reply[0], 6);
    EXPECT_EQ(Bytes(reply.begin() + 1, reply.begin() + 7), (Bytes{119, 0, 1, 244, 0, 0}));
    EXPECT_EQ(reply[7], 51);
    for (std::size_t at = 13; at < reply.size(); at += 6)
        EXPECT_EQ(reply[at], 68);

    ::close(fd); // the stream goes on with nobody listening
    fd = open_serial(tty_path_);
    ASSERT_GE(fd, 0);
    write_all(fd, "\x78");
    Bytes frames = read_bytes(fd, 24);
    ::close(fd);
    bool ping = false;
    for (std::size_t at = 0; at + 6 <= frames.size(); at += 6)
        ping = ping || frames[at] == 120;
    EXPECT_TRUE(ping);

    std::ifstream log(dir_ + "/rx.log");
    std::stringstream text;
    text << log.rdbuf();
    EXPECT_NE(text.str().find("\"rx\":\"78\"}"), std::string::npos);
    EXPECT_NE(text.str().find("\"rx\":\"0601f4\"}"), std::string::npos);
    EXPECT_EQ(text.str().rfind("{\"t\":", 0), 0u);
}

TEST_F(SimProcess, AnswersControlLinesOnStdinAndSocketAndCleansUpOnTerm) {
    write_all(stdin_, "state\n\nfault garbage sometimes\n");
    const std::string state = read_line(stdout_);
    EXPECT_NE(state.find("sample=holmium"), std::string::npos) << state;
    EXPECT_NE(state.find("streaming=no"), std::string::npos) << state;
    EXPECT_EQ(read_line(stdout_).rfind("error: ", 0), 0u);

    const int sock = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un addr{};
    addr.sun_family = AF_UNIX;
    std::strcpy(addr.sun_path, (dir_ + "/ctl").c_str());
    ASSERT_EQ(::connect(sock, reinterpret_cast<sockaddr*>(&addr), sizeof addr), 0);
    write_all(sock, "sample neutral:1\r\nabsorbance 600\n");
    EXPECT_EQ(read_line(sock), "ok sample neutral:1");
    EXPECT_EQ(read_line(sock), "1.000000");
    ::close(sock);

    const int status = stop();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    EXPECT_NE(::access((dir_ + "/tty").c_str(), F_OK), 0);
    EXPECT_NE(::access((dir_ + "/ctl").c_str(), F_OK), 0);
}

} // namespace
