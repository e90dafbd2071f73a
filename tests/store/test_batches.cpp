// Stored batches, on a real SQLite file and on a real PostgreSQL server: the name rules, the header
// as the test of a used name, rows back in their order, one transaction per save and delete, the
// headers an older store gets, the load dialog's list, and the server's trash.
#include "platform/grid.h"
#include "platform/prompts.h"
#include "store/DlgLoadData.h"
#include "store/batches.h"
#include "store/database.h"
#include "store_backend.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace lumora;

namespace {

const QString spectrum = QStringLiteral("SPECTRUM");
const QString kinetic = QStringLiteral("KINETIC");

std::vector<batch_row> sample_rows() {
    row_writer w;
    for (int i = 1; i <= 12; ++i)
        w.add(i * 10);
    w.add(QStringLiteral("O'Brien's lab"));
    w.restart(QStringLiteral("D"));
    for (int set = 1; set <= 11; ++set)
        for (int nm = 498; nm <= 502; ++nm)
            w.add_at(nm, stored_text(set + nm / 1000.0), set);
    return w.rows;
}

// Raw SQL on the same file, as another program (or an older version of this one) would run it.
void raw_exec(const QString& path, const QStringList& statements) {
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("raw"));
        db.setDatabaseName(path);
        ASSERT_TRUE(db.open());
        QSqlQuery q(db);
        for (const QString& sql : statements)
            ASSERT_TRUE(q.exec(sql)) << sql.toStdString();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("raw"));
}

// Counts rows where the batches live.
int count_rows(const QString& sql, const std::vector<QVariant>& values = {}) {
    batch_scope scope;
    return db_query(sql, values).rows_.at(0).at(0).toInt();
}

struct batches : ::testing::TestWithParam<backend> {
    QTemporaryDir dir;
    QString path;
    bool on_server() const { return GetParam() == backend::server; }
    void SetUp() override {
        path = dir.path() + "/Lumora.db";
        prompts::script();
        prompts::clear_shown();
        if (on_server()) {
            LUMORA_NEED_SERVER();
            pg_test::wipe();
        }
        ASSERT_EQ(db_open_file(path, true), QString());
        if (on_server()) {
            ASSERT_EQ(db_open_server(pg_test::url()), QString());
        }
    }
    void TearDown() override {
        db_close();
        prompts::unscript();
    }
};

} // namespace

TEST(batch_names, rules_of_a_new_name) {
    const struct {
        QString name;
        name_verdict verdict;
    } cases[] = {
        {"", name_verdict::blank},
        {"holmium-1", name_verdict::ok},
        {"Run_09-b", name_verdict::ok},
        {QString(19, 'a'), name_verdict::ok},
        {"with blank", name_verdict::not_alphanumeric},
        {"O'Brien", name_verdict::not_alphanumeric},
        {"scan.1", name_verdict::not_alphanumeric},
        {QString::fromUtf8("mesure\xc3\xa9"), name_verdict::not_alphanumeric},
        {"a 20 character name", name_verdict::not_alphanumeric}, // 19 characters
        {"a 20 character name!", name_verdict::ok},              // exactly 20: not checked
        {QString(21, 'a'), name_verdict::over_20},
    };
    for (const auto& c : cases)
        EXPECT_EQ(check_batch_name(c.name), c.verdict) << c.name.toStdString();
    EXPECT_EQ(name_verdict_text(name_verdict::over_20), "The batch name is over 20 characters!");
    EXPECT_EQ(name_verdict_text(name_verdict::not_alphanumeric), "The batch name is not a-z or 0-9");
}

