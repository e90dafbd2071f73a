// QSerialPort under comm_port, on the device path of "Com n".
#include "comm_port.h"

#include <QSerialPort>
#include <QStringList>
#include <QTimer>

namespace lumora {
namespace {

class serial_backend : public comm_backend {
public:
    serial_backend() {
        QObject::connect(&port_, &QSerialPort::readyRead, [this] { drain(); });
        // A device that goes away (a USB adapter pulled, the far end of a pty closed) reports a
        // resource error, or keeps the port readable at end of file; either ends the port.
        QObject::connect(&port_, &QSerialPort::errorOccurred, [this](QSerialPort::SerialPortError e) {
            if (e == QSerialPort::ResourceError || e == QSerialPort::PermissionError ||
                e == QSerialPort::ReadError || e == QSerialPort::WriteError)
                report_failure();
        });
    }

    QString open(int com_port, const QString& settings, bool rts) override {
        port_.setPortName(com_device_path(com_port));
        const QStringList parts = settings.split(',');
        port_.setBaudRate(parts.value(0, QStringLiteral("9600")).toInt());
        const QString parity = parts.value(1, QStringLiteral("N")).toUpper();
        port_.setParity(parity == QLatin1String("E")   ? QSerialPort::EvenParity
                        : parity == QLatin1String("O") ? QSerialPort::OddParity
                                                       : QSerialPort::NoParity);
        port_.setDataBits(parts.value(2) == QLatin1String("7") ? QSerialPort::Data7 : QSerialPort::Data8);
        port_.setStopBits(parts.value(3) == QLatin1String("2") ? QSerialPort::TwoStop : QSerialPort::OneStop);
        port_.setFlowControl(QSerialPort::NoFlowControl);
        if (!port_.open(QIODevice::ReadWrite)) {
            const QString why = port_.errorString();
            port_.clearError();
            return why.isEmpty() ? QStringLiteral("cannot open %1").arg(port_.portName()) : why;
        }
        // A pseudo-terminal has no modem lines, so RTS fails there with "Inappropriate ioctl for
        // device". That is not a fault of the link: clear it and go on. A USB adapter takes it.
        if (!port_.setRequestToSend(rts)) port_.clearError();
        port_.clear(QSerialPort::AllDirections);
        return {};
    }

    void close() override {
        if (port_.isOpen()) port_.close();
    }

    bool is_open() const override { return port_.isOpen(); }

    void write(const QByteArray& bytes) override {
        port_.write(bytes);
        // Commands are a few bytes; push them out now rather than at the next event loop turn.
        port_.flush();
    }

    void drain() override {
        if (!port_.isOpen()) return;
        const QByteArray bytes = port_.readAll();
        if (!bytes.isEmpty() && deliver) deliver(bytes);
    }

private:
    // The port is closed a turn of the event loop later, outside QSerialPort's own handler.
    void report_failure() {
        if (!port_.isOpen()) return;
        QString why = port_.errorString();
        port_.clearError();
        if (why.isEmpty()) why = QStringLiteral("the device is gone");
        QTimer::singleShot(0, &port_, [this, why] {
            if (port_.isOpen() && failed) failed(why);
        });
    }

    QSerialPort port_;
};

} // namespace

std::unique_ptr<comm_backend> make_serial_backend() {
    return std::make_unique<serial_backend>();
}

} // namespace lumora
