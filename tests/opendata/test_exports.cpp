// Each function's export on the state a loaded batch leaves: the function's window is rebuilt
// from batch rows, exported, and the files are read back with the project's own readers; the
// values come back to 1e-6 and the context names what was measured.
#include "functions/function_catalog.h"
#include "functions/function_window.h"
#include "functions/kinetic/kinetic_data.h"
#include "functions/photometry/photometry_setup.h"
#include "functions/protein/frmProtein.h"
#include "functions/protein/protein_setup.h"
#include "functions/quantitative/quant_setup.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_setup.h"
#include "link/shared_state.h"
#include "opendata/csv.h"
#include "opendata/exporters.h"
#include "opendata/jcamp.h"
#include "opendata/number_text.h"
#include "platform/prompts.h"

#include <cmath>
#include <gtest/gtest.h>
#include <memory>

using namespace lumora;
using namespace lumora::opendata;

namespace {

struct loaded : ::testing::Test {
    std::unique_ptr<function_window> window;
    export_source source{QStringLiteral("run7"), QStringLiteral("run7"), QStringLiteral("ann@lab1"),
                         QDateTime(QDate(2026, 11, 2), QTime(9, 15), Qt::OffsetFromUTC, 3600)};
    void SetUp() override {
        reset_shared_state();
        prompts::script();
    }
    void TearDown() override {
        window.reset();
        prompts::unscript();
    }
    // The window of `fid` with its setup as the test set it, loaded with `data` after the setup rows.
    void load(int fid, const std::vector<batch_row>& data) {
        shared.function_id = static_cast<std::int16_t>(fid);
        window.reset(make_function_window(*function_by_id(fid)));
        std::vector<batch_row> rows;
        for (const batch_row& r : window->result_rows())
            if (r.type == QLatin1String("P")) rows.push_back(r);
        // Quantitative's sample count closes its setup rows.
        if (fid == fid_quantitative) rows.back().value = QString::number(data.size() / 2);
        rows.insert(rows.end(), data.begin(), data.end());
        window->load_result(rows);
    }
    std::vector<out_file> make(int fid, export_format format) {
        return export_for(fid)->make(*window, format, source);
    }
};

double spectrum_value(int set, int nm) {
    return set + std::sin(nm / 7.0) / 3;
}

QString context_value(const csv_table& t, const char* key) {
    for (const auto& [k, v] : t.context)
        if (k == QLatin1String(key)) return v;
    return QStringLiteral("<none>");
}

double number(const QString& text) {
    double v = NAN;
    EXPECT_TRUE(parse_number(text, v)) << text.toStdString();
    return v;
}

} // namespace

TEST_F(loaded, SpectrumCurvesComeBackFromJcampAndCsvWithTheirSettings) {
    reset_spectrum_data();
    spectrum_setup = SpectrumSetup{};
    spectrum_setup.start_lambda = 500;
    spectrum_setup.stop_lambda = 560;
    spectrum_setup.scan_speed = 2;
    spectrum_setup.report_laboratory = QStringLiteral("QC, bay 4");
    spectrum_setup.report_operator = QStringLiteral("Ann");
    row_writer w(QStringLiteral("D"));
    for (int set = 1; set <= 3; ++set)
        for (int nm = 500; nm <= 560; ++nm)
            w.add_at(nm, stored_text(spectrum_value(set, nm)), set);
    load(fid_spectrum, w.rows);
    ASSERT_TRUE(window->has_data());

    const auto files = make(fid_spectrum, export_format::jcamp);
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[2].name, QStringLiteral("run7-3.jdx"));
    for (int set = 1; set <= 3; ++set) {
        QString error;
        const auto blocks = read_jcamp(files[static_cast<std::size_t>(set - 1)].bytes, &error);
        ASSERT_EQ(blocks.size(), 1u) << error.toStdString();
        const jcamp_block& b = blocks[0];
        EXPECT_EQ(b.label(QStringLiteral("NPOINTS")), QStringLiteral("61"));
        EXPECT_EQ(b.label(QStringLiteral("YUNITS")), QStringLiteral("ABSORBANCE"));
        EXPECT_EQ(b.label(QStringLiteral("ORIGIN")), QStringLiteral("QC, bay 4"));
        EXPECT_EQ(b.label(QStringLiteral("OWNER")), QStringLiteral("Ann"));
        EXPECT_EQ(b.label(QStringLiteral("LONGDATE")), QStringLiteral("2026-11-02T09:15:00+01:00"));
        EXPECT_EQ(b.label(QStringLiteral("$SCAN SPEED")), QStringLiteral("Low"));
        EXPECT_EQ(b.label(QStringLiteral("$RANGE")), QStringLiteral("500-560 NANOMETERS"));
        EXPECT_EQ(b.label(QStringLiteral("$SMOOTHING")), QStringLiteral("none"));
        ASSERT_EQ(b.y.size(), 61u);
        for (std::size_t i = 0; i < b.y.size(); ++i) {
            EXPECT_EQ(b.x[i], 500.0 + static_cast<double>(i));
            EXPECT_NEAR(b.y[i], spectrum_value(set, 500 + static_cast<int>(i)), 1e-6);
        }
    }

    const auto csv = make(fid_spectrum, export_format::csv);
    ASSERT_EQ(csv.size(), 1u);
    const csv_table t = read_csv(csv[0].bytes);
    EXPECT_EQ(t.header, (QStringList{"Wavelength (nm)", "Curve 1 Absorbance", "Curve 2 Absorbance",
                                     "Curve 3 Absorbance"}));
    EXPECT_EQ(context_value(t, "batch"), QStringLiteral("run7"));
    EXPECT_EQ(context_value(t, "saved by"), QStringLiteral("ann@lab1"));
    ASSERT_EQ(t.rows.size(), 61u);
    EXPECT_EQ(t.rows[10][0], QStringLiteral("510"));
    EXPECT_NEAR(number(t.rows[10][2]), spectrum_value(2, 510), 1e-6);
    // Not the display's three places.
    EXPECT_GT(t.rows[10][2].size(), 8);
}

