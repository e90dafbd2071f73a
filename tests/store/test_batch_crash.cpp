// Saves killed at any moment, and two programs saving at once, on the file and on the server:
// every batch in the store is whole or absent, and a name is never stored twice.
#include "store/batches.h"
#include "store/database.h"
#include "store_backend.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <map>
#include <random>

using namespace lumora;

namespace {

struct batch_processes : ::testing::TestWithParam<backend> {
    // A killed process loses what it had not handed to the system, whatever the disk: the file goes
    // to memory where there is such a folder, so the test does not wait on the disk's flushes.
    QTemporaryDir dir{QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                          ? QStringLiteral("/dev/shm/lumora-XXXXXX")
                          : QString()};
    QString target; // what the children are given: the file's path or the server's URL
    void SetUp() override {
        ASSERT_TRUE(dir.isValid());
        const QString path = dir.path() + "/Lumora.db";
        target = path;
        if (GetParam() == backend::server) {
            LUMORA_NEED_SERVER();
            pg_test::wipe();
            target = pg_test::url();
        }
        open();
    }
    void open() {
        ASSERT_EQ(db_open_file(dir.path() + "/Lumora.db", true), QString());
        if (GetParam() == backend::server) {
            ASSERT_EQ(db_open_server(target), QString());
        }
    }
    void TearDown() override { db_close(); }

    // Every stored batch has exactly `whole` rows, and every row a header.
    void expect_whole(int whole) {
        batch_scope scope;
        const auto names = batch_list(batch_kind::data, "SPECTRUM");
        const record_set counts =
            db_query(QStringLiteral("SELECT min(BatchName), count(*) FROM data GROUP BY lower(BatchName)"));
        EXPECT_EQ(counts.RecordCount(), static_cast<int>(names.size())) << "rows without a header";
        for (const auto& row : counts.rows_)
            EXPECT_EQ(row.at(1).toInt(), whole) << row.at(0).toString().toStdString();
    }
};

} // namespace

TEST_P(batch_processes, a_killed_save_leaves_every_batch_whole_or_absent) {
    db_close();
    std::mt19937 rng(20260);
    std::uniform_int_distribution<int> wait_ms(0, 40);
    const int runs = GetParam() == backend::file ? 100 : 50;
    for (int run = 0; run < runs; ++run) {
        QProcess child;
        child.start(QStringLiteral(LUMORA_BATCH_CHILD), {target, QStringLiteral("r%1-").arg(run)});
        ASSERT_TRUE(child.waitForStarted(5000));
        ASSERT_TRUE(child.waitForReadyRead(5000))
            << "run " << run << child.readAllStandardError().toStdString();
        // Every fourth run lets one save end first, so the store holds whole batches to check
        // beside the ones cut off.
        if (run % 4 == 3)
            while (!child.readAllStandardOutput().contains("saved") && child.waitForReadyRead(5000)) {
            }
        QThread::msleep(static_cast<unsigned long>(wait_ms(rng)));
        child.kill(); // SIGKILL: no handler runs, nothing is flushed
        child.waitForFinished(5000);
    }
    open();
    if (GetParam() == backend::file) {
        const record_set check = db_query(QStringLiteral("PRAGMA integrity_check"));
        ASSERT_EQ(check.RecordCount(), 1);
        EXPECT_EQ(check.rows_.at(0).at(0).toString(), "ok");
    }
    EXPECT_GE(batch_list(batch_kind::data, "SPECTRUM").size(), static_cast<std::size_t>(runs / 4))
        << "every fourth run saved at least one batch";
    expect_whole(21 + 20 * 791);
}

TEST_P(batch_processes, two_savers_racing_for_the_same_names_store_each_name_once) {
    constexpr int per_writer = 200;
    QProcess a, b;
    a.start(QStringLiteral(LUMORA_BATCH_CHILD), {target, "a", QString::number(per_writer), "both"});
    b.start(QStringLiteral(LUMORA_BATCH_CHILD), {target, "b", QString::number(per_writer), "both"});
    ASSERT_TRUE(a.waitForFinished(60000));
    ASSERT_TRUE(b.waitForFinished(60000));
    ASSERT_EQ(a.exitCode(), 0) << a.readAllStandardError().toStdString();
    ASSERT_EQ(b.exitCode(), 0) << b.readAllStandardError().toStdString();
    std::map<QString, int> saved, taken;
    for (QProcess* p : {&a, &b})
        for (const QByteArray& line : p->readAllStandardOutput().split('\n')) {
            const QList<QByteArray> words = line.split(' ');
            if (words.size() < 2) continue;
            ASSERT_NE(words[0], "failed") << line.toStdString();
            ++(words[0] == "saved" ? saved : taken)[QString::fromUtf8(words[1])];
        }
    // Each shared name saved by exactly one writer, refused to the other; each own name saved.
    for (int k = 0; k < per_writer / 2; ++k) {
        const QString shared_name = QStringLiteral("both%1").arg(k);
        EXPECT_EQ(saved[shared_name], 1) << shared_name.toStdString();
        EXPECT_EQ(taken[shared_name], 1) << shared_name.toStdString();
        EXPECT_EQ(saved[QStringLiteral("a%1").arg(k)], 1);
        EXPECT_EQ(saved[QStringLiteral("b%1").arg(k)], 1);
    }
    EXPECT_EQ(batch_list(batch_kind::data, "SPECTRUM").size(), static_cast<std::size_t>(per_writer * 3 / 2));
    expect_whole(21 + 40);
}

LUMORA_ON_BOTH_BACKENDS(batch_processes);
