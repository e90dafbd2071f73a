// lumora-data as a user runs it: its own process, no display, a database in a temporary data
// folder, the exit statuses of success, bad arguments and a missing batch, and the files it writes
// under a German locale.
#include "opendata/csv.h"
#include "opendata/jcamp.h"
#include "store/batches.h"
#include "store/database.h"
#include "store/pg_test_server.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace lumora;

namespace {

struct run_result {
    int status = -1;
    QString out, err;
};

// Spectrum's 21 setup rows for 500..503 nm in ABS, then two curves.
std::vector<batch_row> spectrum_rows() {
    row_writer w;
    for (double v : {500.0, 503.0, 0.0, 0.0, 3.0, 1.0, 0.0, 0.0, 0.0, 1.0})
        w.add(v);
    for (const char* text : {"Lab B", "Sample", "Ann", ""})
        w.add(QString::fromLatin1(text));
    for (int i = 0; i < 7; ++i)
        w.add(1);
    w.restart(QStringLiteral("D"));
    for (int set = 1; set <= 2; ++set)
        for (int nm = 500; nm <= 503; ++nm)
            w.add_at(nm, stored_text(set * 0.25 + (nm - 500) / 8.0), set);
    return w.rows;
}

// The fixed-interval Timescan's 16 setup rows at 1.5 s, then three samples as their grid texts.
std::vector<batch_row> timescan2_rows() {
    row_writer w;
    w.add(QStringLiteral("500"));
    for (double v : {1.5, 0.0, 0.0, 0.0, 3.0, 0.0, 1.0})
        w.add(v);
    for (const char* text : {"Lab B", "Sample", "Ann", ""})
        w.add(QString::fromLatin1(text));
    for (int i = 0; i < 4; ++i)
        w.add(1);
    w.restart(QStringLiteral("D"));
    for (const char* text : {"0.100", "0.205", "0.310"})
        w.add(QString::fromLatin1(text));
    return w.rows;
}

struct data_tool : ::testing::Test {
    QTemporaryDir dir;
    QString db;
    void SetUp() override {
        db = dir.path() + "/Lumora.db";
        ASSERT_EQ(db_open_file(db, true), QString());
        ASSERT_EQ(batch_save(batch_kind::data, "SPECTRUM", "scanA", spectrum_rows()), save_result::saved);
        ASSERT_EQ(batch_save(batch_kind::data, "TIMESCAN2", "slow1", timescan2_rows()), save_result::saved);
        // Made by another program: a name the load dialog would refuse.
        ASSERT_EQ(batch_save(batch_kind::data, "TIMESCAN2", "../up", timescan2_rows()), save_result::saved);
        db_close();
    }
    run_result run(const QStringList& args, const QProcessEnvironment& extra = {}) {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.remove(QStringLiteral("DISPLAY"));
        env.remove(QStringLiteral("QT_QPA_PLATFORM"));
        env.remove(QStringLiteral("LUMORA_DATABASE"));
        env.insert(QStringLiteral("LUMORA_DATA_DIR"), dir.path() + "/empty-data");
        for (const QString& key : extra.keys())
            env.insert(key, extra.value(key));
        p.setProcessEnvironment(env);
        p.start(QStringLiteral(LUMORA_DATA_TOOL), args);
        EXPECT_TRUE(p.waitForFinished(30000));
        return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1,
                QString::fromUtf8(p.readAllStandardOutput()), QString::fromUtf8(p.readAllStandardError())};
    }
    QByteArray file(const QString& path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
};

} // namespace

