#include "comm_port.h"

#include <QStringList>

namespace lumora {

comm_port::comm_port(std::unique_ptr<comm_backend> backend, QObject* parent)
    : QObject(parent), backend_(std::move(backend)) {
    backend_->deliver = [this](const QByteArray& bytes) { on_bytes(bytes); };
}

comm_port::~comm_port() {
    if (backend_->is_open()) backend_->close();
}

QString comm_port::setPortOpen(bool open) {
    if (!open) {
        if (backend_->is_open()) backend_->close();
        buffer_.clear();
        return {};
    }
    if (backend_->is_open()) return {};
    buffer_.clear();
    return backend_->open(CommPort, Settings, RTSEnable);
}

bool comm_port::PortOpen() const {
    return backend_->is_open();
}

QByteArray comm_port::Input() {
    in_input_ = true;
    backend_->drain();
    in_input_ = false;
    QByteArray out;
    out.swap(buffer_);
    return out;
}

void comm_port::Output(const QByteArray& bytes) {
    if (backend_->is_open() && !bytes.isEmpty()) backend_->write(bytes);
}

void comm_port::on_bytes(const QByteArray& bytes) {
    if (bytes.isEmpty()) return;
    const qsizetype room = in_buffer_size - buffer_.size();
    if (bytes.size() > room) {
        // Keep what fits, like a hardware buffer, and report the overflow.
        buffer_.append(bytes.left(room > 0 ? room : 0));
        comm_event_ = comEventRxOver;
        if (!in_input_) emit OnComm();
        return;
    }
    buffer_.append(bytes);
    if (!in_input_ && RThreshold > 0 && buffer_.size() >= RThreshold) {
        comm_event_ = comEvReceive;
        emit OnComm();
    }
}

QString com_device_path(int com_port) {
    const QByteArray env = qgetenv(QStringLiteral("LUMORA_COM%1").arg(com_port).toLatin1().constData());
    if (!env.isEmpty()) return QString::fromLocal8Bit(env);
    static const char* const defaults[] = {"/dev/ttyUSB0", "/dev/ttyUSB1", "/dev/ttyS0", "/dev/ttyS1"};
    if (com_port >= 1 && com_port <= 4) return QString::fromLatin1(defaults[com_port - 1]);
    return QStringLiteral("/dev/ttyS%1").arg(com_port - 1);
}

QString memory_backend::open(int, const QString&, bool) {
    if (!fail_next_open.isEmpty()) return fail_next_open;
    open_ = true;
    return {};
}

void memory_backend::write(const QByteArray& bytes) {
    written.append(bytes);
    if (on_written) on_written(bytes);
}

void memory_backend::inject(const QByteArray& bytes) {
    if (open_ && deliver) deliver(bytes);
}

} // namespace lumora
