#pragma once
// The serial control of the program: the operations the link code uses (PortOpen, CommPort,
// Settings, RTSEnable, InputMode, InputLen, RThreshold, Input, Output, CommEvent and the receive
// event) over an exchangeable byte pipe.
//
// The instrument's replies carry no marker and no length: RThreshold, the size of the reply the
// program expects next, is the only framing. The receive event therefore hands over one reply at a
// time. Bytes that arrive together are cut at RThreshold into pieces, each its own receive event,
// and RThreshold is looked at again after each one, since the handler may change it. A piece
// shorter than RThreshold waits for the rest of its bytes; if the line stays silent for
// `silence_ms` meanwhile, the piece is dropped and counted, so the stream falls back into step
// after noise. No event is raised while RThreshold is 0; the bytes wait for Input.
#include <QByteArray>
#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QTimer>
#include <cstdint>
#include <functional>
#include <memory>

namespace lumora {

// A byte pipe under the port. Implementations push received bytes through `deliver`.
class comm_backend {
public:
    virtual ~comm_backend() = default;
    // Opens the pipe for `com_port` with "baud,parity,data,stop" settings; returns "" or why it failed.
    virtual QString open(int com_port, const QString& settings, bool rts) = 0;
    virtual void close() = 0;
    virtual bool is_open() const = 0;
    virtual void write(const QByteArray& bytes) = 0;
    // Moves bytes that arrived but were not yet delivered (the pipe's own buffer) into `deliver`.
    virtual void drain() {}
    std::function<void(const QByteArray&)> deliver;
    // Called by the pipe when the device fails while open (unplugged, gone), with the reason.
    std::function<void(const QString&)> failed;
};

class comm_port : public QObject {
    Q_OBJECT
public:
    static constexpr int comEvReceive = 2;
    static constexpr int comEventRxOver = 1008;
    static constexpr int in_buffer_size = 4096; // bytes held before an overflow is reported
    static constexpr int silence_ms = 20;       // about 110 character times at 57600 baud

    // What the framing did to the byte stream since the port was made.
    struct framing_counts {
        std::uint64_t cut = 0;           // replies cut from a buffer that held more behind them
        std::uint64_t joined = 0;        // replies put together from bytes of several arrivals
        std::uint64_t dropped = 0;       // incomplete pieces dropped after a silent line
        std::uint64_t dropped_bytes = 0; // the bytes they held
    };

    explicit comm_port(std::unique_ptr<comm_backend> backend, QObject* parent = nullptr);
    ~comm_port() override;

    // Opening and closing. Returns "" on success, else the reason; the port then stays closed.
    QString setPortOpen(bool open);
    bool PortOpen() const;

    int CommPort = 1;
    QString Settings = QStringLiteral("9600,N,8,1");
    bool RTSEnable = false;
    int InputMode = 0; // 1: binary; the program always uses binary
    int InputLen = 0;  // 0: Input returns everything buffered
    int RThreshold = 0;

    // In a receive event: the reply that event hands over. Otherwise: every buffered byte.
    // Either way what it returns is gone from the port.
    QByteArray Input();
    void Output(const QByteArray& bytes);
    int CommEvent() const { return comm_event_; }
    int InBufferCount() const { return static_cast<int>(buffer_.size()); }

    comm_backend& backend() { return *backend_; }
    const framing_counts& counts() const { return counts_; }

    // The silence check of an incomplete piece: bytes still in the pipe are fetched first, and the
    // piece is dropped only when the line has been quiet for silence_ms. The port's own timer
    // calls it; tests on a virtual clock call drop_incomplete() instead.
    void check_silence();
    // Drops an incomplete piece now; true when there was one.
    bool drop_incomplete();
    // Ends the port after a fault of the device (unplugged, gone): the port closes, buffered bytes
    // are dropped, and port_failed carries the reason.
    void fail(const QString& why);

signals:
    // The OnComm event: CommEvent() tells whether bytes were received or the buffer overflowed.
    void OnComm();
    // The framing counts changed; `what` is "cut", "joined" or "dropped".
    void framing_counted(const char* what);
    // The device failed and the port closed itself.
    void port_failed(const QString& why);

private:
    void on_bytes(const QByteArray& bytes);
    void deliver_pieces();
    void arm_silence();

    std::unique_ptr<comm_backend> backend_;
    QByteArray buffer_;          // received, not yet handed over
    QByteArray piece_;           // the reply of the receive event in progress
    bool piece_pending_ = false; // piece_ not yet taken by Input
    bool delivering_ = false;    // inside a receive event
    int arrivals_in_front_ = 0;  // arrivals that brought the bytes at the front of buffer_
    int comm_event_ = 0;
    bool in_input_ = false; // Input() collects late bytes without raising the event again
    framing_counts counts_;
    QTimer silence_;
    QElapsedTimer last_arrival_;
};

// The device path behind "Com n": LUMORA_COM<n> when set, else /dev/ttyUSB0, /dev/ttyUSB1,
// /dev/ttyS0, /dev/ttyS1 for n = 1..4.
QString com_device_path(int com_port);

// QSerialPort on the device path of "Com n".
std::unique_ptr<comm_backend> make_serial_backend();

// An in-memory pipe for tests: what the program writes goes to `on_written`, and `inject`
// delivers bytes as if they had come down the wire.
class memory_backend : public comm_backend {
public:
    QString open(int, const QString&, bool) override;
    void close() override { open_ = false; }
    bool is_open() const override { return open_; }
    void write(const QByteArray& bytes) override;
    void inject(const QByteArray& bytes);
    // The device fails as an unplugged one would.
    void break_device(const QString& why);
    // Makes the next open fail with this reason ("" to succeed again).
    QString fail_next_open;
    std::function<void(const QByteArray&)> on_written;
    QByteArray written; // everything written since the last clear, for tests that just look

private:
    bool open_ = false;
};

} // namespace lumora
