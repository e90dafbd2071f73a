// Stored batches through the whole program on the simulator: a run saved by name, the function
// left and entered again, the batch loaded back; every cell, curve and setting returns and saving
// the loaded state gives the same rows. The name rules, the empty test, a locked file and the
// instrument brought back to its wavelength after each save and load.
#include "batches_rig.h"
#include "functions/photometry/frmPhotometry.h"
#include "functions/quantitative/frmQuant.h"
#include "functions/timescan/timescan_data.h"
#include "kinetic_rig.h"
#include "photometry_rig.h"
#include "platform/numeric_text.h"
#include "protein_rig.h"
#include "quant_rig.h"
#include "spectrum_rig.h"
#include "store/pg_test_server.h"
#include "timescan_rig.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTabBar>
#include <QTemporaryDir>

using namespace lumora;
using namespace lumora::test;

namespace {

const QString saving_prompt = "Key in a batch name less than 20 characters.\n(Ex., myscan20030902)";

std::vector<QString> box_texts() {
    std::vector<QString> out;
    for (const shown_box& b : prompts::shown())
        if (!b.is_input) out.push_back(b.text);
    return out;
}

} // namespace

TEST(BatchesOnTheSimulator, SpectrumSavedLeftAndLoadedComesBackWhole) {
    spectrum_rig s;
    file_menu menu{s.rig};
    s.set_range(400, 520, false);
    ASSERT_TRUE(s.scan(2));
    s.rig.instrument.control("sample holmium");
    ASSERT_TRUE(s.scan(3));
    s.rig.instrument.control("sample dye");
    ASSERT_TRUE(s.scan(3));
    const std::string rows = rows_text(s.window->result_rows());
    const auto curves = shared.baseline_curves;
    double largest = 0;
    for (int nm = 400; nm <= 520; ++nm)
        largest = std::max(largest, curves[static_cast<std::size_t>(nm - 320)][1]);
    ASSERT_GT(largest, 0.1) << "holmium's bands were scanned";
    keep_shot(s.rig, "batch_spectrum_original");

    const int from = static_cast<int>(s.rig.writes.size());
    const auto sent = menu.commands_after([&] { menu.save("mnuFileSaveD", "holmium-1"); });
    ASSERT_FALSE(prompts::shown().empty());
    EXPECT_EQ(prompts::shown()[0].title, "Save data");
    EXPECT_EQ(prompts::shown()[0].text, saving_prompt);
    EXPECT_TRUE(box_texts().empty());
    const int saving = s.rig.find_write(6, "Saving data, please wait...", from);
    EXPECT_NE(saving, -1);
    EXPECT_GT(s.rig.find_write(6, "Save data completed!", saving), saving);
    EXPECT_EQ(sent, std::vector<int>{cmd_goto_lambda});
    EXPECT_EQ(shared.measure_mode, mm_lambda_panel);

    menu.leave_and_return("mnuFuncSpectrum");
    s.window = qobject_cast<frmSpectrum*>(s.rig.window->current_function());
    ASSERT_EQ(spectrum.curve_count, 0);
    const auto load_sent = menu.commands_after([&] { ASSERT_TRUE(menu.load("mnuFileOpenD", "holmium-1")); });
    EXPECT_EQ(load_sent, std::vector<int>{cmd_goto_lambda});
    EXPECT_NE(s.rig.find_write(6, "Load data completed!", from), -1);
    EXPECT_EQ(spectrum.curve_count, 2);
    EXPECT_EQ(spectrum.curve_state[2], 2);
    for (int nm = 400; nm <= 520; ++nm)
        for (int c = 1; c <= 2; ++c)
            ASSERT_NEAR(
                shared.baseline_curves[static_cast<std::size_t>(nm - 320)][static_cast<std::size_t>(c)],
                curves[static_cast<std::size_t>(nm - 320)][static_cast<std::size_t>(c)], 1e-12)
                << nm;
    EXPECT_EQ(spectrum_setup.start_lambda, 400);
    EXPECT_EQ(rows_text(s.window->result_rows()), rows);
    // Saved again, the loaded state gives the same rows.
    menu.save("mnuFileSaveD", "holmium-2");
    EXPECT_EQ(stored(batch_kind::data, "SPECTRUM", "holmium-2"),
              stored(batch_kind::data, "SPECTRUM", "holmium-1"));
    keep_shot(s.rig, "batch_spectrum_loaded");
    if (const QString dir = qEnvironmentVariable("LUMORA_SHOT_DIR"); !dir.isEmpty()) {
        s.rig.window->menu_action("mnuFileOpenD")->trigger();
        auto* dlg = qobject_cast<DlgLoadData*>(s.rig.window->load_dialog());
        dlg->msgData_Click(2);
        dlg->grab().save(dir + "/batch_DlgLoadData.png");
        dlg->CancelButton_Click();
    }
}

