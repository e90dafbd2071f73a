#include "trace.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonValue>
#include <memory>

namespace lumora::trace {
namespace {

struct trace_file {
    std::unique_ptr<QFile> file;
    QElapsedTimer clock; // monotonic
};

trace_file& state() {
    static trace_file t;
    return t;
}

QByteArray seconds() {
    return QByteArray::number(static_cast<double>(state().clock.nsecsElapsed()) / 1e9, 'f', 6);
}

void write_line(const QByteArray& line) {
    auto& f = *state().file;
    f.write(line);
    f.write("\n", 1);
    f.flush();
}

void bytes_line(const char* key, const std::uint8_t* bytes, std::size_t n) {
    if (!enabled()) return;
    const QByteArray hex =
        QByteArray(reinterpret_cast<const char*>(bytes), static_cast<qsizetype>(n)).toHex();
    write_line("{\"t\":" + seconds() + ",\"" + key + "\":\"" + hex + "\"}");
}

} // namespace

void open_from_environment() {
    const QByteArray path = qgetenv("LUMORA_TRACE");
    if (!path.isEmpty()) open(QString::fromLocal8Bit(path));
}

void open(const QString& path) {
    auto& s = state();
    s.file.reset();
    if (path.isEmpty()) return;
    auto f = std::make_unique<QFile>(path);
    if (!f->open(QIODevice::Append | QIODevice::WriteOnly)) return;
    s.file = std::move(f);
    if (!s.clock.isValid()) s.clock.start();
}

bool enabled() {
    return state().file != nullptr;
}

void tx(const std::uint8_t* bytes, std::size_t n) {
    bytes_line("tx", bytes, n);
}
void rx(const std::uint8_t* bytes, std::size_t n) {
    bytes_line("rx", bytes, n);
}

void panel(int panel, const QString& text) {
    if (!enabled()) return;
    // The text goes through a JSON string encoder so quotes and backslashes stay valid JSON.
    const QByteArray quoted = QJsonDocument::fromVariant(QVariantList{text}).toJson(QJsonDocument::Compact);
    const QByteArray text_json = quoted.mid(1, quoted.size() - 2);
    write_line("{\"t\":" + seconds() + ",\"panel\":" + QByteArray::number(panel) + ",\"text\":" + text_json +
               "}");
}

void framing(const char* what, std::uint64_t cut, std::uint64_t joined, std::uint64_t dropped,
             std::uint64_t dropped_bytes) {
    if (!enabled()) return;
    write_line("{\"t\":" + seconds() + ",\"framing\":\"" + what + "\",\"cut\":" + QByteArray::number(cut) +
               ",\"joined\":" + QByteArray::number(joined) + ",\"dropped\":" + QByteArray::number(dropped) +
               ",\"dropped_bytes\":" + QByteArray::number(dropped_bytes) + "}");
}

} // namespace lumora::trace