TEST_F(loaded, SpectrumInPercentTWritesTheFractionAndNamesSmoothing) {
    reset_spectrum_data();
    spectrum_setup = SpectrumSetup{};
    spectrum_setup.start_lambda = 400;
    spectrum_setup.stop_lambda = 402;
    spectrum_setup.spectrum_mode = 1;
    row_writer w(QStringLiteral("D"));
    for (int nm = 400; nm <= 402; ++nm)
        w.add_at(nm, stored_text(45.5 + nm - 400), 1);
    load(fid_spectrum, w.rows);
    shared.baseline_curves[401 - first_index_nm][1] += 0.25; // as a smoothing pass leaves the curve
    const auto blocks = read_jcamp(make(fid_spectrum, export_format::jcamp).at(0).bytes);
    ASSERT_EQ(blocks.size(), 1u);
    EXPECT_EQ(blocks[0].label(QStringLiteral("YUNITS")), QStringLiteral("TRANSMITTANCE"));
    EXPECT_EQ(blocks[0].label(QStringLiteral("$SMOOTHING")), QStringLiteral("applied after the scan"));
    ASSERT_EQ(blocks[0].y.size(), 3u);
    EXPECT_NEAR(blocks[0].y[0], 0.455, 1e-9);
    EXPECT_NEAR(blocks[0].y[1], 0.4675, 1e-9);
    const csv_table t = read_csv(make(fid_spectrum, export_format::csv).at(0).bytes);
    EXPECT_EQ(t.header.at(1), QStringLiteral("Curve 1 %T"));
    EXPECT_EQ(t.rows.at(2).at(1), QStringLiteral("47.5"));
    EXPECT_EQ(context_value(t, "smoothing"), QStringLiteral("curves 1"));
}

TEST_F(loaded, PhotometryWritesTheGridAsShownWithItsMarks) {
    reset_photometry();
    photometry_setup.ph_lambda_count = 2;
    photometry_setup.ph_lambda = {500, 600.5};
    row_writer w(QStringLiteral("D"));
    for (const char* text : {"0.123", "1.456", "0.789"})
        w.add(QString::fromLatin1(text));
    load(fid_photometry, w.rows);
    const csv_table t = read_csv(make(fid_photometry, export_format::csv).at(0).bytes);
    EXPECT_EQ(t.header, (QStringList{"No.", "Mark", "Note", "500 nm (Absorbance)", "600.5 nm (Absorbance)"}));
    ASSERT_EQ(t.rows.size(), 2u);
    EXPECT_EQ(t.rows[0], (QStringList{"1", "V", "", "0.123", "1.456"}));
    EXPECT_EQ(t.rows[1], (QStringList{"2", "V", "", "0.789", ""}));
    EXPECT_EQ(context_value(t, "mode"), QStringLiteral("ABS"));
    EXPECT_TRUE(make(fid_photometry, export_format::jcamp).empty());
}

