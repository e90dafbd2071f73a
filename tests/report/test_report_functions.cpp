// The other functions' pieces: Photometry's rows across the page, both Timescans' sheets and
// read data, Quantitative's samples and equation, and the quick print of a setup dialog.
#include "functions/kinetic/frmKinetic.h"
#include "functions/kinetic/kinetic_data.h"
#include "functions/photometry/dlgPhotometry.h"
#include "functions/photometry/frmPhotometry.h"
#include "functions/photometry/photometry_setup.h"
#include "functions/protein/frmProtein.h"
#include "functions/protein/protein_rows.h"
#include "functions/protein/protein_setup.h"
#include "functions/quantitative/frmQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "functions/timescan/dlgTimescan.h"
#include "functions/timescan/frmTimescan.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_setup.h"
#include "functions/timescan_interval/frmTimescan2.h"
#include "functions/timescan_interval/timescan_interval_data.h"
#include "platform/grid.h"
#include "platform/numeric_text.h"
#include "report/export_excel.h"
#include "report/quick_print.h"
#include "report/report_make.h"
#include "report_fixture.h"

#include <QCheckBox>
#include <QDir>
#include <QPushButton>
#include <QRegularExpression>
#include <QTest>

namespace lumora::test {
namespace {

class ReportFunctions : public ::testing::Test {
protected:
    void SetUp() override {
        reset_shared_state();
        set_default_colors();
        link_ctx = link_context{};
        qputenv("LUMORA_DATA_DIR", data_.path().toLocal8Bit());
        prompts::script();
        prompts::clear_shown();
    }
    void TearDown() override { prompts::unscript(); }
    QString export_as(function_window& w, const QString& name) {
        prompts::script({}, {name});
        return export_excel(w);
    }
    QTemporaryDir data_;
};

TEST_F(ReportFunctions, PhotometryPrintsSelectedRowsWithZeroMarksAndExportsEveryRow) {
    reset_photometry();
    photometry_setup.ph_lambda_count = 2;
    photometry_setup.ph_lambda = {450, 550};
    frmPhotometry w(*function_by_id(fid_photometry));
    grid& g = w.fgdData();
    g.setRows(20);
    g.setCols(3);
    const char* cells[3][2] = {{"0.001", "0.002"}, {"0.500", "0.600"}, {"0.700", "0.800"}};
    for (int r = 1; r <= 3; ++r) {
        g.setTextMatrix(r, 0, QString::number(r) + "  V");
        for (int c = 1; c <= 2; ++c)
            g.setTextMatrix(r, c, cells[r - 1][c - 1]);
    }
    auto& run = photometry_run;
    run.ph_data_count = 6;
    run.ph_marks[0] = {1, 1}; // row 1: a Zero pass
    run.ph_marks[1] = {1, 1};
    run.ph_marks[2] = {1, 0};
    run.ph_marks[3] = {1, 0};
    run.ph_marks[4] = {1, 0};
    run.ph_marks[5] = {1, 0};
    w.fgdData_Click(2); // row 2 leaves the report
    photometry_setup.ph_print_flag = {1, 1, 1, 1};

    auto page = report_make(w, 1.0);
    const QStringList t = texts_of(*page);
    const int at = t.indexOf("Output data");
    ASSERT_GE(at, 0);
    EXPECT_EQ(t.mid(at + 1, 3), (QStringList{"No.", "450nm", "550nm"}));
    EXPECT_EQ(t.mid(at + 4),
              (QStringList{"1-z", "0.001", "0.002", "3", "0.700", "0.800", page->footers()[0]}));
    EXPECT_TRUE(t.contains("Function = PHOTOMETRY"));
    EXPECT_TRUE(t.contains("WL2 = 550 nm"));
    EXPECT_TRUE(t.contains("Cycle interval = 0 sec"));
    // The row spreads across the page: its cells at distinct, growing lefts.
    const auto placed = page->texts();
    EXPECT_LT(placed[static_cast<std::size_t>(at + 4)].at.x(),
              placed[static_cast<std::size_t>(at + 5)].at.x());

    expect_pdf_like_preview(w, data_, "photometry_report.pdf");
    const QString paper = pdf_page_texts(data_.filePath("photometry_report.pdf")).join('\n');
    EXPECT_TRUE(paper.contains(QRegularExpression("\\b1-z +0\\.001 +0\\.002")));
    EXPECT_FALSE(paper.contains("0.500"));
    const QJsonArray book = read_workbook(export_as(w, "photo"));
    ASSERT_EQ(sheet_names(book), QStringList{"Read data"});
    const QJsonArray rows = sheet(book, "Read data")["rows"].toArray();
    EXPECT_EQ(rows.size(), 20); // the empty rows of the grid too
    EXPECT_EQ(rows[2].toArray(), (QJsonArray{"2  X", "0.500", "0.600"}));
}

TEST_F(ReportFunctions, TimescanSheetsHoldEachRunAtItsTimes) {
    timescan_setup = TimescanSetup{};
    timescan_setup.ts_span = 28;
    reset_timescan_data();
    frmTimescan w(*function_by_id(fid_timescan));
    for (int k = 0; k < ts_samples; ++k) {
        timescan.ts_curves[static_cast<std::size_t>(k)][1] = k * 0.001;
        timescan.ts_curves[static_cast<std::size_t>(k)][2] = 1 + k * 0.001;
    }
    timescan.ts_curve_count = 2;
    timescan.ts_curve_state[1] = 1;
    timescan.ts_curve_state[2] = 2;
    const QJsonArray book = read_workbook(export_as(w, "kinetics.xls"));
    ASSERT_EQ(sheet_names(book),
              (QStringList{"Read data2", "Read data1", "Track data", "Peak data", "Valley data"}));
    const QJsonArray run2 = sheet(book, "Read data2")["rows"].toArray();
    ASSERT_EQ(run2.size(), 281);
    EXPECT_EQ(run2[0].toArray(), (QJsonArray{"0.00sec", "1.0000"}));
    EXPECT_EQ(run2[1].toArray(), (QJsonArray{"0.10sec", "1.0010"}));
    EXPECT_EQ(run2[280].toArray(), (QJsonArray{"28.00sec", "1.2800"}));
    EXPECT_EQ(sheet(book, "Track data")["rows"].toArray()[0].toArray(), (QJsonArray{"No.", "Time", "Value"}));

    timescan_setup.ts_print_flag = {0, 0, 1, 0, 0, 0};
    auto page = report_make(w, 1.0);
    const QStringList t = texts_of(*page);
    EXPECT_TRUE(t.contains("Function = TIMESCAN-Fixed span"));
    EXPECT_TRUE(t.contains("Span time = 28.0 sec"));
    EXPECT_TRUE(t.contains("Time(sec)"));
    EXPECT_TRUE(page->footers().empty());
    // The quick prints: the tables alone, every one whatever the flags, with no title and no
    // footer; the graph alone with no parameter text.
    const QStringList data = texts_of(*quick_data_page(w));
    EXPECT_EQ(data, (QStringList{"Track data",  "No.", "Time", "Value", "No.", "Time", "Value",
                                 "Peak data",   "No.", "Time", "Value", "No.", "Time", "Value",
                                 "Valley data", "No.", "Time", "Value", "No.", "Time", "Value"}));
    const QStringList graph = texts_of(*quick_graph_page(w));
    EXPECT_TRUE(graph.contains("Time(sec)"));
    EXPECT_FALSE(graph.join('|').contains("Function ="));
    EXPECT_FALSE(graph.contains("My laboratory"));
    timescan_setup.ts_print_flag = {1, 1, 1, 1, 1, 1};
    expect_pdf_like_preview(w, data_, "timescan_report.pdf");

    // The window's own buttons: with no printer each prints to a PDF in the data folder.
    install_quick_print();
    const auto pdfs = [&] { return QDir(data_.path()).entryList({"*.pdf"}, QDir::Files).size(); };
    const qsizetype before = pdfs();
    auto* graph_button = w.findChild<QPushButton*>("cmdQuickPrint_0");
    auto* data_button = w.findChild<QPushButton*>("cmdQuickPrint_1");
    ASSERT_TRUE(graph_button && data_button);
    QTest::mouseClick(graph_button, Qt::LeftButton);
    EXPECT_EQ(pdfs(), before + 1) << "the graph alone";
    QTest::mouseClick(data_button, Qt::LeftButton);
    EXPECT_EQ(pdfs(), before + 2) << "the tables alone";
}

TEST_F(ReportFunctions, KineticPrintsItsFitAndSelectedOutputRows) {
    reset_kinetic();
    kinetic_setup.kn_lag = 10, kinetic_setup.kn_rate = 60;
    kinetic_setup.derive();
    frmKinetic w(*function_by_id(fid_kinetic));
    w.clear_form();
    EXPECT_FALSE(w.has_data());
    for (int k = 0; k < kn_samples_count; ++k)
        kinetic.kn_samples[static_cast<std::size_t>(k)] = 0.2 + kinetic_setup.sample_time(k) / 600;
    kinetic.kn_run_count = 1;
    w.zoom_data(); // the crosses and the fit, as at the end of a run
    for (const kn_output& o :
         {kn_output{340, 0.2f, 0.1f, 0.1f, -1}, kn_output{405, 0.5f, -0.05f, -0.05f, 0}}) {
        kinetic.outputs.push_back(o);
        w.fgdValley().AddItem(output_row(static_cast<int>(kinetic.outputs.size()), o));
    }
    ASSERT_TRUE(w.has_data());
    const QJsonArray book = read_workbook(export_as(w, "rates.xls"));
    ASSERT_EQ(sheet_names(book), (QStringList{"Read data", "Track data", "Sampled data", "Output data"}));
    const QJsonArray read = sheet(book, "Read data")["rows"].toArray();
    ASSERT_EQ(read.size(), 281);
    EXPECT_EQ(read[0].toArray(), (QJsonArray{"0.00sec", "0.2000"}));
    EXPECT_EQ(read[280].toArray(), (QJsonArray{"80.00sec", "0.3333"}));
    EXPECT_EQ(sheet(book, "Output data")["rows"].toArray().size(), 3);
    EXPECT_EQ(sheet(book, "Sampled data")["rows"].toArray().size(), 6); // the head and 5 points

    kinetic_setup.kn_print_flag = {0, 0, 1, 0, 0, 1};
    const QStringList t = texts_of(*report_make(w, 1.0));
    for (const char* line : {"Function = KINETIC", "Rate time = 60 sec", "Low value = 0.000 ABS",
                             "ABS = Ka * T + Kb", "Ka = 0.0017", "Output data"})
        EXPECT_TRUE(t.contains(line)) << line;
    EXPECT_TRUE(t.contains("Kb = " + format_text(kinetic.fit.kb, "#0.0000")));
    EXPECT_TRUE(t.contains("340.00nm"));
    EXPECT_FALSE(t.contains("405.00nm")) << "an unselected output row";
    EXPECT_FALSE(t.contains("Sampled data"));
    const QStringList data = texts_of(*quick_data_page(w));
    EXPECT_TRUE(data.contains("Sampled data"));
    EXPECT_TRUE(data.contains("Diff."));
    const QStringList graph = texts_of(*quick_graph_page(w));
    EXPECT_TRUE(graph.contains("Time(sec)"));
    EXPECT_FALSE(graph.join('|').contains("Function ="));
    kinetic_setup.kn_print_flag = {1, 1, 1, 1, 1, 1};
    expect_pdf_like_preview(w, data_, "kinetic_report.pdf");
}

TEST_F(ReportFunctions, TimescanIntervalPrintsItsSelectedReadRows) {
    timescan_interval_setup = TimescanIntervalSetup{};
    reset_timescan_interval_data();
    frmTimescan2 w(*function_by_id(fid_timescan2));
    grid& g = w.fgdTrack();
    g.setRows(6);
    for (int r = 1; r <= 5; ++r) {
        g.setTextMatrix(r, 0, QString::number(r) + (r == 3 ? "  X" : "  V"));
        g.setTextMatrix(r, 1, QString::number(r - 1) + ".0");
        g.setTextMatrix(r, 2, QString::number(0.1 * r, 'f', 4));
    }
    timescan_interval.ti_curve_count = 1;
    const QStringList t = texts_of(*report_make(w, 1.0));
    const int at = t.indexOf("Read data");
    ASSERT_GE(at, 0);
    const QStringList rows = t.mid(at + 7, 12);
    EXPECT_EQ(rows, (QStringList{"1", "0.0", "0.1000", "2", "1.0", "0.2000", "3", "3.0", "0.4000", "4", "4.0",
                                 "0.5000"}));
    EXPECT_TRUE(t.contains("Function = TIMESCAN-Fixed interval"));
    expect_pdf_like_preview(w, data_, "timescan2_report.pdf");
    const QJsonArray book = read_workbook(export_as(w, "long"));
    EXPECT_EQ(sheet(book, "Read data")["rows"].toArray()[3].toArray(), (QJsonArray{"3  X", "2.0", "0.3000"}));
}

TEST_F(ReportFunctions, QuantitativeSamplesAlwaysPrintAndTheEquationSheetHasItsFit) {
    quant = QuantSetup{};
    quant.cal.fit_type = 3;
    quant.cal.fit_ka = 1.5;
    quant.cal.fit_kb = 0.25;
    quant.cal.fit_r2 = 0.99876;
    frmQuant w(*function_by_id(fid_quantitative));
    grid& s = w.fgdSample();
    s.setRows(4);
    for (int r = 1; r <= 3; ++r) {
        s.setTextMatrix(r, 0, QString::number(r));
        s.setTextMatrix(r, 1, QString::number(0.1 * r, 'f', 3));
        s.setTextMatrix(r, 2, QString::number(r, 'f', 3));
        quant.sample_valid[static_cast<std::size_t>(r)] = r != 2;
    }
    quant.sample_count = 3;
    quant.print_flags = {0, 0, 0, 0};
    const QStringList t = texts_of(*report_make(w, 1.0));
    const int at = t.indexOf("Sample data");
    ASSERT_GE(at, 0);
    EXPECT_EQ(t.mid(at + 7), (QStringList{"1", "0.100", "1.000", "2", "0.300", "3.000"}));
    EXPECT_FALSE(t.contains("Standard data"));

    quant.print_flags = {1, 1, 1, 1};
    expect_pdf_like_preview(w, data_, "quant_report.pdf");
    const QString paper = pdf_page_texts(data_.filePath("quant_report.pdf")).join('\n');
    for (const char* line :
         {"Fit type = 2nd order through zero", "Ka = 1.5000", "Kb = 0.2500", "Standard data"})
        EXPECT_TRUE(paper.contains(line)) << line;
    const QJsonArray book = read_workbook(export_as(w, "assay"));
    ASSERT_EQ(sheet_names(book), (QStringList{"Standard data", "Sample data", "Equation"}));
    QStringList eq;
    for (const auto& row : sheet(book, "Equation")["rows"].toArray())
        eq << row.toArray()[0].toString();
    EXPECT_EQ(eq,
              (QStringList{"Conc. = Ka * ABS2    + Kb * ABS", "Ka = 1.5000", "Kb = 0.2500", "R2   =0.9988"}));
}

TEST_F(ReportFunctions, QuickPrintParameterReadsTheBoxesAsTheyStand) {
    dlgTimescan dlg;
    dlg.Check2()->setChecked(true);
    const QStringList lines = quick_parameter_lines(dlg);
    ASSERT_FALSE(lines.isEmpty());
    EXPECT_EQ(lines.first(), "Function = TIMESCAN-Fixed Interval");
    dlg.Check2()->setChecked(false);
    EXPECT_EQ(quick_parameter_lines(dlg).first(), "Function = TIMESCAN-Fixed Span");
    EXPECT_GE(quick_parameter_lines(dlg).size(), 4);

    reset_photometry();
    photometry_setup.ph_lambda_count = 2;
    photometry_setup.ph_lambda = {450, 550};
    photometry_setup.ph_advanced = 1;
    dlgPhotometry photo;
    const QStringList ph = quick_parameter_lines(photo);
    ASSERT_FALSE(ph.isEmpty());
    EXPECT_EQ(ph.first(), "Function = PHOTOMETRY");
    EXPECT_TRUE(ph.contains("WL1=450")) << ph.join('|').toStdString();
    EXPECT_TRUE(ph.contains("WL2=550"));
    EXPECT_FALSE(ph.join('|').contains("WL3="));
    EXPECT_TRUE(ph.contains("Advanced equation"));
    EXPECT_TRUE(ph.last().startsWith("R=")) << ph.last().toStdString();

    auto page = quick_parameter_page(dlg);
    bool ok = false;
    const QString path = send_to_printer(*page, "parameter", ok, data_.filePath("p.pdf"));
    ASSERT_TRUE(ok);
    EXPECT_TRUE(pdf_page_texts(path).join('\n').contains("Function = TIMESCAN-Fixed Span"));
}

TEST_F(ReportFunctions, ProteinPrintsItsReplicatesUnderBothGraphsAndExportsBothTables) {
    protein = ProteinSetup{};
    protein.assay = 1, protein.lambda = "750", protein.std_reps = 2, protein.sample_reps = 1;
    protein.delay = 5, protein.unit = "ug/mL";
    protein.cal.std_count = 2, protein.cal.fit_type = 1, protein.cal.std_conc = {10, 20};
    shared.function_id = fid_protein;
    frmProtein w(*function_by_id(fid_protein));
    for (double abs : {0.2, 0.22, 0.41, 0.39})
        ASSERT_TRUE(add_standard_reading(w.fgdData(), protein, abs));
    protein.reading_std = false;
    ASSERT_EQ(w.refit_standards(), frmProtein::refit_result::done);
    add_sample_reading(w.fgdSample(), protein, 0.3);
    protein.print_flags = {0, 0, 1, 0};
    const QStringList t = texts_of(*report_make(w, 1.0));
    for (const char* line :
         {"Function = PROTEIN ANALYSIS", "Assay type = Lowry Protein Analysis,", "  high sensitivity",
          "Wavelength = 750 nm", "No of standard replicate = 2", "No of sample replicate = 1",
          "Delay time(sec) = 5", "Unit = ug/mL", "Standard number = 2", "Fit type = 1st order through zero",
          "Difference", "(ABS/dLambda)"})
        EXPECT_TRUE(t.contains(line)) << line;
    EXPECT_FALSE(t.contains("Standard data"));
    const int at = t.indexOf("Sample data");
    ASSERT_GE(at, 0);
    EXPECT_EQ(t.mid(at + 9), (QStringList{"1-1", "0.300", "14.846", "", "Avg1", "0.300", "14.846", ""}));

    protein.print_flags = {1, 1, 1, 1};
    expect_pdf_like_preview(w, data_, "protein_report.pdf");
    const QString paper = pdf_page_texts(data_.filePath("protein_report.pdf")).join('\n');
    for (const char* line : {"Standard data", "Cal-Conc.", "Avg2", "-0.701", "Ka = 49.4855"})
        EXPECT_TRUE(paper.contains(line)) << line;
    const QJsonArray book = read_workbook(export_as(w, "lowry"));
    ASSERT_EQ(sheet_names(book), (QStringList{"Standard data", "Sample data", "Equation"}));
    const QJsonArray standards = sheet(book, "Standard data")["rows"].toArray();
    ASSERT_EQ(standards.size(), 7);
    EXPECT_EQ(standards[5].toArray()[4].toString(), "-0.701");
    EXPECT_EQ(sheet(book, "Sample data")["rows"].toArray().size(), 3);
}

} // namespace
} // namespace lumora::test