TEST_P(batches, rows_come_back_in_their_order_with_values_as_typed) {
    const auto rows = sample_rows();
    ASSERT_EQ(batch_save(batch_kind::data, spectrum, "holmium-1", rows), save_result::saved);
    const auto back = batch_read(batch_kind::data, spectrum, "HOLMIUM-1");
    ASSERT_EQ(back.size(), rows.size());
    // "D" before "P"; curves by their number (10 after 9), then by wavelength.
    EXPECT_EQ(back.front().type, "D");
    EXPECT_EQ(back.front().set, 1);
    EXPECT_EQ(back[5 * 9].set, 10);
    EXPECT_EQ(back[5 * 9].seq, 498);
    row_cursor p(back, "P");
    for (int i = 1; i <= 12; ++i)
        EXPECT_EQ(p.integer(), i * 10); // 10, 11, 12 after 9
    EXPECT_EQ(p.text(), "O'Brien's lab");
    EXPECT_TRUE(p.at_end());
    EXPECT_EQ(p.text(), "");
    EXPECT_TRUE(p.ran_short());
    // Saving what was read gives the same rows.
    ASSERT_EQ(batch_save(batch_kind::data, spectrum, "holmium-2", back), save_result::saved);
    const auto again = batch_read(batch_kind::data, spectrum, "holmium-2");
    ASSERT_EQ(again.size(), back.size());
    for (std::size_t i = 0; i < back.size(); ++i)
        EXPECT_TRUE(again[i].type == back[i].type && again[i].seq == back[i].seq &&
                    again[i].value == back[i].value && again[i].set == back[i].set)
            << i;
}

TEST_P(batches, quotes_backslashes_and_accents_in_names_and_values_come_back_as_typed) {
    // A name of exactly 20 characters is taken as typed.
    const QString name = QString::fromUtf8("O'Brien \"n\" \\ M\xc3\xbc-\xc3\xa9"
                                           "1x");
    ASSERT_EQ(name.size(), 20);
    ASSERT_EQ(check_batch_name(name), name_verdict::ok);
    const QString value = QString::fromUtf8("a'b\"c\\d\t\xc3\xbc\xe2\x82\xac; DROP TABLE data; --");
    ASSERT_EQ(batch_save(batch_kind::data, spectrum, name, {{"P", 1, value, 0}, {"D", 500, "0.5", 1}}),
              save_result::saved);
    ASSERT_EQ(batch_save(batch_kind::parameter, spectrum, name, {{"P", 1, value, 0}}), save_result::saved);
    QString shouted = name;
    shouted.replace("O'Brien", "O'BRIEN");
    EXPECT_TRUE(batch_exists(batch_kind::data, spectrum, shouted));
    EXPECT_EQ(batch_save(batch_kind::data, spectrum, shouted, {{"P", 1, "1", 0}}), save_result::name_taken);
    EXPECT_EQ(batch_list(batch_kind::data, spectrum).at(0).name, name);
    EXPECT_EQ(batch_read(batch_kind::data, spectrum, shouted).at(1).value, value);
    EXPECT_EQ(batch_read(batch_kind::parameter, spectrum, name).at(0).value, value);
    batch_delete(batch_kind::data, shouted);
    EXPECT_FALSE(batch_exists(batch_kind::data, spectrum, name));
    EXPECT_TRUE(batch_exists(batch_kind::parameter, spectrum, name));
}

TEST_P(batches, a_name_is_taken_per_function_and_table_without_case) {
    ASSERT_EQ(batch_save(batch_kind::data, spectrum, "Run1", sample_rows()), save_result::saved);
    const int rows_before = count_rows("SELECT count(*) FROM data");
    EXPECT_TRUE(batch_exists(batch_kind::data, spectrum, "RUN1"));
    EXPECT_EQ(batch_save(batch_kind::data, spectrum, "RUN1", sample_rows()), save_result::name_taken);
    EXPECT_EQ(count_rows("SELECT count(*) FROM data"), rows_before);
    // The same name under another function, or as parameters, is another batch.
    EXPECT_FALSE(batch_exists(batch_kind::data, kinetic, "Run1"));
    EXPECT_FALSE(batch_exists(batch_kind::parameter, spectrum, "Run1"));
    EXPECT_EQ(batch_save(batch_kind::data, kinetic, "run1", {{"P", 1, "500", 0}}), save_result::saved);
    EXPECT_EQ(batch_save(batch_kind::parameter, spectrum, "Run1", {{"P", 1, "400", 0}}), save_result::saved);
    EXPECT_EQ(batch_read(batch_kind::parameter, spectrum, "run1").at(0).value, "400");
    EXPECT_EQ(batch_read(batch_kind::data, kinetic, "RUN1").size(), 1u);
}

