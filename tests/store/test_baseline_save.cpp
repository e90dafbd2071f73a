// The baseline save on a real SQLite file that another program locks, that cannot be written, or
// that has no room left: the user is told once, the file keeps what it had, the memory keeps the scan.
#include "link/link_context.h"
#include "link/shared_state.h"
#include "platform/prompts.h"
#include "store/database.h"
#include "store/settings_store.h"
#include "support/wait.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <algorithm>
#include <gtest/gtest.h>

using namespace lumora;

namespace {

// A second connection to the same file, as another program would hold it.
class other_program {
public:
    explicit other_program(const QString& path) {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name_);
        db.setDatabaseName(path);
        EXPECT_TRUE(db.open());
    }
    ~other_program() {
        QSqlDatabase::database(name_).close();
        QSqlDatabase::removeDatabase(name_);
    }
    bool exec(const QString& sql) {
        QSqlQuery q(QSqlDatabase::database(name_));
        const bool ok = q.exec(sql);
        EXPECT_TRUE(ok) << sql.toStdString() << ": " << q.lastError().text().toStdString();
        return ok;
    }

private:
    const QString name_ = QStringLiteral("other program");
};

struct baseline_save : ::testing::Test {
    QTemporaryDir dir;
    QString path;
    std::vector<std::pair<int, QString>> panel_log;
    std::vector<bool> cursor;

    void SetUp() override {
        path = dir.path() + "/Lumora.db";
        reset_shared_state();
        link_ctx.hooks.set_panel = [this](int n, const QString& t) { panel_log.emplace_back(n, t); };
        link_ctx.hooks.busy_cursor = [this](bool on) { cursor.push_back(on); };
        prompts::script();
        prompts::clear_shown();
        // A stored baseline of 7 everywhere, then a new scan in memory.
        ASSERT_EQ(db_open_file(path, true), QString());
        set_baseline(7);
        save_baseline();
        ASSERT_EQ(last_panel6(), QStringLiteral("Baseline saved..."));
        set_baseline(123456.789012345);
        panel_log.clear();
        cursor.clear();
    }
    void TearDown() override {
        db_close();
        link_ctx = link_context{};
        prompts::unscript();
    }

    static void set_baseline(double base) {
        for (std::size_t i = 0; i < shared.baseline_curves.size(); ++i) {
            shared.baseline_curves[i][0] = base + static_cast<double>(i);
            shared.reference_intensity[i] = base + static_cast<double>(i);
        }
    }
    QString last_panel6() const {
        for (auto it = panel_log.rbegin(); it != panel_log.rend(); ++it)
            if (it->first == 6) return it->second;
        return {};
    }
    std::vector<QString> panel6() const {
        std::vector<QString> texts;
        for (const auto& [n, t] : panel_log)
            if (n == 6) texts.push_back(t);
        return texts;
    }
    // The stored rows as the next start reads them, through a connection of its own.
    std::vector<double> stored() const {
        std::vector<double> values;
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("reader"));
        db.setDatabaseName(path);
        if (db.open()) {
            QSqlQuery q(db);
            q.exec("SELECT ParaValue FROM system WHERE ParaName LIKE 'BL%' ORDER BY ParaName");
            while (q.next())
                values.push_back(q.value(0).toDouble());
        }
        db = {};
        QSqlDatabase::removeDatabase(QStringLiteral("reader"));
        return values;
    }
    static std::vector<double> baseline_of(double base) {
        std::vector<double> v;
        for (int i = 0; i < wavelength_points; ++i)
            v.push_back(base + i);
        return v;
    }
};

} // namespace

