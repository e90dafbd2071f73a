// Program start on a Lumora.db that is not a database, or a damaged one: the user chooses between
// moving it aside under a dated name and starting with a new database, or quitting.
#include "link/shared_state.h"
#include "platform/prompts.h"
#include "store/batches.h"
#include "store/database.h"
#include "store/store_start.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace lumora;

namespace {

struct store_start_test : ::testing::Test {
    QTemporaryDir dir;
    QByteArray saved_env;
    QString db;
    QString dated;

    void SetUp() override {
        saved_env = qgetenv("LUMORA_DATA_DIR");
        qputenv("LUMORA_DATA_DIR", dir.path().toLocal8Bit());
        db = dir.path() + "/Lumora.db";
        dated = dir.path() + "/Lumora-" + QDate::currentDate().toString("yyyy-MM-dd") + ".db";
        reset_shared_state();
        prompts::script();
        prompts::clear_shown();
    }
    void TearDown() override {
        db_close();
        prompts::unscript();
        if (saved_env.isNull())
            qunsetenv("LUMORA_DATA_DIR");
        else
            qputenv("LUMORA_DATA_DIR", saved_env);
    }
    static void write(const QString& path, const QByteArray& bytes) {
        QFile f(path);
        ASSERT_TRUE(f.open(QIODevice::WriteOnly));
        f.write(bytes);
    }
    static QByteArray read(const QString& path) {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }
    QStringList files() const { return QDir(dir.path()).entryList(QDir::Files, QDir::Name); }
};

// A real database whose table pages are overwritten: the header is fine, the rows are not.
QByteArray damaged_database(const QString& scratch) {
    EXPECT_EQ(db_open_file(scratch, true), QString());
    db_execute("PRAGMA wal_checkpoint(TRUNCATE)");
    db_close();
    QFile f(scratch);
    EXPECT_TRUE(f.open(QIODevice::ReadOnly));
    QByteArray bytes = f.readAll();
    f.close();
    QFile::remove(scratch);
    for (qsizetype i = 4096; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(0x5a);
    return bytes;
}

} // namespace

TEST_F(store_start_test, AnUnreadableFileIsMovedAsideOnTheUsersWordAndANewDatabaseStarts) {
    const QByteArray text = QByteArray("These are my notes, not a database.\n").repeated(200);
    const QByteArray damaged = damaged_database(dir.path() + "/scratch.db");
    for (const auto& [name, bytes, reason] :
         {std::tuple{"text file", text, "file is not a database"},
          std::tuple{"damaged database", damaged, "database disk image is malformed"}}) {
        SCOPED_TRACE(name);
        for (const QString& f : files())
            QFile::remove(dir.path() + "/" + f);
        write(db, bytes);
        prompts::clear_shown();
        prompts::script({box_answer::yes});

        QString why;
        ASSERT_EQ(open_store(why), store_start::ready) << why.toStdString();
        EXPECT_EQ(why, QString());
        ASSERT_EQ(prompts::shown().size(), 1u);
        const shown_box& box = prompts::shown()[0];
        EXPECT_EQ(box.title, QStringLiteral("System Message"));
        EXPECT_EQ(box.buttons, box_buttons::yes_no);
        EXPECT_TRUE(box.text.contains(reason)) << box.text.toStdString();
        EXPECT_TRUE(box.text.contains(QFileInfo(dated).fileName())) << box.text.toStdString();

        // The old file is kept byte for byte under the dated name.
        EXPECT_EQ(read(dated), bytes);
        // The new file is a working database with the delivered rows.
        EXPECT_EQ(shared.default_lambda, 500.0);
        EXPECT_EQ(shared.software_name, QStringLiteral("Lumora"));
        EXPECT_TRUE(shared.baseline_missing);
        EXPECT_NO_THROW(
            db_execute("Insert into system (ParaName,ParaValue) values (?,?) ", {"ComPort", "2"}));
        db_close();
    }
}

TEST_F(store_start_test, NoQuitsAndTouchesNothingAndATakenNameGetsACounter) {
    const QByteArray garbage(8192, '\x42');
    write(db, garbage);
    prompts::script({box_answer::no});
    QString why;
    EXPECT_EQ(open_store(why), store_start::quit);
    EXPECT_EQ(why, QString()) << "the user's choice needs no further box";
    EXPECT_EQ(files(), QStringList{"Lumora.db"});
    EXPECT_EQ(read(db), garbage);

    // A file moved aside earlier today keeps its name; this one gets the next.
    write(dated, "moved earlier");
    prompts::clear_shown();
    prompts::script({box_answer::yes});
    ASSERT_EQ(open_store(why), store_start::ready);
    const QString second = dated.chopped(3) + "-2.db";
    EXPECT_TRUE(prompts::shown().at(0).text.contains(QFileInfo(second).fileName()));
    EXPECT_EQ(read(dated), QByteArray("moved earlier"));
    EXPECT_EQ(read(second), garbage);

    // Journal files left beside a file go with it, so a new database never replays them.
    db_close();
    write(db, "old");
    write(db + "-wal", "old journal");
    const QString third = dated.chopped(3) + "-3.db";
    ASSERT_EQ(db_aside_path(db), third);
    ASSERT_EQ(db_move_aside(db, third), QString());
    EXPECT_EQ(read(third + "-wal"), QByteArray("old journal"));
    EXPECT_FALSE(QFileInfo::exists(db + "-wal"));
    EXPECT_FALSE(QFileInfo::exists(db));
}

TEST_F(store_start_test, AFolderThatCannotHoldTheDatabaseEndsWithItsReasonAndAsksNothing) {
    // A directory where the file should be: SQLite cannot open it, and it is not ours to move.
    ASSERT_TRUE(QDir(dir.path()).mkdir("Lumora.db"));
    QString why;
    EXPECT_EQ(open_store(why), store_start::quit);
    EXPECT_FALSE(why.isEmpty());
    EXPECT_TRUE(prompts::shown().empty());
    EXPECT_TRUE(QFileInfo(db).isDir());
}

TEST_F(store_start_test, AServerThatCannotBeReachedLetsTheProgramStartOnItsFile) {
    qputenv("LUMORA_DATABASE",
            ("postgresql://lab:s3cret@/lumora?host=" + dir.path() + "/gone").toLocal8Bit());
    QString why;
    const store_start result = open_store(why);
    qunsetenv("LUMORA_DATABASE");
    EXPECT_EQ(result, store_start::ready);
    EXPECT_EQ(why, "");
    EXPECT_TRUE(prompts::shown().empty()) << "no box at start: panel 6 says it";
    EXPECT_TRUE(db_on_server());
    EXPECT_NE(db_server_failure(), "");
    EXPECT_FALSE(db_server_failure().contains("s3cret"));
    // The instrument's own rows are in its file; the batches wait for the server.
    EXPECT_EQ(db_query("SELECT ParaValue FROM system WHERE ParaName='Default WL'").rows_.size(), 1u);
    try {
        batch_exists(batch_kind::data, "SPECTRUM", "any");
        ADD_FAILURE() << "the batches were looked up in the file";
    } catch (const db_error& e) {
        EXPECT_TRUE(e.unreachable());
    }
}