TEST_F(data_tool, HelpAndBadArgumentsAnswerWithStatusTwoAndOneLine) {
    const run_result help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    for (const char* word : {"list", "export", "--function", "--batch", "--format", "--out", "--db",
                             "LUMORA_DATABASE", "--compound"})
        EXPECT_TRUE(help.out.contains(QLatin1String(word))) << word;

    const QStringList bad[] = {
        {},
        {"restore"},
        {"list", "--colour"},
        {"list", "--function", "NOSUCH", "--db", db},
        {"export", "--function", "SPECTRUM", "--batch", "scanA", "--out", dir.path()},
        {"export", "--function", "SPECTRUM", "--batch", "scanA", "--format", "pdf", "--out", dir.path(),
         "--db", db},
        {"export", "--function", "TIMESCAN2", "--batch", "slow1", "--format", "jcamp", "--out", dir.path(),
         "--db", db},
        {"export", "--function"},
    };
    for (const QStringList& args : bad) {
        const run_result r = run(args);
        EXPECT_EQ(r.status, 2) << args.join(' ').toStdString();
        EXPECT_TRUE(r.err.startsWith(QStringLiteral("lumora-data: "))) << r.err.toStdString();
        EXPECT_EQ(r.err.count(QLatin1Char('\n')), 1) << r.err.toStdString();
        EXPECT_TRUE(r.out.isEmpty());
    }
}

TEST_F(data_tool, ListPrintsTheBatchesOfTheStoreTheEnvironmentNames) {
    QProcessEnvironment env;
    env.insert(QStringLiteral("LUMORA_DATABASE"), db);
    const run_result all = run({"list"}, env);
    EXPECT_EQ(all.status, 0) << all.err.toStdString();
    const QStringList lines = all.out.split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], QStringLiteral("FUNCTION\tNAME\tSAVED BY\tSAVED AT"));
    EXPECT_TRUE(lines[1].startsWith(QStringLiteral("SPECTRUM\tscanA\t"))) << lines[1].toStdString();
    const run_result one = run({"list", "--function", "timescan2", "--db", db});
    EXPECT_EQ(one.status, 0);
    EXPECT_EQ(one.out.count(QStringLiteral("TIMESCAN2\t")), 2);
    EXPECT_FALSE(one.out.contains(QStringLiteral("SPECTRUM")));

    const run_result none = run({"list"});
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(none.err.contains(QStringLiteral("no database at"))) << none.err.toStdString();
}