TEST_P(batches, a_save_that_fails_midway_leaves_nothing_and_the_name_free) {
    // A fault at the 5th row, as a full disk would give it.
    if (on_server())
        pg_test::exec(
            {"CREATE FUNCTION full_disk() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN IF "
             "NEW.ParaSeqNo = 5 THEN RAISE EXCEPTION 'could not extend file: No space left on device'; "
             "END IF; RETURN NEW; END $$",
             "CREATE TRIGGER full_disk BEFORE INSERT ON data FOR EACH ROW EXECUTE FUNCTION full_disk()"});
    else
        raw_exec(path, {"CREATE TRIGGER full_disk BEFORE INSERT ON data WHEN NEW.ParaSeqNo = 5 "
                        "BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END"});
    try {
        batch_save(batch_kind::data, spectrum, "scan1", sample_rows());
        ADD_FAILURE() << "the save went through";
    } catch (const db_error& e) {
        EXPECT_FALSE(e.unreachable()) << "a refused statement is no lost connection";
        EXPECT_FALSE(e.duplicate());
    }
    EXPECT_FALSE(batch_exists(batch_kind::data, spectrum, "scan1"));
    EXPECT_EQ(count_rows("SELECT count(*) FROM data"), 0);
    if (on_server())
        pg_test::exec({"DROP TRIGGER full_disk ON data"});
    else
        raw_exec(path, {"DROP TRIGGER full_disk"});
    EXPECT_EQ(batch_save(batch_kind::data, spectrum, "scan1", sample_rows()), save_result::saved);
}

TEST_P(batches, a_read_only_store_refuses_the_save_and_keeps_what_it_had) {
    ASSERT_EQ(batch_save(batch_kind::data, spectrum, "kept", sample_rows()), save_result::saved);
    if (on_server()) {
        batch_scope scope;
        db_execute("SET SESSION default_transaction_read_only = on");
    } else {
        db_close();
        ASSERT_EQ(db_open_file(path, true, true), QString());
    }
    EXPECT_THROW(batch_save(batch_kind::data, spectrum, "new", sample_rows()), db_error);
    EXPECT_FALSE(batch_exists(batch_kind::data, spectrum, "new"));
    EXPECT_EQ(batch_read(batch_kind::data, spectrum, "kept").size(), sample_rows().size());
}

TEST_P(batches, delete_reaches_every_function_and_delete_all_the_whole_table) {
    for (const QString& f : {spectrum, kinetic})
        for (const char* name : {"a1", "b2"}) {
            ASSERT_EQ(batch_save(batch_kind::data, f, name, {{"P", 1, "1", 0}}), save_result::saved);
            ASSERT_EQ(batch_save(batch_kind::parameter, f, name, {{"P", 1, "1", 0}}), save_result::saved);
        }
    batch_delete(batch_kind::data, "A1");
    EXPECT_FALSE(batch_exists(batch_kind::data, spectrum, "a1"));
    EXPECT_FALSE(batch_exists(batch_kind::data, kinetic, "a1"));
    EXPECT_TRUE(batch_exists(batch_kind::parameter, kinetic, "a1"));
    EXPECT_TRUE(batch_read(batch_kind::data, kinetic, "a1").empty());
    batch_delete_all(batch_kind::data);
    EXPECT_TRUE(batch_list(batch_kind::data, kinetic).empty());
    EXPECT_EQ(count_rows("SELECT count(*) FROM data"), 0);
    EXPECT_EQ(batch_list(batch_kind::parameter, spectrum).size(), 2u);
    if (on_server()) {
        // Nothing on a shared server goes by one click: all four data batches wait in the trash.
        EXPECT_EQ(
            count_rows("SELECT count(*) FROM trash_batches WHERE ParaType='D' AND DeletedAt IS NOT NULL"), 4);
        EXPECT_EQ(count_rows("SELECT count(*) FROM trash_data"), 4);
    }
}