TEST(BatchesOnTheSimulator, NamesAreCheckedAndARefusedSaveWritesNothing) {
    spectrum_rig s;
    file_menu menu{s.rig};
    s.set_range(500, 520, false);
    // Nothing measured yet.
    auto sent = menu.commands_after([&] { menu.save("mnuFileSaveD", "early"); });
    EXPECT_EQ(box_texts(), std::vector<QString>{"The data is empty!"});
    EXPECT_EQ(sent, std::vector<int>{cmd_goto_lambda});
    ASSERT_TRUE(s.scan(2));
    ASSERT_TRUE(s.scan(3));
    const struct {
        QString name, answer;
    } refused[] = {{"", "The batch name is blank or operation canceled!"},
                   {QString(21, 'x'), "The batch name is over 20 characters!"},
                   {"O'Brien", "The batch name is not a-z or 0-9"}};
    for (const auto& r : refused) {
        sent = menu.commands_after([&] { menu.save("mnuFileSaveD", r.name); });
        EXPECT_EQ(box_texts(), std::vector<QString>{r.answer}) << r.name.toStdString();
        EXPECT_EQ(prompts::shown().back().title, "System Message");
        EXPECT_EQ(sent, std::vector<int>{cmd_goto_lambda});
    }
    EXPECT_TRUE(batch_list(batch_kind::data, "SPECTRUM").empty());
    menu.save("mnuFileSaveD", "a 20 character name!"); // exactly 20: taken as it stands
    menu.save("mnuFileSaveD", "Run1");
    menu.save("mnuFileSaveD", "RUN1");
    EXPECT_EQ(box_texts(), std::vector<QString>{"The batch name has already existed, please try another!"});
    EXPECT_EQ(batch_list(batch_kind::data, "SPECTRUM").size(), 2u);

    // Another program holds the file: the save says it failed and keeps nothing.
    {
        QSqlDatabase other = QSqlDatabase::addDatabase("QSQLITE", "other");
        other.setDatabaseName(s.rig.data_folder() + "/Lumora.db");
        ASSERT_TRUE(other.open());
        QSqlQuery q(other);
        ASSERT_TRUE(q.exec("BEGIN EXCLUSIVE"));
        menu.save("mnuFileSaveD", "locked1");
        q.exec("ROLLBACK");
        other.close();
    }
    QSqlDatabase::removeDatabase("other");
    ASSERT_EQ(prompts::shown().size(), 2u);
    EXPECT_EQ(prompts::shown().back().title, "System Message");
    EXPECT_TRUE(prompts::shown().back().text.startsWith("The batch could not be saved"));
    EXPECT_FALSE(batch_exists(batch_kind::data, "SPECTRUM", "locked1"));
    menu.save("mnuFileSaveD", "locked1");
    EXPECT_TRUE(box_texts().empty());
    EXPECT_TRUE(batch_exists(batch_kind::data, "SPECTRUM", "locked1"));

    // A cancelled pick sends nothing and loads nothing.
    s.rig.run_for(1.0);
    sent = menu.commands_after([&] { menu.load("mnuFileOpenD", "Run1", false); });
    EXPECT_TRUE(sent.empty());
}

