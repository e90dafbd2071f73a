// The port's receive event and Input, on the in-memory pipe and for real on a pseudo-terminal
// through QSerialPort.
#include "platform/comm_port.h"
#include "support/wait.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

using namespace lumora;

namespace {

struct memory_port {
    memory_backend* pipe;
    comm_port port;
    memory_port() : memory_port(std::make_unique<memory_backend>()) {}
    explicit memory_port(std::unique_ptr<memory_backend> b) : pipe(b.get()), port(std::move(b)) {}
};

} // namespace

TEST(CommPortThreshold, EachReceiveEventHandsOverOneReplyCutAtTheThreshold) {
    memory_port m;
    ASSERT_EQ(m.port.setPortOpen(true), QString());
    std::vector<QByteArray> got;
    QObject::connect(&m.port, &comm_port::OnComm, [&] {
        EXPECT_EQ(m.port.CommEvent(), comm_port::comEvReceive);
        got.push_back(m.port.Input());
        // A one-byte reply announces six-byte replies behind it.
        if (got.back().size() == 1) m.port.RThreshold = 6;
    });
    m.port.RThreshold = 6;
    m.pipe->inject(QByteArray::fromHex("4400"));
    m.pipe->inject(QByteArray::fromHex("5b8d"));
    EXPECT_TRUE(got.empty()) << "4 of 6 bytes must not raise the event";
    m.pipe->inject(QByteArray::fromHex("0000ff"));
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0], QByteArray::fromHex("44005b8d0000"));
    EXPECT_EQ(m.port.InBufferCount(), 1) << "the byte behind the reply waits for its own";
    EXPECT_EQ(m.port.counts().joined, 1u);
    EXPECT_EQ(m.port.counts().cut, 1u);

    // Silence: the incomplete piece goes, counted, and the next bytes start in step.
    EXPECT_TRUE(m.port.drop_incomplete());
    EXPECT_EQ(m.port.counts().dropped, 1u);
    EXPECT_EQ(m.port.counts().dropped_bytes, 1u);
    got.clear();
    m.port.RThreshold = 1;
    m.pipe->inject(QByteArray::fromHex("05"
                                       "66000102000066000103000066"));
    ASSERT_EQ(got.size(), 3u);
    EXPECT_EQ(got[0], QByteArray::fromHex("05"));
    EXPECT_EQ(got[1], QByteArray::fromHex("660001020000"));
    EXPECT_EQ(got[2], QByteArray::fromHex("660001030000"));
    EXPECT_EQ(m.port.InBufferCount(), 1);

    // Outside a receive event Input empties the port, the waiting piece included.
    EXPECT_EQ(m.port.Input(), QByteArray::fromHex("66"));
    EXPECT_FALSE(m.port.drop_incomplete());
}

TEST(CommPortThreshold, ALargeArrivalIsFramedAndZeroThresholdKeepsBytesForInputUpToTheBufferSize) {
    memory_port m;
    ASSERT_EQ(m.port.setPortOpen(true), QString());
    int events = 0, replies = 0, overflow = 0;
    QObject::connect(&m.port, &comm_port::OnComm, [&] {
        ++events;
        if (m.port.CommEvent() == comm_port::comEventRxOver) ++overflow;
        if (m.port.RThreshold == 6 && m.port.Input().size() == 6) ++replies;
    });
    m.port.RThreshold = 6;
    m.pipe->inject(QByteArray(6 * 2000, 'D')); // a stall of two seconds at full line speed
    EXPECT_EQ(replies, 2000);
    EXPECT_EQ(overflow, 0);

    events = 0;
    m.port.RThreshold = 0;
    m.pipe->inject(QByteArray(50, 'x'));
    EXPECT_EQ(events, 0);
    EXPECT_EQ(m.port.Input().size(), 50);
    EXPECT_TRUE(m.port.Input().isEmpty()) << "Input clears the buffer";
    m.pipe->inject(QByteArray(comm_port::in_buffer_size + 10, 'y'));
    EXPECT_EQ(overflow, 1) << "an overflow is reported even at threshold 0";
    EXPECT_EQ(m.port.Input().size(), comm_port::in_buffer_size);
    m.port.RThreshold = 1;
    m.pipe->inject(QByteArray(1, '\x01'));
    EXPECT_EQ(events, 2);
}

TEST(CommPortThreshold, SilenceDropsAnIncompletePieceOnTheRealClock) {
    memory_port m;
    ASSERT_EQ(m.port.setPortOpen(true), QString());
    std::vector<QByteArray> got;
    QObject::connect(&m.port, &comm_port::OnComm, [&] { got.push_back(m.port.Input()); });
    m.port.RThreshold = 6;
    m.pipe->inject(QByteArray::fromHex("44000102")); // a short frame, then nothing
    EXPECT_TRUE(test::wait_until([&] { return m.port.counts().dropped == 1; }, 2000));
    m.pipe->inject(QByteArray::fromHex("440000050000"));
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0], QByteArray::fromHex("440000050000")) << "the next frame is read in step";
}