TEST_P(batches, a_deleted_batch_comes_back_from_the_servers_trash_only) {
    const auto rows = sample_rows();
    ASSERT_EQ(batch_save(batch_kind::data, spectrum, "Run1", {{"P", 1, "old", 0}}), save_result::saved);
    batch_delete(batch_kind::data, "run1");
    ASSERT_EQ(batch_save(batch_kind::data, spectrum, "Run1", rows), save_result::saved);
    const auto before = batch_read(batch_kind::data, spectrum, "Run1");
    ASSERT_EQ(batch_save(batch_kind::parameter, kinetic, "Run1", {{"P", 1, "9", 0}}), save_result::saved);
    DlgLoadData* dlg = nullptr;
    batch_mode = "D";
    dlg = new DlgLoadData(spectrum);
    prompts::script({box_answer::ok});
    dlg->Command1_Click(0); // Delete, as the user does it
    dlg->close();
    if (!on_server()) {
        EXPECT_EQ(batch_restore(spectrum, "run1").result, restore_result::no_trash);
        return;
    }
    // The newest deletion comes back, whole and under its own name.
    const restored_batch back = batch_restore(spectrum, "RUN1");
    ASSERT_EQ(back.result, restore_result::restored);
    EXPECT_EQ(back.name, "Run1");
    EXPECT_EQ(back.kind, batch_kind::data);
    EXPECT_TRUE(back.deleted_at.isValid());
    EXPECT_FALSE(back.deleted_by.isEmpty());
    const auto full = batch_read(batch_kind::data, spectrum, "run1");
    ASSERT_EQ(full.size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i)
        EXPECT_TRUE(full[i].type == before[i].type && full[i].value == before[i].value &&
                    full[i].seq == before[i].seq && full[i].set == before[i].set)
            << i;
    EXPECT_EQ(batch_list(batch_kind::data, spectrum).at(0).name, "Run1");
    // The older one stays in the trash while its name is taken.
    EXPECT_EQ(batch_restore(spectrum, "run1").result, restore_result::name_taken);
    EXPECT_EQ(count_rows("SELECT count(*) FROM trash_batches"), 1);
    EXPECT_EQ(count_rows("SELECT count(*) FROM trash_data"), 1);
    EXPECT_EQ(batch_restore(spectrum, "never-saved").result, restore_result::not_in_trash);
    // The parameter batch of the same name under another function was never touched.
    EXPECT_TRUE(batch_exists(batch_kind::parameter, kinetic, "run1"));
}

// Tables an older program left (rows, no headers) are brought up to date where they are.
TEST_P(batches, an_older_store_gets_headers_from_its_rows) {
    db_close();
    const QStringList older = {
        "CREATE TABLE data (BatchName TEXT, FunctionName TEXT, ParaSeqNo INTEGER, ParaValue TEXT, "
        "ParaType TEXT, DataSet INTEGER)",
        "CREATE TABLE parameter (BatchName TEXT, FunctionName TEXT, ParaSeqNo INTEGER, ParaValue TEXT)",
        "INSERT INTO data VALUES ('zeta','SPECTRUM',1,'400','P',NULL)",
        "INSERT INTO data VALUES ('Run1','SPECTRUM',1,'400','P',NULL)",
        "INSERT INTO data VALUES ('RUN1','SPECTRUM',2,'800','P',NULL)",
        "INSERT INTO data VALUES ('alpha','KINETIC',1,'500','P',NULL)",
        "INSERT INTO parameter VALUES ('p1','SPECTRUM',1,'400')"};
    QTemporaryDir other;
    const QString file = other.path() + "/Lumora.db";
    if (on_server()) {
        pg_test::wipe();
        pg_test::exec(older);
    } else {
        raw_exec(file, QStringList{"CREATE TABLE system (ParaName TEXT, ParaValue TEXT)",
                                   "INSERT INTO system VALUES ('Default WL','500')"} +
                           older);
    }
    const auto open = [&] {
        ASSERT_EQ(db_open_file(file, true), QString());
        if (on_server()) {
            ASSERT_EQ(db_open_server(pg_test::url()), QString());
        }
    };
    open();
    const auto list = batch_list(batch_kind::data, spectrum);
    ASSERT_EQ(list.size(), 2u); // "Run1" and "RUN1" were one batch all along
    EXPECT_EQ(list[0].name.toLower(), "run1");
    EXPECT_EQ(list[1].name, "zeta");
    EXPECT_FALSE(list[0].saved_at.isValid());
    EXPECT_EQ(batch_read(batch_kind::data, spectrum, "run1").size(), 2u);
    EXPECT_EQ(batch_save(batch_kind::data, spectrum, "ZETA", {{"P", 1, "1", 0}}), save_result::name_taken);
    EXPECT_TRUE(batch_exists(batch_kind::parameter, spectrum, "P1"));
    if (!on_server()) {
        EXPECT_EQ(count_rows("SELECT count(*) FROM system WHERE ParaName='Store Version'"), 1);
    }
    db_close();
    // Opening again adds nothing twice.
    open();
    EXPECT_EQ(batch_list(batch_kind::data, spectrum).size(), 2u);
}