TEST(BatchesOnTheSimulator, ALabServerThatCannotBeReachedKeepsTheRunAndTakesItOnceItAnswers) {
    QTemporaryDir nowhere;
    qputenv("LUMORA_DATABASE", ("postgresql://lab:s3cret@/lumora?host=" + nowhere.path()).toUtf8());
    spectrum_rig s;
    qunsetenv("LUMORA_DATABASE");
    file_menu menu{s.rig};
    const QString down = "The database is not reachable: ";
    const auto said_down = std::find_if(s.rig.writes.begin(), s.rig.writes.end(), [&](const auto& w) {
        return w.panel == 6 && w.text.startsWith(down) && !w.text.contains("s3cret");
    });
    EXPECT_NE(said_down, s.rig.writes.end()) << "panel 6 says the server is not reachable";
    s.set_range(500, 520, false);
    ASSERT_TRUE(s.scan(2));
    ASSERT_TRUE(s.scan(3));
    const std::string rows = rows_text(s.window->result_rows());
    menu.save("mnuFileSaveD", "run1");
    ASSERT_EQ(box_texts().size(), 1u);
    EXPECT_TRUE(box_texts()[0].startsWith(down)) << box_texts()[0].toStdString();
    EXPECT_FALSE(box_texts()[0].contains("s3cret"));
    EXPECT_EQ(prompts::shown().back().title, "System Message");
    EXPECT_EQ(rows_text(s.window->result_rows()), rows) << "the window keeps its run";

    // The lab's server answers now: the same menu saves there, and the run loads back from it.
    if (pg_test::url().isEmpty())
        GTEST_SKIP() << "no PostgreSQL server: " << pg_test::why_not().toStdString();
    pg_test::wipe();
    ASSERT_EQ(db_open_server(pg_test::url()), QString());
    menu.save("mnuFileSaveD", "run1");
    EXPECT_TRUE(box_texts().empty());
    EXPECT_EQ(s.rig.panel(6), "Save data completed!");
    menu.leave_and_return("mnuFuncSpectrum");
    s.window = qobject_cast<frmSpectrum*>(s.rig.window->current_function());
    ASSERT_TRUE(menu.load("mnuFileOpenD", "run1"));
    EXPECT_EQ(rows_text(s.window->result_rows()), rows);
    menu.save("mnuFileSaveD", "RUN1");
    EXPECT_EQ(box_texts(), std::vector<QString>{"The batch name has already existed, please try another!"});
}

TEST(BatchesOnTheSimulator, ASpectrumParameterBatchBringsTheSetupBack) {
    spectrum_rig s;
    file_menu menu{s.rig};
    s.set_range(450, 650, true);
    menu.save("mnuFileSaveP", "wide-T");
    EXPECT_NE(s.rig.find_write(6, "Save parameter completed!"), -1);
    s.window->clear_form();
    s.rig.window->tbToolBar_ButtonClick("Setup");
    s.set_range(500, 520, false);
    const auto sent = menu.commands_after([&] { menu.load("mnuFileOpenP", ""); }); // the first name
    EXPECT_EQ(sent, std::vector<int>{cmd_goto_lambda});
    EXPECT_EQ(spectrum_setup.start_lambda, 450);
    EXPECT_EQ(spectrum_setup.stop_lambda, 650);
    EXPECT_TRUE(spectrum_setup.percent_t());
    EXPECT_EQ(spectrum.curve_count, 0);
}

TEST(BatchesOnTheSimulator, PhotometryReadingsComeBack) {
    prompts::script();
    photometry_rig p;
    file_menu menu{p.rig};
    photometry_setup_choice choice;
    choice.cycles = 3;
    choice.advanced = true;
    p.choose(choice);
    p.rig.instrument.control("sample dye");
    ASSERT_TRUE(p.read());
    const std::string rows = rows_text(p.window->result_rows());
    QStringList cells;
    for (int r = 0; r <= 3; ++r)
        for (int c = 0; c <= 4; ++c)
            cells << p.window->fgdData().TextMatrix(r, c);
    keep_shot(p.rig, "batch_photometry_original");
    menu.save("mnuFileSaveD", "dye_3");
    menu.leave_and_return("mnuFuncPhotometry");
    p.window = qobject_cast<frmPhotometry*>(p.rig.window->current_function());
    ASSERT_TRUE(p.window->fgdData().TextMatrix(1, 1).isEmpty());
    menu.load("mnuFileOpenD", "dye_3");
    QStringList back;
    for (int r = 0; r <= 3; ++r)
        for (int c = 0; c <= 4; ++c)
            back << p.window->fgdData().TextMatrix(r, c);
    EXPECT_EQ(back, cells);
    EXPECT_EQ(rows_text(p.window->result_rows()), rows);
    keep_shot(p.rig, "batch_photometry_loaded");
    prompts::unscript();
}