TEST_F(loaded, TimescanFixedSpanWritesTimeAndEachCurve) {
    reset_timescan_data();
    timescan_setup = TimescanSetup{};
    timescan_setup.ts_span = 28;
    timescan_setup.ts_wavelength = QStringLiteral("546.1");
    row_writer w(QStringLiteral("D"));
    for (int set = 1; set <= 2; ++set)
        for (int k = 1; k <= ts_samples; ++k)
            w.add_at(k, stored_text(set * 0.5 + k / 3000.0), set);
    load(fid_timescan, w.rows);
    const csv_table t = read_csv(make(fid_timescan, export_format::csv).at(0).bytes);
    EXPECT_EQ(t.header, (QStringList{"Time (s)", "Curve 1 Absorbance", "Curve 2 Absorbance"}));
    ASSERT_EQ(t.rows.size(), static_cast<std::size_t>(ts_samples));
    EXPECT_EQ(t.rows[10][0], QStringLiteral("1"));
    EXPECT_EQ(t.rows[280][0], QStringLiteral("28"));
    EXPECT_NEAR(number(t.rows[10][2]), 1.0 + 11 / 3000.0, 1e-6);
    EXPECT_EQ(context_value(t, "wavelength"), QStringLiteral("546.1 nm"));
}

TEST_F(loaded, TimescanFixedIntervalWritesTheStoredTextsAgainstTheirTime) {
    timescan_interval_setup = TimescanIntervalSetup{};
    timescan_interval_setup.ti_interval = 0.1;
    timescan_interval_setup.ti_mode = 1;
    row_writer w(QStringLiteral("D"));
    for (int k = 0; k < 5; ++k)
        w.add(QStringLiteral("%1.25").arg(90 + k));
    load(fid_timescan2, w.rows);
    const csv_table t = read_csv(make(fid_timescan2, export_format::csv).at(0).bytes);
    EXPECT_EQ(t.header, (QStringList{"No.", "Mark", "Time (s)", "%T"}));
    ASSERT_EQ(t.rows.size(), 5u);
    EXPECT_EQ(t.rows[3][2], QStringLiteral("0.3"));
    EXPECT_EQ(t.rows[3][3], QStringLiteral("93.25"));
    EXPECT_EQ(t.rows[3][0], QStringLiteral("3"));
}

TEST_F(loaded, QuantitativeWritesStandardsAndSamplesWithTheCalibration) {
    quant = QuantSetup{};
    quant.unit = QStringLiteral("mg/dL");
    quant.std_type = 1;
    quant.cal.std_count = 2;
    quant.cal.std_conc = {10, 20};
    quant.cal.std_abs = {0.25, 0.5};
    quant.cal.fit_type = 1;
    quant.cal.fit_ka = 40;
    row_writer w(QStringLiteral("D"));
    for (int i = 1; i <= 3; ++i) {
        w.add(stored_text(i / 7.0));
        w.add(stored_text(40 * i / 7.0));
    }
    load(fid_quantitative, w.rows);
    const auto files = make(fid_quantitative, export_format::csv);
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].name, QStringLiteral("run7-standards.csv"));
    const csv_table standards = read_csv(files[0].bytes);
    EXPECT_EQ(standards.header, (QStringList{"No.", "Conc. (mg/dL)", "Absorbance"}));
    ASSERT_EQ(standards.rows.size(), 2u);
    EXPECT_NEAR(number(standards.rows[1][2]), 0.5, 1e-6);
    EXPECT_EQ(context_value(standards, "fit"), QStringLiteral("Conc. = Ka A"));
    const csv_table samples = read_csv(files[1].bytes);
    EXPECT_EQ(samples.header, (QStringList{"No.", "Mark", "Absorbance", "Conc. (mg/dL)"}));
    ASSERT_EQ(samples.rows.size(), 3u);
    EXPECT_EQ(samples.rows[2][1], QStringLiteral("V"));
    EXPECT_NEAR(number(samples.rows[2][3]), 120 / 7.0, 1e-6);
}

