// A save killed at any moment: a child process saves 20-curve batches and is killed (SIGKILL) at a
// random moment, again and again. The file stays sound, and every batch in it is whole or absent.
#include "store/batches.h"
#include "store/database.h"

#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <gtest/gtest.h>
#include <random>

using namespace lumora;

TEST(BatchCrash, AKilledSaveLeavesEveryBatchWholeOrAbsent) {
    // A killed process loses what it had not handed to the system, whatever the disk: the file goes
    // to memory where there is such a folder, so the test does not wait on the disk's flushes.
    QTemporaryDir dir(QFileInfo(QStringLiteral("/dev/shm")).isWritable()
                          ? QStringLiteral("/dev/shm/lumora-XXXXXX")
                          : QString());
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.path() + "/Lumora.db";
    ASSERT_EQ(db_open_file(path, true), QString());
    db_close();
    std::mt19937 rng(20260);
    std::uniform_int_distribution<int> wait_ms(0, 40);
    constexpr int whole = 21 + 20 * 791;
    for (int run = 0; run < 100; ++run) {
        QProcess child;
        child.start(QStringLiteral(LUMORA_BATCH_CHILD), {path, QStringLiteral("r%1-").arg(run)});
        ASSERT_TRUE(child.waitForStarted(5000));
        ASSERT_TRUE(child.waitForReadyRead(5000)) << "run " << run;
        // Every fourth run lets one save end first, so the file holds whole batches to check
        // beside the ones cut off.
        if (run % 4 == 3)
            while (!child.readAllStandardOutput().contains("saved") && child.waitForReadyRead(5000)) {
            }
        QThread::msleep(static_cast<unsigned long>(wait_ms(rng)));
        child.kill(); // SIGKILL: no handler runs, nothing is flushed
        child.waitForFinished(5000);
    }
    ASSERT_EQ(db_open_file(path, true), QString());
    const record_set check = db_query(QStringLiteral("PRAGMA integrity_check"));
    ASSERT_EQ(check.RecordCount(), 1);
    EXPECT_EQ(check.rows_.at(0).at(0).toString(), "ok");
    const auto names = batch_list(batch_kind::data, "SPECTRUM");
    EXPECT_GE(names.size(), 25u) << "every fourth run saved at least one batch";
    const record_set counts =
        db_query(QStringLiteral("SELECT BatchName, count(*) FROM data GROUP BY BatchName"));
    EXPECT_EQ(counts.RecordCount(), static_cast<int>(names.size())) << "rows without a header";
    for (const auto& row : counts.rows_)
        EXPECT_EQ(row.at(1).toInt(), whole) << row.at(0).toString().toStdString();
    db_close();
}