TEST_P(batches, the_load_dialog_lists_picks_and_deletes) {
    batch_mode = "D";
    {
        auto* empty = new DlgLoadData(spectrum);
        EXPECT_EQ(empty->windowTitle(), "Select a batch name");
        EXPECT_EQ(empty->msgData().Rows(), 1);
        EXPECT_EQ(empty->msgData().TextMatrix(0, 0), "Batch Name");
        empty->Command1_Click(0); // nothing to delete: not even asked
        EXPECT_TRUE(prompts::shown().empty());
        empty->OKButton_Click();
        EXPECT_EQ(batch_name, "");
    }
    for (const char* name : {"b-2", "a-1", "C-3"})
        ASSERT_EQ(batch_save(batch_kind::data, spectrum, name, {{"P", 1, "1", 0}}), save_result::saved);
    ASSERT_EQ(batch_save(batch_kind::data, kinetic, "k-1", {{"P", 1, "1", 0}}), save_result::saved);
    ASSERT_EQ(batch_save(batch_kind::parameter, spectrum, "p-1", {{"P", 1, "1", 0}}), save_result::saved);

    auto* dlg = new DlgLoadData(spectrum);
    ASSERT_EQ(dlg->msgData().Rows(), 4);
    EXPECT_EQ(dlg->msgData().TextMatrix(1, 0), "a-1");
    EXPECT_EQ(dlg->msgData().TextMatrix(3, 0), "C-3");
    EXPECT_TRUE(dlg->msgData().item(1, 0)->toolTip().contains("Saved by"));
    EXPECT_EQ(batch_name, "a-1"); // OK with no click takes the first
    dlg->msgData_Click(0);        // the heading is no name
    EXPECT_EQ(batch_name, "a-1");
    dlg->msgData_Click(2);
    EXPECT_EQ(dlg->selection(), "b-2");
    prompts::script({box_answer::cancel});
    dlg->Command1_Click(0);
    EXPECT_EQ(dlg->msgData().Rows(), 4);
    prompts::script({box_answer::ok});
    dlg->Command1_Click(0);
    ASSERT_EQ(prompts::shown().back().text, "Are you sure to delete this batch name ?");
    EXPECT_EQ(dlg->msgData().Rows(), 3);
    dlg->CancelButton_Click();
    EXPECT_EQ(batch_name, "");

    batch_mode = "P";
    auto* params = new DlgLoadData(spectrum);
    ASSERT_EQ(params->msgData().Rows(), 2);
    prompts::script({box_answer::ok});
    params->Command1_Click(1);
    EXPECT_EQ(prompts::shown().back().text, "Are you sure to delete entire batch ?");
    EXPECT_EQ(params->msgData().Rows(), 1);
    EXPECT_TRUE(batch_exists(batch_kind::data, kinetic, "k-1"));
    params->close();
    batch_mode = "D";
}

LUMORA_ON_BOTH_BACKENDS(batches);
