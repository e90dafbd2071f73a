// A program that does nothing but save batches into the database given as its first argument (a
// file path or a server URL).
//   batch_writer_child TARGET PREFIX            20-curve Spectrum batches PREFIX0, PREFIX1, ... one
//                                               after the other until it is killed (the crash test)
//   batch_writer_child TARGET PREFIX N SHARED   N small batches, every other one named SHARED<k>
//                                               (another writer saves the same names at the same
//                                               time), the rest PREFIX<k>; prints each outcome
#include "store/batches.h"
#include "store/database.h"

#include <QCoreApplication>
#include <QThread>
#include <cstdio>

using namespace lumora;

namespace {

void say(const char* what, const QString& name) {
    std::printf("%s %s\n", what, name.toUtf8().constData());
    std::fflush(stdout);
}

int race(const QString& prefix, int count, const QString& shared_prefix) {
    row_writer w;
    for (int i = 1; i <= 21; ++i)
        w.add(i);
    w.restart(QStringLiteral("D"));
    for (int nm = 400; nm < 440; ++nm)
        w.add_at(nm, stored_text(nm / 1e3), 1);
    for (int i = 0; i < count; ++i) {
        const QString name = (i % 2 == 0 ? shared_prefix : prefix) + QString::number(i / 2);
        // A file locked by the other writer is tried again, as a user would press Save again.
        for (int attempt = 0;; ++attempt) {
            try {
                const save_result r = batch_save(batch_kind::data, QStringLiteral("SPECTRUM"), name, w.rows);
                say(r == save_result::saved ? "saved" : "taken", name);
                break;
            } catch (const db_error& e) {
                if (!e.locked() || attempt == 200) {
                    say("failed", name + QLatin1Char(' ') + e.what);
                    break;
                }
                QThread::msleep(5);
            }
        }
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 3) return 2;
    const QString target = QString::fromLocal8Bit(argv[1]);
    const QString why = is_server_url(target) ? db_open_server(target) : db_open_file(target, true);
    if (!why.isEmpty()) {
        std::fprintf(stderr, "%s\n", why.toLocal8Bit().constData());
        return 3;
    }
    const QString prefix = QString::fromLocal8Bit(argv[2]);
    if (argc >= 5)
        return race(prefix, QString::fromLocal8Bit(argv[3]).toInt(), QString::fromLocal8Bit(argv[4]));
    row_writer w;
    for (int i = 1; i <= 21; ++i)
        w.add(i);
    w.restart(QStringLiteral("D"));
    for (int set = 1; set <= 20; ++set)
        for (int nm = 320; nm <= 1110; ++nm)
            w.add_at(nm, stored_text(set + nm / 1e4), set);
    std::puts("ready");
    std::fflush(stdout);
    for (int i = 0;; ++i) {
        batch_save(batch_kind::data, QStringLiteral("SPECTRUM"), prefix + QString::number(i), w.rows);
        std::puts("saved");
        std::fflush(stdout);
    }
}