TEST(BatchesOnTheSimulator, TimescanRunsComeBackInBothWindows) {
    prompts::script();
    timescan_rig t;
    file_menu menu{t.rig};
    t.set_span(15, 0);
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample reaction:0.02");
    ASSERT_TRUE(t.read(40));
    ASSERT_TRUE(t.read(40));
    const std::string span_rows = rows_text(t.span_window()->result_rows());
    keep_shot(t.rig, "batch_timescan_original");
    menu.save("mnuFileSaveD", "react-2");
    menu.leave_and_return("mnuFuncTimescan");
    ASSERT_EQ(timescan.ts_curve_count, 0);
    menu.load("mnuFileOpenD", "react-2");
    EXPECT_EQ(timescan.ts_curve_count, 2);
    EXPECT_EQ(rows_text(t.span_window()->result_rows()), span_rows);
    keep_shot(t.rig, "batch_timescan_loaded");

    t.rig.window->tbToolBar_ButtonClick("Setup");
    t.set_interval(20, 1, 0);
    ASSERT_TRUE(t.zero());
    t.rig.instrument.control("sample reaction:0.05");
    ASSERT_TRUE(t.read(60));
    frmTimescan2* w = t.interval_window();
    ASSERT_GT(w->fgdTrack().Rows(), 15);
    ASSERT_GT(val(w->fgdTrack().TextMatrix(15, 2).toStdString()), 0.1) << "the reaction was read";
    QStringList cells;
    for (int r = 1; r < w->fgdTrack().Rows(); ++r)
        cells << w->fgdTrack().TextMatrix(r, 0) + "|" + w->fgdTrack().TextMatrix(r, 1) + "|" +
                     w->fgdTrack().TextMatrix(r, 2);
    keep_shot(t.rig, "batch_timescan2_original");
    menu.save("mnuFileSaveD", "react-i");
    menu.save("mnuFileSaveP", "every-1s");
    t.rig.window->tbToolBar_ButtonClick("Setup");
    t.set_interval(30, 2, 0); // clears the grid
    ASSERT_EQ(w->fgdTrack().Rows(), 1);
    menu.load("mnuFileOpenD", "react-i");
    QStringList back;
    for (int r = 1; r < w->fgdTrack().Rows(); ++r)
        back << w->fgdTrack().TextMatrix(r, 0) + "|" + w->fgdTrack().TextMatrix(r, 1) + "|" +
                    w->fgdTrack().TextMatrix(r, 2);
    EXPECT_EQ(back, cells);
    keep_shot(t.rig, "batch_timescan2_loaded");
    EXPECT_EQ(timescan_interval_setup.ti_interval, 1);
    EXPECT_EQ(timescan_interval_setup.ti_stop_time, 30); // not in a result batch
    menu.load("mnuFileOpenP", "every-1s");
    EXPECT_EQ(timescan_interval_setup.ti_stop_time, 20);
    EXPECT_EQ(w->fgdTrack().Rows(), 1);
    prompts::unscript();
}

TEST(BatchesOnTheSimulator, QuantitativeSamplesComeBackAndAskForRun) {
    quant_rig q;
    file_menu menu{q.rig};
    q.key_setup(480, "U/L", 2, 2, {{"2", "0.5"}});
    q.setup().cmdOk_Click();
    ASSERT_TRUE(q.zero());
    ASSERT_TRUE(q.read("neutral:0.5"));
    ASSERT_TRUE(q.read("neutral:1"));
    const std::string rows = rows_text(q.window->result_rows());
    keep_shot(q.rig, "batch_quant_original");
    menu.save("mnuFileSaveD", "factor-2");
    menu.save("mnuFileSaveP", "factor-2");
    menu.leave_and_return("mnuFuncQuant");
    q.window = qobject_cast<frmQuant*>(q.rig.window->current_function());
    q.boxes();
    menu.load("mnuFileOpenD", "factor-2");
    EXPECT_EQ(q.boxes(), std::vector<QString>{"Please press RUN to read samples!"});
    EXPECT_EQ(q.window->tspData()->currentIndex(), 1);
    EXPECT_EQ(quant.sample_count, 2);
    EXPECT_EQ(rows_text(q.window->result_rows()), rows);
    keep_shot(q.rig, "batch_quant_loaded");
    menu.load("mnuFileOpenP", "factor-2");
    EXPECT_EQ(q.boxes(), std::vector<QString>{"Please press RUN to read samples!"});
    EXPECT_EQ(quant.cal.fit_kb, 0.5);
}

