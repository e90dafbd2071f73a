#pragma once
// The serial control of the program: the operations the link code uses (PortOpen, CommPort,
// Settings, RTSEnable, InputMode, InputLen, RThreshold, Input, Output, CommEvent and the receive
// event) over an exchangeable byte pipe. Framing rests on RThreshold alone, exactly as the
// instrument protocol expects: the receive event is raised when bytes arrive and at least
// RThreshold of them are buffered, never while RThreshold is 0, and Input hands over every
// buffered byte at once.
#include <QByteArray>
#include <QObject>
#include <QString>
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
};

class comm_port : public QObject {
    Q_OBJECT
public:
    static constexpr int comEvReceive = 2;
    static constexpr int comEventRxOver = 1008;
    static constexpr int in_buffer_size = 4096; // bytes held before an overflow is reported

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

    QByteArray Input();
    void Output(const QByteArray& bytes);
    int CommEvent() const { return comm_event_; }
    int InBufferCount() const { return static_cast<int>(buffer_.size()); }

    comm_backend& backend() { return *backend_; }

signals:
    // The OnComm event: CommEvent() tells whether bytes were received or the buffer overflowed.
    void OnComm();

private:
    void on_bytes(const QByteArray& bytes);

    std::unique_ptr<comm_backend> backend_;
    QByteArray buffer_;
    int comm_event_ = 0;
    bool in_input_ = false; // Input() collects late bytes without raising the event again
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
    // Makes the next open fail with this reason ("" to succeed again).
    QString fail_next_open;
    std::function<void(const QByteArray&)> on_written;
    QByteArray written; // everything written since the last clear, for tests that just look

private:
    bool open_ = false;
};

} // namespace lumora
