#include "comm_port.h"

#include <QStringList>
#include <algorithm>
#include <cstring>

namespace lumora {

comm_port::comm_port(std::unique_ptr<comm_backend> backend, QObject* parent)
    : QObject(parent), backend_(std::move(backend)) {
    backend_->deliver = [this](const QByteArray& bytes) { on_bytes(bytes); };
    backend_->failed = [this](const QString& why) { fail(why); };
    silence_.setSingleShot(true);
    connect(&silence_, &QTimer::timeout, this, &comm_port::check_silence);
    last_arrival_.start();
}

comm_port::~comm_port() {
    if (backend_->is_open()) backend_->close();
}

QString comm_port::setPortOpen(bool open) {
    buffer_.clear();
    silence_.stop();
    if (!open) {
        if (backend_->is_open()) backend_->close();
        return {};
    }
    if (backend_->is_open()) return {};
    return backend_->open(CommPort, Settings, RTSEnable);
}

bool comm_port::PortOpen() const {
    return backend_->is_open();
}

QByteArray comm_port::Input() {
    QByteArray out;
    if (piece_pending_) {
        // A shared copy: once the caller lets it go, the next reply reuses the storage.
        piece_pending_ = false;
        return piece_;
    }
    in_input_ = true;
    backend_->drain();
    in_input_ = false;
    out.swap(buffer_);
    arrivals_in_front_ = 0;
    silence_.stop();
    return out;
}

void comm_port::Output(const QByteArray& bytes) {
    if (backend_->is_open() && !bytes.isEmpty()) backend_->write(bytes);
}

void comm_port::on_bytes(const QByteArray& bytes) {
    if (bytes.isEmpty()) return;
    last_arrival_.restart();
    arrivals_in_front_ = buffer_.isEmpty() ? 1 : arrivals_in_front_ + 1;
    // A large arrival (the interface was busy for a while) is taken in slices, each cut into its
    // replies before the next, so only bytes that nobody frames (RThreshold 0) can overflow.
    qsizetype at = 0;
    while (at < bytes.size()) {
        const qsizetype room = in_buffer_size - buffer_.size();
        if (room <= 0) {
            comm_event_ = comEventRxOver;
            if (!in_input_ && !delivering_) emit OnComm();
            return;
        }
        const qsizetype take = std::min(room, bytes.size() - at);
        buffer_.append(bytes.constData() + at, take);
        at += take;
        if (!in_input_ && !delivering_) deliver_pieces();
    }
}

void comm_port::deliver_pieces() {
    delivering_ = true;
    while (RThreshold > 0 && buffer_.size() >= RThreshold && backend_->is_open()) {
        const qsizetype n = RThreshold;
        piece_.resize(n);
        std::memcpy(piece_.data(), buffer_.constData(), static_cast<std::size_t>(n));
        buffer_.remove(0, n);
        piece_pending_ = true;
        const bool joined = arrivals_in_front_ > 1;
        const bool cut = !buffer_.isEmpty();
        arrivals_in_front_ = cut ? 1 : 0;
        if (joined) {
            ++counts_.joined;
            emit framing_counted("joined");
        }
        if (cut) {
            ++counts_.cut;
            emit framing_counted("cut");
        }
        comm_event_ = comEvReceive;
        emit OnComm();
        // A reply the handler did not take is gone with its event.
        piece_pending_ = false;
    }
    delivering_ = false;
    arm_silence();
}

void comm_port::arm_silence() {
    if (RThreshold > 0 && !buffer_.isEmpty() && backend_->is_open()) {
        if (!silence_.isActive()) silence_.start(silence_ms);
    } else {
        silence_.stop();
    }
}

void comm_port::check_silence() {
    if (buffer_.isEmpty()) return;
    // The interface may have been busy: whatever the pipe holds arrived before this check.
    backend_->drain();
    if (buffer_.isEmpty()) return;
    if (RThreshold > 0 && buffer_.size() >= RThreshold) {
        deliver_pieces(); // RThreshold was lowered while the piece waited
        return;
    }
    const qint64 quiet = last_arrival_.elapsed();
    if (quiet < silence_ms) {
        silence_.start(static_cast<int>(silence_ms - quiet));
        return;
    }
    drop_incomplete();
}

bool comm_port::drop_incomplete() {
    silence_.stop();
    if (buffer_.isEmpty()) return false;
    ++counts_.dropped;
    counts_.dropped_bytes += static_cast<std::uint64_t>(buffer_.size());
    buffer_.clear();
    arrivals_in_front_ = 0;
    emit framing_counted("dropped");
    return true;
}

void comm_port::fail(const QString& why) {
    if (!backend_->is_open()) return;
    backend_->close();
    buffer_.clear();
    arrivals_in_front_ = 0;
    silence_.stop();
    emit port_failed(why);
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

void memory_backend::break_device(const QString& why) {
    if (open_ && failed) failed(why);
}

} // namespace lumora