TEST_F(data_tool, RestoreBringsABatchDeletedOnTheServerBackAndRefusesWhatItCannot) {
    const run_result on_file = run({"restore", "SPECTRUM", "scanA", "--db", db});
    EXPECT_EQ(on_file.status, 1);
    EXPECT_TRUE(on_file.err.contains("keeps no trash")) << on_file.err.toStdString();
    const run_result down =
        run({"restore", "SPECTRUM", "scanA", "--db", "postgresql://lab:s3cret@/lumora?host=" + dir.path()});
    EXPECT_EQ(down.status, 1);
    EXPECT_TRUE(down.err.startsWith("lumora-data: the database is not reachable: "))
        << down.err.toStdString();
    EXPECT_FALSE(down.err.contains("s3cret"));
    EXPECT_EQ(run({"restore", "NOSUCH", "scanA", "--db", db}).status, 2);

    LUMORA_NEED_SERVER();
    pg_test::wipe();
    ASSERT_EQ(db_open_server(pg_test::url()), QString());
    ASSERT_EQ(batch_save(batch_kind::data, "SPECTRUM", "scanA", spectrum_rows()), save_result::saved);
    const std::vector<batch_row> before = batch_read(batch_kind::data, "SPECTRUM", "scanA");
    batch_delete(batch_kind::data, "SCANA");
    db_close();

    QProcessEnvironment env;
    env.insert(QStringLiteral("LUMORA_DATABASE"), pg_test::url());
    const run_result back = run({"restore", "spectrum", "scana"}, env);
    EXPECT_EQ(back.status, 0) << back.err.toStdString();
    EXPECT_TRUE(back.out.startsWith("restored SPECTRUM result batch scanA (deleted by "))
        << back.out.toStdString();
    const run_result listed = run({"list", "--function", "SPECTRUM"}, env);
    EXPECT_TRUE(listed.out.contains("SPECTRUM\tscanA\t")) << listed.out.toStdString();
    const run_result again = run({"restore", "SPECTRUM", "scanA"}, env);
    EXPECT_EQ(again.status, 1);
    EXPECT_EQ(again.err, "lumora-data: no SPECTRUM batch named scanA in the trash\n");

    ASSERT_EQ(db_open_server(pg_test::url()), QString());
    const std::vector<batch_row> after = batch_read(batch_kind::data, "SPECTRUM", "scanA");
    ASSERT_EQ(after.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_EQ(after[i].value, before[i].value) << i;
    db_close();
}

TEST_F(data_tool, ExportWritesTheSameValuesWithAPointUnderAGermanLocale) {
    QProcessEnvironment env;
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("de_DE.UTF-8"));
    const QString out = dir.path() + "/out/spectra";
    const run_result r = run({"export", "--function", "spectrum", "--batch", "SCANA", "--format", "jcamp",
                              "--out", out, "--db", db},
                             env);
    ASSERT_EQ(r.status, 0) << r.err.toStdString();
    EXPECT_EQ(r.out.split('\n', Qt::SkipEmptyParts).size(), 2);
    const QByteArray second = file(out + "/scanA-2.jdx");
    EXPECT_TRUE(second.contains("\r\n500 0.5 0.625 0.75 0.875\r\n")) << second.constData();
    EXPECT_TRUE(second.contains("##ORIGIN=Lab B\r\n"));
    const auto blocks = opendata::read_jcamp(second);
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_NEAR(blocks[0].y[3], 0.875, 1e-6);

    const run_result compound = run({"export", "--function", "SPECTRUM", "--batch", "scanA", "--format=jcamp",
                                     "--compound", "--out", out, "--db", db},
                                    env);
    ASSERT_EQ(compound.status, 0) << compound.err.toStdString();
    EXPECT_EQ(opendata::read_jcamp(file(out + "/scanA.jdx")).size(), 2u);

    const run_result csv = run({"export", "--function", "TIMESCAN2", "--batch", "slow1", "--format", "csv",
                                "--out", out, "--db", db},
                               env);
    ASSERT_EQ(csv.status, 0) << csv.err.toStdString();
    const opendata::csv_table t = opendata::read_csv(file(out + "/slow1.csv"));
    ASSERT_EQ(t.rows.size(), 3u);
    EXPECT_EQ(t.rows[1], (QStringList{"1", "", "1.5", "0.205"}));
}

TEST_F(data_tool, AMissingBatchOrAFolderThatCannotBeMadeIsStatusOneAndNamesStayInside) {
    const run_result missing = run({"export", "--function", "SPECTRUM", "--batch", "nosuch", "--format",
                                    "csv", "--out", dir.path(), "--db", db});
    EXPECT_EQ(missing.status, 1);
    EXPECT_TRUE(missing.err.contains(QStringLiteral("nosuch"))) << missing.err.toStdString();

    QFile blocker(dir.path() + "/a-file");
    ASSERT_TRUE(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    const run_result blocked = run({"export", "--function", "SPECTRUM", "--batch", "scanA", "--format", "csv",
                                    "--out", dir.path() + "/a-file/sub", "--db", db});
    EXPECT_EQ(blocked.status, 1);
    EXPECT_TRUE(blocked.err.contains(dir.path() + "/a-file/sub")) << blocked.err.toStdString();

    const QString out = dir.path() + "/inside";
    const run_result up = run({"export", "--function", "TIMESCAN2", "--batch", "../up", "--format", "csv",
                               "--out", out, "--db", db});
    ASSERT_EQ(up.status, 0) << up.err.toStdString();
    EXPECT_EQ(QDir(out).entryList(QDir::Files), QStringList{QStringLiteral("___up.csv")});
    EXPECT_FALSE(QFile::exists(dir.path() + "/up.csv"));
}