TEST(CommPortOpen, ClosedPortWritesNothingAndFailedOpenSaysWhy) {
    memory_port m;
    m.port.Output("x");
    EXPECT_TRUE(m.pipe->written.isEmpty());
    m.pipe->fail_next_open = QStringLiteral("No such file or directory");
    EXPECT_EQ(m.port.setPortOpen(true), QStringLiteral("No such file or directory"));
    EXPECT_FALSE(m.port.PortOpen());
    m.pipe->fail_next_open.clear();
    EXPECT_EQ(m.port.setPortOpen(true), QString());
    m.port.Output(QByteArray::fromHex("0601f4"));
    EXPECT_EQ(m.pipe->written, QByteArray::fromHex("0601f4"));
    m.port.setPortOpen(false);
    EXPECT_FALSE(m.port.PortOpen());
    m.pipe->inject("zz");
    EXPECT_TRUE(m.port.Input().isEmpty()) << "a closed pipe delivers nothing";

    qputenv("LUMORA_COM4", "/nonexistent/tty");
    comm_port serial(make_serial_backend());
    serial.CommPort = 4;
    serial.Settings = QStringLiteral("57600,N,8,1");
    EXPECT_FALSE(serial.setPortOpen(true).isEmpty()) << "a missing device says why";
    EXPECT_FALSE(serial.PortOpen());
    qunsetenv("LUMORA_COM4");
}

TEST(CommDevicePath, EnvironmentFirstThenTheUsualDevices) {
    qunsetenv("LUMORA_COM2");
    EXPECT_EQ(com_device_path(2), QStringLiteral("/dev/ttyUSB1"));
    EXPECT_EQ(com_device_path(3), QStringLiteral("/dev/ttyS0"));
    qputenv("LUMORA_COM2", "/tmp/sim-link");
    EXPECT_EQ(com_device_path(2), QStringLiteral("/tmp/sim-link"));
    qunsetenv("LUMORA_COM2");
}

namespace {

// A pseudo-terminal pair that the test holds: the master is the far end of the wire.
struct pty_pair {
    int master = -1;
    QString slave_path;
    pty_pair() {
        master = posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return;
        slave_path = QString::fromLocal8Bit(ptsname(master));
        termios t{};
        tcgetattr(master, &t);
        cfmakeraw(&t);
        tcsetattr(master, TCSANOW, &t);
    }
    ~pty_pair() {
        if (master >= 0) ::close(master);
    }
    void send(const QByteArray& b) const { ASSERT_EQ(::write(master, b.constData(), b.size()), b.size()); }
    QByteArray receive(int want, int timeout_ms = 2000) const {
        QByteArray out;
        while (out.size() < want) {
            pollfd p{master, POLLIN, 0};
            if (poll(&p, 1, timeout_ms) <= 0) break;
            char buf[256];
            const ssize_t n = ::read(master, buf, sizeof buf);
            if (n <= 0) break;
            out.append(buf, n);
        }
        return out;
    }
};

} // namespace

TEST(CommPortOnPty, BytesCrossARealPseudoTerminalWithThresholdFraming) {
    pty_pair pty;
    ASSERT_FALSE(pty.slave_path.isEmpty());
    qputenv("LUMORA_COM1", pty.slave_path.toLocal8Bit());
    comm_port port(make_serial_backend());
    port.CommPort = 1;
    port.Settings = QStringLiteral("57600,N,8,1");
    port.RTSEnable = true; // a pty has no RTS line: the open must still succeed
    port.InputMode = 1;
    ASSERT_EQ(port.setPortOpen(true), QString());
    ASSERT_TRUE(port.PortOpen());

    std::vector<QByteArray> frames;
    QObject::connect(&port, &comm_port::OnComm, [&] { frames.push_back(port.Input()); });

    // Out: a goto command reaches the far end intact.
    port.Output(QByteArray::fromHex("0601f4"));
    EXPECT_EQ(pty.receive(3), QByteArray::fromHex("0601f4"));

    // In: a 6-byte frame sent in two halves raises one event with the whole frame; three frames
    // written at once raise three events.
    port.RThreshold = 6;
    pty.send(QByteArray::fromHex("440012"));
    test::wait_until([] { return false; }, 10); // read, and shorter than the silence time
    EXPECT_TRUE(frames.empty()) << "half a frame must not raise the event";
    pty.send(QByteArray::fromHex("d68700"));
    ASSERT_TRUE(test::wait_until([&] { return !frames.empty(); }));
    EXPECT_EQ(frames.front(), QByteArray::fromHex("440012d68700"));
    frames.clear();
    pty.send(QByteArray::fromHex("663700000000"
                                 "663800000000"
                                 "663900000000"));
    ASSERT_TRUE(test::wait_until([&] { return frames.size() == 3; }));
    EXPECT_EQ(frames[2], QByteArray::fromHex("663900000000"));

    // Threshold 0: bytes are kept, no event, until Input takes them.
    frames.clear();
    port.RThreshold = 0;
    pty.send(QByteArray::fromHex("78000000000079"));
    test::wait_until([] { return false; }, 150);
    EXPECT_TRUE(frames.empty());
    EXPECT_EQ(port.Input(), QByteArray::fromHex("78000000000079"));

    port.setPortOpen(false);
    EXPECT_FALSE(port.PortOpen());
    qunsetenv("LUMORA_COM1");
}