TEST(BatchesOnTheSimulator, ProteinTablesComeBackRefittedAndReadOnWithSamples) {
    protein_rig p;
    file_menu menu{p.rig};
    p.key_setup(6, 1, 1, 2, {"0.5", "1.0"});
    p.setup().cmdOk_Click();
    ASSERT_TRUE(p.zero());
    ASSERT_TRUE(p.read("standard:0.5"));
    ASSERT_TRUE(p.read("standard:1.0"));
    ASSERT_TRUE(p.read("standard:0.75"));
    const std::string rows = rows_text(p.window->result_rows());
    const QString cal_conc = p.data(2, 3);
    ASSERT_FALSE(cal_conc.isEmpty());
    menu.save("mnuFileSaveD", "bradford-1");
    menu.save("mnuFileSaveP", "bradford-1");
    menu.leave_and_return("mnuFuncProtein");
    p.window = qobject_cast<frmProtein*>(p.rig.window->current_function());
    ASSERT_EQ(p.data(2, 2), "") << "the window came back empty";
    p.boxes();
    menu.load("mnuFileOpenD", "bradford-1");
    EXPECT_EQ(p.boxes(), std::vector<QString>{"Please press RUN to read samples!"});
    EXPECT_EQ(p.window->tspData()->currentIndex(), 1);
    EXPECT_EQ(p.data(2, 3), cal_conc);
    EXPECT_EQ(p.sample(2, 0), "Avg1");
    EXPECT_EQ(rows_text(p.window->result_rows()), rows);
    keep_shot(p.rig, "batch_protein_loaded");
    // The next Read goes on with the samples.
    ASSERT_TRUE(p.read("standard:0.5"));
    EXPECT_EQ(p.sample(3, 0), "2-1");
    EXPECT_NEAR(p.sample(3, 2).toDouble(), 0.5, 0.02);
    // The parameter batch: the setup back, the tables wiped, no message.
    protein.std_reps = 3;
    menu.load("mnuFileOpenP", "bradford-1");
    EXPECT_TRUE(p.boxes().empty());
    EXPECT_EQ(protein.std_reps, 1);
    EXPECT_EQ(p.data(3, 1), "1.000");
    EXPECT_EQ(p.data(3, 2), "");
}

TEST(BatchesOnTheSimulator, KineticRunAndOutputRowsComeBackWithTheFit) {
    prompts::script();
    kinetic_rig t;
    file_menu menu{t.rig};
    kinetic_setup_values v;
    v.lag = 2, v.rate = 15, v.factor = 100;
    ASSERT_TRUE(t.apply(*t.setup(), v));
    ASSERT_TRUE(t.zero());
    menu.save("mnuFileSaveD", "too-early");
    EXPECT_EQ(box_texts(), std::vector<QString>{"The data is empty!"});
    t.rig.instrument.control("sample reaction:0.01");
    ASSERT_TRUE(t.read(60));
    ASSERT_TRUE(t.read(60));
    ASSERT_GT(kinetic.fit.dabs_dt, 0) << "the reaction was read";
    const std::string rows = rows_text(t.window()->result_rows());
    const auto samples = kinetic.kn_samples;
    const double rate = kinetic.fit.dabs_dt;
    QStringList cells;
    for (int r = 0; r < t.window()->fgdValley().Rows(); ++r)
        for (int c = 1; c <= 4; ++c)
            cells << t.window()->fgdValley().TextMatrix(r, c);
    ASSERT_EQ(t.window()->fgdValley().Rows(), 3);
    keep_shot(t.rig, "batch_kinetic_original");
    menu.save("mnuFileSaveD", "rate-2");
    menu.save("mnuFileSaveP", "rate-2");
    EXPECT_EQ(t.window()->result_rows().size(), 20u + 281 + 8);

    menu.leave_and_return("mnuFuncKinetic");
    t.window()->clear_form(); // the dialog's "Clear data": the window keeps its runs over a return
    ASSERT_FALSE(t.window()->has_data());
    menu.load("mnuFileOpenD", "rate-2");
    EXPECT_TRUE(t.window()->has_data());
    for (int k = 0; k < kn_samples_count; ++k)
        ASSERT_NEAR(kinetic.kn_samples[static_cast<std::size_t>(k)], samples[static_cast<std::size_t>(k)],
                    1e-12);
    EXPECT_NEAR(kinetic.fit.dabs_dt, rate, 1e-9);
    QStringList back;
    for (int r = 0; r < t.window()->fgdValley().Rows(); ++r)
        for (int c = 1; c <= 4; ++c)
            back << t.window()->fgdValley().TextMatrix(r, c);
    EXPECT_EQ(back, cells);
    EXPECT_EQ(rows_text(t.window()->result_rows()), rows);
    keep_shot(t.rig, "batch_kinetic_loaded");

    kinetic_setup_values other = v;
    other.rate = 30, other.unit = "None";
    ASSERT_TRUE(t.apply(t.open_setup(), other));
    menu.load("mnuFileOpenP", "rate-2");
    EXPECT_EQ(kinetic_setup.kn_rate, 15);
    EXPECT_EQ(kinetic_setup.kn_unit, "U/L");
    EXPECT_FALSE(t.window()->has_data());
    prompts::unscript();
}