TEST_F(baseline_save, WaitsForAnotherProgramsLockFromTheEventLoopAndSavesTheScanOfItsMoment) {
    other_program other(path);
    other.exec("BEGIN EXCLUSIVE");
    save_baseline();
    // The call came back while the lock is held: nothing written yet, nothing told yet.
    EXPECT_TRUE(db_write_pending("baseline"));
    EXPECT_EQ(panel6(), std::vector<QString>{"Saving baseline..."});
    EXPECT_EQ(stored(), baseline_of(7));
    // A scan that starts meanwhile does not leak into the save.
    set_baseline(55);
    QTimer::singleShot(800, [&] { other.exec("COMMIT"); });

    ASSERT_TRUE(test::wait_until([&] { return !db_write_pending("baseline"); }, 10000));
    EXPECT_EQ(stored(), baseline_of(123456.789012345));
    std::vector<QString> expected{"Saving baseline..."};
    for (int p = 10; p <= 110; p += 10)
        expected.push_back(QString("Saving baseline %1% done...").arg(p));
    expected.push_back("Baseline saved...");
    EXPECT_EQ(panel6(), expected);
    EXPECT_TRUE(prompts::shown().empty());
    EXPECT_EQ(cursor, (std::vector<bool>{true, false}));
    EXPECT_FALSE(shared.baseline_missing);
}

TEST_F(baseline_save, AFailedSaveSaysWhyOnceAndLeavesFileAndMemoryAsTheyWere) {
    struct fault {
        const char* name;
        const char* reason;
        std::function<void(baseline_save&)> make;
    };
    std::unique_ptr<other_program> other;
    const fault faults[] = {
        {"lock held for good", "database is locked",
         [&](baseline_save& t) {
             other = std::make_unique<other_program>(t.path);
             other->exec("BEGIN EXCLUSIVE");
         }},
        {"read-only file", "attempt to write a readonly database",
         [](baseline_save& t) { ASSERT_EQ(db_open_file(t.path, true, true), QString()); }},
        // No page beyond those the file has: the longer numbers of the new scan do not fit.
        {"full disk", "database or disk is full",
         [](baseline_save&) { db_execute("PRAGMA max_page_count=1"); }},
    };
    for (const auto& f : faults) {
        SCOPED_TRACE(f.name);
        ASSERT_EQ(db_open_file(path, true), QString());
        f.make(*this);
        panel_log.clear();
        cursor.clear();
        prompts::clear_shown();
        shared.baseline_missing = true;

        save_baseline();
        ASSERT_TRUE(test::wait_until([&] { return !db_write_pending("baseline"); }, 10000));
        other.reset();

        EXPECT_EQ(last_panel6(), QStringLiteral("Baseline not saved: ") + f.reason);
        ASSERT_EQ(prompts::shown().size(), 1u);
        EXPECT_EQ(prompts::shown()[0].title, QStringLiteral("System Message"));
        EXPECT_TRUE(prompts::shown()[0].text.contains(f.reason)) << prompts::shown()[0].text.toStdString();
        EXPECT_EQ(stored(), baseline_of(7)) << "all rows or none";
        EXPECT_EQ(shared.baseline_curves[180][0], 123456.789012345 + 180) << "the scan stays in use";
        EXPECT_EQ(shared.reference_intensity[180], 123456.789012345 + 180);
        EXPECT_TRUE(shared.baseline_missing) << "nothing is stored";
        EXPECT_EQ(cursor, (std::vector<bool>{true, false}));
    }
}

TEST_F(baseline_save, ANewSaveReplacesOneStillWaitingAndClosingDropsIt) {
    other_program other(path);
    other.exec("BEGIN EXCLUSIVE");
    save_baseline();
    set_baseline(55);
    save_baseline();
    other.exec("COMMIT");
    ASSERT_TRUE(test::wait_until([&] { return !db_write_pending("baseline"); }, 10000));
    EXPECT_EQ(stored(), baseline_of(55));
    EXPECT_TRUE(prompts::shown().empty()) << "the replaced save is not a failure";
    EXPECT_EQ(std::count(panel_log.begin(), panel_log.end(), std::pair<int, QString>{6, "Baseline saved..."}),
              1);

    other.exec("BEGIN EXCLUSIVE");
    set_baseline(99);
    save_baseline();
    db_close();
    other.exec("COMMIT");
    EXPECT_FALSE(db_write_pending("baseline"));
    QTest::qWait(600);
    EXPECT_EQ(stored(), baseline_of(55));
    EXPECT_TRUE(prompts::shown().empty());
}