TEST_F(loaded, ProteinWritesEveryReplicateAndAverageWithTheCalibration) {
    protein = ProteinSetup{};
    protein.unit = QStringLiteral("ug/mL");
    protein.std_reps = 2;
    protein.cal.std_count = 2;
    protein.cal.std_conc = {10, 20};
    protein.cal.std_abs = {0.21, 0.4};
    protein.cal.fit_type = 1;
    shared.function_id = fid_protein;
    window.reset(make_function_window(*function_by_id(fid_protein)));
    // The batch as the layout holds it: 6 standards rows (two replicates and an average each) and
    // one sample with its average; the refit on load writes Cal-Conc., Diff and %CV again.
    std::vector<batch_row> rows;
    for (const batch_row& r : window->result_rows())
        if (r.type == QLatin1String("P")) rows.push_back(r);
    rows[14].value = QStringLiteral("6"), rows[15].value = QStringLiteral("2");
    row_writer w(QStringLiteral("D"));
    for (const char* rec : {"10.000    0.200", "10.000    0.220", "10.000    0.210", "20.000    0.410",
                            "20.000    0.390", "20.000    0.400", "0.300     14.846", "0.300     14.846"})
        w.add(QString::fromLatin1(rec));
    rows.insert(rows.end(), w.rows.begin(), w.rows.end());
    window->load_result(rows);
    const auto files = make(fid_protein, export_format::csv);
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[0].name, QStringLiteral("run7-standards.csv"));
    const csv_table standards = read_csv(files[0].bytes);
    EXPECT_EQ(standards.header, (QStringList{"No.", "Conc. (ug/mL)", "Absorbance", "Cal-Conc. (ug/mL)",
                                             "Diff (ug/mL)", "%CV"}));
    ASSERT_EQ(standards.rows.size(), 6u);
    EXPECT_EQ(standards.rows[2][0], QStringLiteral("Avg1"));
    EXPECT_NEAR(number(standards.rows[4][2]), 0.39, 1e-6);
    EXPECT_NEAR(number(standards.rows[4][4]), -0.701, 1e-6);
    EXPECT_EQ(context_value(standards, "fit"), QStringLiteral("Conc. = Ka A"));
    EXPECT_NEAR(number(context_value(standards, "Ka")), 10.1 / 0.2041, 1e-6);
    const csv_table samples = read_csv(files[1].bytes);
    EXPECT_EQ(samples.header, (QStringList{"No.", "Absorbance", "Conc. (ug/mL)", "%CV"}));
    ASSERT_EQ(samples.rows.size(), 2u);
    EXPECT_EQ(samples.rows[1][0], QStringLiteral("Avg1"));
    EXPECT_NEAR(number(samples.rows[1][2]), 14.846, 1e-6);
    EXPECT_TRUE(make(fid_protein, export_format::jcamp).empty());
}

TEST_F(loaded, KineticWritesTheRunWithItsFitAndTheOutputRows) {
    reset_kinetic();
    KineticSetup& s = kinetic_setup;
    s.kn_lag = 10, s.kn_rate = 60, s.kn_factor = 2, s.kn_unit = QStringLiteral("U/L");
    s.derive();
    row_writer w(QStringLiteral("D"));
    for (int k = 0; k < kn_samples_count; ++k)
        w.add(0.2 + s.sample_time(k) / 600); // 0.1 ABS per minute
    w.restart(QStringLiteral("V"));
    for (const char* cell :
         {"340.00nm", "0.200A", "0.1000", "0.2000", "405.00nm", "0.500A", "-0.0500", "-0.1000"})
        w.add(QString::fromLatin1(cell));
    load(fid_kinetic, w.rows);
    const auto files = make(fid_kinetic, export_format::csv);
    ASSERT_EQ(files.size(), 2u);
    EXPECT_EQ(files[1].name, QStringLiteral("run7-output.csv"));
    const csv_table run = read_csv(files[0].bytes);
    EXPECT_EQ(run.header, (QStringList{"Time (s)", "Absorbance"}));
    ASSERT_EQ(run.rows.size(), static_cast<std::size_t>(kn_samples_count));
    EXPECT_NEAR(number(run.rows[0][0]), s.sample_time(0), 1e-6);
    EXPECT_NEAR(number(run.rows[280][1]), 0.2 + s.sample_time(280) / 600, 1e-6);
    EXPECT_NEAR(number(context_value(run, "rate").section(' ', 0, 0)), kinetic.fit.dabs_dt, 1e-6);
    EXPECT_NEAR(number(context_value(run, "Ka").section(' ', 0, 0)), kinetic.fit.ka, 1e-9);
    EXPECT_EQ(context_value(run, "unit"), QStringLiteral("U/L"));
    const csv_table out = read_csv(files[1].bytes);
    EXPECT_EQ(out.header.back(), QStringLiteral("dC/dT (U/L/min)"));
    ASSERT_EQ(out.rows.size(), 2u);
    EXPECT_NEAR(number(out.rows[1][2]), 405, 1e-6);
    EXPECT_NEAR(number(out.rows[1][5]), -0.1, 1e-6);
}
