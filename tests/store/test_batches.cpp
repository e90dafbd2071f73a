// Stored batches on a real SQLite file: the name rules, the header as the test of a used name,
// rows back in their order, one transaction per save and delete, the headers an older file gets,
// and the load dialog's list.
#include "platform/grid.h"
#include "platform/prompts.h"
#include "store/DlgLoadData.h"
#include "store/batches.h"
#include "store/database.h"

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

int count_rows(const QString& sql, const std::vector<QVariant>& values = {}) {
    return db_query(sql, values).rows_.at(0).at(0).toInt();
}

struct batches : ::testing::Test {
    QTemporaryDir dir;
    QString path;
    void SetUp() override {
        path = dir.path() + "/Lumora.db";
        ASSERT_EQ(db_open_file(path, true), QString());
        prompts::script();
        prompts::clear_shown();
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

TEST_F(batches, rows_come_back_in_their_order_with_values_as_typed) {
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

TEST_F(batches, a_name_is_taken_per_function_and_table_without_case) {
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

TEST_F(batches, a_save_that_fails_midway_leaves_nothing_and_the_name_free) {
    // A fault at the 5th row, as a full disk would give it.
    raw_exec(path, {"CREATE TRIGGER full BEFORE INSERT ON data WHEN NEW.ParaSeqNo = 5 "
                    "BEGIN SELECT RAISE(ABORT, 'database or disk is full'); END"});
    EXPECT_THROW(batch_save(batch_kind::data, spectrum, "scan1", sample_rows()), db_error);
    EXPECT_FALSE(batch_exists(batch_kind::data, spectrum, "scan1"));
    EXPECT_EQ(count_rows("SELECT count(*) FROM data"), 0);
    raw_exec(path, {"DROP TRIGGER full"});
    EXPECT_EQ(batch_save(batch_kind::data, spectrum, "scan1", sample_rows()), save_result::saved);
}

TEST_F(batches, a_read_only_file_refuses_the_save_and_keeps_what_it_had) {
    ASSERT_EQ(batch_save(batch_kind::data, spectrum, "kept", sample_rows()), save_result::saved);
    db_close();
    ASSERT_EQ(db_open_file(path, true, true), QString());
    EXPECT_THROW(batch_save(batch_kind::data, spectrum, "new", sample_rows()), db_error);
    EXPECT_FALSE(batch_exists(batch_kind::data, spectrum, "new"));
    EXPECT_EQ(batch_read(batch_kind::data, spectrum, "kept").size(), sample_rows().size());
}

TEST_F(batches, delete_reaches_every_function_and_delete_all_the_whole_table) {
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
}

TEST(batch_store_upgrade, an_older_file_gets_headers_from_its_rows) {
    QTemporaryDir dir;
    const QString path = dir.path() + "/Lumora.db";
    raw_exec(path,
             {"CREATE TABLE system (ParaName TEXT, ParaValue TEXT)",
              "INSERT INTO system VALUES ('Default WL','500')",
              "CREATE TABLE data (BatchName TEXT, FunctionName TEXT, ParaSeqNo INTEGER, ParaValue TEXT, "
              "ParaType TEXT, DataSet INTEGER)",
              "CREATE TABLE parameter (BatchName TEXT, FunctionName TEXT, ParaSeqNo INTEGER, ParaValue TEXT)",
              "INSERT INTO data VALUES ('zeta','SPECTRUM',1,'400','P',NULL)",
              "INSERT INTO data VALUES ('Run1','SPECTRUM',1,'400','P',NULL)",
              "INSERT INTO data VALUES ('RUN1','SPECTRUM',2,'800','P',NULL)",
              "INSERT INTO data VALUES ('alpha','KINETIC',1,'500','P',NULL)",
              "INSERT INTO parameter VALUES ('p1','SPECTRUM',1,'400')"});
    ASSERT_EQ(db_open_file(path, true), QString());
    const auto list = batch_list(batch_kind::data, spectrum);
    ASSERT_EQ(list.size(), 2u); // "Run1" and "RUN1" were one batch all along
    EXPECT_EQ(list[0].name.toLower(), "run1");
    EXPECT_EQ(list[1].name, "zeta");
    EXPECT_FALSE(list[0].saved_at.isValid());
    EXPECT_EQ(batch_read(batch_kind::data, spectrum, "run1").size(), 2u);
    EXPECT_EQ(batch_save(batch_kind::data, spectrum, "ZETA", {{"P", 1, "1", 0}}), save_result::name_taken);
    EXPECT_TRUE(batch_exists(batch_kind::parameter, spectrum, "P1"));
    EXPECT_EQ(count_rows("SELECT count(*) FROM system WHERE ParaName='Store Version'"), 1);
    db_close();
    // Opening again adds nothing twice.
    ASSERT_EQ(db_open_file(path, true), QString());
    EXPECT_EQ(batch_list(batch_kind::data, spectrum).size(), 2u);
    db_close();
}

TEST_F(batches, the_load_dialog_lists_picks_and_deletes) {
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
