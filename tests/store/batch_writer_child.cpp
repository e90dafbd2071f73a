// A program that does nothing but save 20-curve Spectrum batches into the database given as its
// argument, one after the other, until it is killed. The crash test kills it at random moments.
#include "store/batches.h"
#include "store/database.h"

#include <QCoreApplication>
#include <cstdio>

using namespace lumora;

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 3) return 2;
    if (!db_open_file(QString::fromLocal8Bit(argv[1]), true).isEmpty()) return 3;
    row_writer w;
    for (int i = 1; i <= 21; ++i)
        w.add(i);
    w.restart(QStringLiteral("D"));
    for (int set = 1; set <= 20; ++set)
        for (int nm = 320; nm <= 1110; ++nm)
            w.add_at(nm, stored_text(set + nm / 1e4), set);
    std::puts("ready");
    std::fflush(stdout);
    const QString prefix = QString::fromLocal8Bit(argv[2]);
    for (int i = 0;; ++i) {
        batch_save(batch_kind::data, QStringLiteral("SPECTRUM"), prefix + QString::number(i), w.rows);
        std::puts("saved");
        std::fflush(stdout);
    }
}
