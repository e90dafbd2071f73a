// The row layouts of the stored batches, pinned row by row for each function, and read back into
// a fresh window: the loaded state writes the same rows again, and a batch cut short loads what it
// has without reading past its rows.
#include "functions/function_catalog.h"
#include "functions/kinetic/frmKinetic.h"
#include "functions/kinetic/kinetic_data.h"
#include "functions/photometry/frmPhotometry.h"
#include "functions/photometry/photometry_setup.h"
#include "functions/protein/frmProtein.h"
#include "functions/protein/protein_rows.h"
#include "functions/protein/protein_setup.h"
#include "functions/quantitative/frmQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "functions/spectrum/frmSpectrum.h"
#include "functions/spectrum/spectrum_data.h"
#include "functions/spectrum/spectrum_setup.h"
#include "functions/timescan/frmTimescan.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_setup.h"
#include "functions/timescan_interval/frmTimescan2.h"
#include "functions/timescan_interval/timescan_interval_data.h"
#include "link/link_context.h"
#include "platform/grid.h"
#include "platform/prompts.h"
#include "plot/palette.h"

#include <QTabBar>
#include <gtest/gtest.h>
#include <memory>

using namespace lumora;

namespace {

// "P1=400" for a row, "D500/2=0.5" for a curve row of set 2.
std::string rows_text(const std::vector<batch_row>& rows) {
    QStringList out;
    for (const batch_row& r : rows)
        out << r.type + QString::number(r.seq) + (r.set ? "/" + QString::number(r.set) : QString()) + "=" +
                   r.value;
    return out.join(' ').toStdString();
}

// The rows as the store gives them back: by type, curve number and position.
std::vector<batch_row> as_stored(std::vector<batch_row> rows) {
    std::stable_sort(rows.begin(), rows.end(), [](const batch_row& a, const batch_row& b) {
        return std::tie(a.type, a.set, a.seq) < std::tie(b.type, b.set, b.seq);
    });
    return rows;
}

// Drops the last `n` rows of type `type`: a batch cut short.
std::vector<batch_row> cut(std::vector<batch_row> rows, const QString& type, int n) {
    for (auto it = rows.end(); n > 0 && it != rows.begin();) {
        --it;
        if (it->type == type) {
            it = rows.erase(it);
            --n;
        }
    }
    return rows;
}

class BatchLayouts : public ::testing::Test {
protected:
    void SetUp() override {
        reset_shared_state();
        apply_start_defaults();
        set_default_colors();
        link_ctx = link_context{};
        main_hooks = {};
        prompts::script();
        prompts::clear_shown();
    }
    void TearDown() override {
        prompts::unscript();
        link_ctx = link_context{};
    }
    template <class W> std::unique_ptr<W> open(int function_id) {
        shared.function_id = static_cast<std::int16_t>(function_id);
        return std::make_unique<W>(*function_by_id(function_id));
    }
};

} // namespace

TEST_F(BatchLayouts, Spectrum) {
    spectrum_setup = SpectrumSetup{};
    reset_spectrum_data();
    auto w = open<frmSpectrum>(fid_spectrum);
    SpectrumSetup& s = spectrum_setup;
    s.start_lambda = 500, s.stop_lambda = 502, s.spectrum_mode = 0, s.low_value = -0.1, s.high_value = 2.5;
    s.scan_speed = 2, s.auto_zoom = 1, s.auto_peak = 0, s.auto_valley = 1, s.overlay_screen = 1;
    s.report_remark = "it's done";
    s.print_flags = {1, 0, 1, 0, 1, 0, 1};
    // Curves 1 and 3 in use, 2 hidden: they are stored as 1 and 2.
    spectrum.curve_count = 3;
    spectrum.curve_state[1] = 1, spectrum.curve_state[2] = 0, spectrum.curve_state[3] = 2;
    for (int nm = 500; nm <= 502; ++nm) {
        shared.baseline_curves[static_cast<std::size_t>(nm - 320)][1] = (nm - 500) * 0.125;
        shared.baseline_curves[static_cast<std::size_t>(nm - 320)][3] = (nm - 500) + 1.0 / 3;
    }
    const auto rows = w->result_rows();
    EXPECT_EQ(rows_text(rows),
              "P1=500 P2=502 P3=0 P4=-0.1 P5=2.5 P6=2 P7=1 P8=0 P9=1 P10=1 P11=My laboratory P12=Sample "
              "P13=Operator P14=it's done P15=1 P16=0 P17=1 P18=0 P19=1 P20=0 P21=1 "
              "D500/1=0 D501/1=0.125 D502/1=0.25 "
              "D500/2=0.333333333333333 D501/2=1.33333333333333 D502/2=2.33333333333333");
    EXPECT_EQ(rows_text(w->parameter_rows()),
              rows_text(std::vector<batch_row>(rows.begin(), rows.begin() + 21)));

    w.reset();
    spectrum_setup = SpectrumSetup{};
    reset_spectrum_data();
    auto loaded = open<frmSpectrum>(fid_spectrum);
    loaded->load_result(as_stored(rows));
    EXPECT_EQ(spectrum.curve_count, 2);
    EXPECT_EQ(spectrum.curve_state[1], 1);
    EXPECT_EQ(spectrum.curve_state[2], 2);
    EXPECT_NEAR(spectrum.org_curves[501 - 320][2], 4.0 / 3, 1e-13);
    EXPECT_EQ(spectrum_setup.report_remark, "it's done");
    EXPECT_EQ(rows_text(loaded->result_rows()), rows_text(rows));
}

TEST_F(BatchLayouts, Photometry) {
    reset_photometry();
    auto w = open<frmPhotometry>(fid_photometry);
    PhotometrySetup& s = photometry_setup;
    s.ph_lambda_count = 2;
    s.ph_lambda = {450, 650.5};
    s.ph_mode = 2, s.ph_unit = "mg/L", s.ph_factor = 2.5f, s.ph_cycle_number = 3, s.ph_cycle_interval = 10;
    s.ph_advanced = 1, s.ph_wl_pick = {1, 2, 0, 0}, s.ph_sign = {0, 1, 1}, s.ph_k1 = 2, s.ph_k2 = 0.5;
    w->clear_form();
    // Three readings, the last row half full.
    const char* cells[] = {"1.250", "0.500", "2.000"};
    for (int i = 0; i < 3; ++i)
        w->fgdData().setTextMatrix(i / 2 + 1, i % 2 + 1, cells[i]);
    photometry_run.ph_data_count = 3;
    const auto rows = w->result_rows();
    EXPECT_EQ(rows_text(rows),
              "P1=2 P2=450 P3=650.5 P4=2 P5=mg/L P6=2.5 P7=3 P8=10 P9=My laboratory P10=Sample "
              "P11=Operator P12= P13=1 P14=1 P15=1 P16=1 P17=1 P18=1 P19=2 P20=0 P21=0 P22=0 "
              "P23=1 P24=1 P25=2 P26=0.5 D27=1.250 D28=0.500 D29=2.000");
    w.reset();
    reset_photometry();
    auto loaded = open<frmPhotometry>(fid_photometry);
    loaded->load_result(as_stored(rows));
    const grid& g = loaded->fgdData();
    EXPECT_EQ(g.Rows(), 20);
    EXPECT_EQ(g.TextMatrix(2, 1), "2.000");
    EXPECT_EQ(g.TextMatrix(1, 0), "1  V");
    EXPECT_EQ(g.TextMatrix(2, 0), "2  V");
    EXPECT_EQ(g.TextMatrix(1, 3), "3.500"); // R = 2 * (1.25 + 0.5) recomputed for the full row
    EXPECT_EQ(g.TextMatrix(2, 3), "");
    EXPECT_EQ(rows_text(loaded->result_rows()), rows_text(rows));
    // A batch cut short in its setup rows stops there; the reading rows it still has are not taken
    // for setup values.
    loaded->load_result(as_stored(cut(rows, "P", 20)));
    EXPECT_EQ(photometry_setup.ph_unit, "mg/L");
    EXPECT_EQ(photometry_setup.ph_report_text[0], "");
}

TEST_F(BatchLayouts, TimescanFixedSpan) {
    timescan_setup = TimescanSetup{};
    reset_timescan_data();
    auto w = open<frmTimescan>(fid_timescan);
    TimescanSetup& s = timescan_setup;
    s.ts_wavelength = "500.5", s.ts_span = 60, s.ts_delay = 2, s.ts_mode = 1, s.ts_low = 10, s.ts_high = 90;
    s.ts_print_flag = {1, 0, 1, 0, 0, 0};
    timescan.ts_curve_count = 2;
    timescan.ts_curve_state[1] = 1, timescan.ts_curve_state[2] = 2;
    for (int k = 0; k < ts_samples; ++k) {
        timescan.ts_curves[static_cast<std::size_t>(k)][1] = k;
        timescan.ts_curves[static_cast<std::size_t>(k)][2] = 100 - k * 0.25;
    }
    const auto rows = w->result_rows();
    ASSERT_EQ(rows.size(), 16u + 2 * 281);
    EXPECT_EQ(rows_text(std::vector<batch_row>(rows.begin(), rows.begin() + 18)),
              "P1=500.5 P2=60 P3=2 P4=1 P5=10 P6=90 P7=0 P8=1 P9=My laboratory P10=Sample P11=Operator P12= "
              "P13=1 P14=0 P15=1 P16=0 D1/1=0 D2/1=1");
    EXPECT_EQ(rows_text({rows.back()}), "D281/2=30");
    w.reset();
    timescan_setup = TimescanSetup{};
    timescan_setup.ts_print_flag[4] = 0; // not in the layout: a load leaves it
    reset_timescan_data();
    auto loaded = open<frmTimescan>(fid_timescan);
    loaded->load_result(as_stored(rows));
    EXPECT_EQ(timescan.ts_curve_count, 2);
    EXPECT_EQ(timescan.ts_curve_state[2], 2);
    EXPECT_EQ(timescan_setup.ts_print_flag[4], 0);
    EXPECT_EQ(timescan.ts_org_curves[280][2], 30);
    EXPECT_EQ(rows_text(loaded->result_rows()), rows_text(rows));
}

TEST_F(BatchLayouts, TimescanFixedInterval) {
    timescan_interval_setup = TimescanIntervalSetup{};
    reset_timescan_interval_data();
    auto w = open<frmTimescan2>(fid_timescan2);
    TimescanIntervalSetup& s = timescan_interval_setup;
    s.ti_wavelength = "656", s.ti_interval = 0.5, s.ti_stop_time = 600, s.ti_delay = 1;
    grid& g = w->fgdTrack();
    for (int k = 0; k < 300; ++k)
        g.AddItem(QString::number(k) + "\t" + QString::number(k * 0.5, 'f', 1) + "\t" +
                  QString::number(k / 1000.0, 'f', 3));
    const auto rows = w->result_rows();
    ASSERT_EQ(rows.size(), 16u + 300);
    EXPECT_EQ(rows_text(std::vector<batch_row>(rows.begin(), rows.begin() + 18)),
              "P1=656 P2=0.5 P3=1 P4=0 P5=0 P6=3 P7=0 P8=1 P9=My laboratory P10=Sample P11=Operator P12= "
              "P13=1 P14=1 P15=1 P16=1 D1=0.000 D2=0.001");
    // The parameter batch has the stop time as its third row.
    const auto params = w->parameter_rows();
    ASSERT_EQ(params.size(), 17u);
    EXPECT_EQ(rows_text({params[2], params[3]}), "P3=600 P4=1");

    w.reset();
    timescan_interval_setup = TimescanIntervalSetup{};
    reset_timescan_interval_data();
    auto loaded = open<frmTimescan2>(fid_timescan2);
    loaded->load_result(as_stored(rows));
    const grid& back = loaded->fgdTrack();
    ASSERT_EQ(back.Rows(), 301);
    // Index, time and value in their own columns, as a measured run writes them.
    EXPECT_EQ(back.TextMatrix(300, 0), "299");
    EXPECT_EQ(back.TextMatrix(300, 1), "149.5");
    EXPECT_EQ(back.TextMatrix(300, 2), "0.299");
    EXPECT_EQ(timescan_interval.ti_page_count, 1);
    EXPECT_EQ(timescan_interval_setup.ti_stop_time, 60); // a result batch does not hold it
    EXPECT_EQ(rows_text(loaded->result_rows()), rows_text(rows));
    loaded->read_parameters(params);
    EXPECT_EQ(timescan_interval_setup.ti_stop_time, 600);
}

TEST_F(BatchLayouts, Quantitative) {
    quant = QuantSetup{};
    auto w = open<frmQuant>(fid_quantitative);
    QuantSetup& q = quant;
    // Known factor: the coefficients stand as keyed in, the standards' rows hold what the arrays hold.
    q.lambda = "540", q.unit = "mg/L", q.std_type = 2;
    q.cal.std_count = 2, q.cal.fit_type = 2;
    q.cal.std_conc = {1.23456, 2.5};
    q.cal.std_abs = {0.1, 0.2004};
    q.cal.fit_ka = 10, q.cal.fit_kb = 0.5, q.cal.fit_kc = 0;
    w->clear_form();
    q.sample_count = 2;
    q.sample_abs[1] = 0.15, q.sample_conc[1] = 1.75;
    q.sample_abs[2] = 0.3, q.sample_conc[2] = 3.25;
    w->load_old_data();
    const auto rows = w->result_rows();
    EXPECT_EQ(rows_text(rows),
              "P1=540 P2=0 P3=3 P4=mg/L P5=2 P6=2 P7=2 P8=1.235 P9=2.500 P10=0.100 P11=0.200 "
              "P12=10 P13=0.5 P14=0 P15=My laboratory P16=Sample P17=Operator P18= P19=1 P20=1 "
              "P21=1 P22=1 P23=2 D1=0.15 D2=1.75 D3=0.3 D4=3.25");
    const auto params = w->parameter_rows();
    EXPECT_EQ(rows_text({params[7], params.back()}), "P8=1.23456 P22=1"); // whole values, no sample count

    w.reset();
    quant = QuantSetup{};
    auto loaded = open<frmQuant>(fid_quantitative);
    prompts::clear_shown();
    loaded->load_result(as_stored(rows));
    ASSERT_FALSE(prompts::shown().empty());
    EXPECT_EQ(prompts::shown().back().text, "Please press RUN to read samples!");
    EXPECT_EQ(loaded->tspData()->currentIndex(), 1);
    EXPECT_EQ(loaded->fgdSample().TextMatrix(2, 2), "3.250");
    EXPECT_EQ(quant.cal.std_conc[0], 1.235); // the standards lose their further digits
    EXPECT_EQ(quant.cal.fit_kb, 0.5);
    EXPECT_TRUE(quant.sample_valid[2]);
    EXPECT_EQ(rows_text(loaded->result_rows()), rows_text(rows));
    // A batch that claims more samples than it holds loads those it has.
    loaded->load_result(as_stored(cut(rows, "D", 1)));
    EXPECT_EQ(quant.sample_count, 1);
}

TEST_F(BatchLayouts, Protein) {
    protein = ProteinSetup{};
    auto w = open<frmProtein>(fid_protein);
    ProteinSetup& p = protein;
    p.assay = 1, p.lambda = "750", p.std_reps = 2, p.sample_reps = 1, p.delay = 5, p.unit = "ug/mL";
    p.cal.std_count = 2, p.cal.fit_type = 1;
    p.cal.std_conc = {10, 20};
    w->clear_form();
    for (double abs : {0.2, 0.22, 0.41, 0.39})
        ASSERT_TRUE(add_standard_reading(w->fgdData(), p, abs));
    p.reading_std = false;
    ASSERT_EQ(w->refit_standards(), frmProtein::refit_result::done);
    add_sample_reading(w->fgdSample(), p, 0.3);
    // A cell wider than ten characters is kept whole and pushes the next one along.
    w->fgdSample().setTextMatrix(2, 2, "12345.678901");
    const auto rows = w->result_rows();
    EXPECT_EQ(
        rows_text(rows),
        "P1=1 P2=2 P3=1 P4=5 P5=ug/mL P6=2 P7=1 P8=10 P9=20 P10=0.21 P11=0.4 P12=49.4855463008329 "
        "P13=0 P14=0 P15=6 P16=2 P17=My laboratory P18=Sample P19=Operator P20= P21=1 P22=1 P23=1 "
        "P24=1 D1=10.000    0.200     9.897     -0.103               "
        "D2=10.000    0.220     10.887    0.887                D3=10.000    0.210     10.392    0.392     "
        "           D4=20.000    0.410     20.289    0.289                "
        "D5=20.000    0.390     19.299    -0.701               D6=20.000    0.400     19.794    -0.206    "
        "           D7=0.300     14.846               D8=0.300     12345.678901          ");
    const auto params = w->parameter_rows();
    ASSERT_EQ(params.size(), 22u);
    EXPECT_EQ(rows_text({params[14]}), "P15=My laboratory"); // no row counts behind the coefficients

    w.reset();
    protein = ProteinSetup{};
    protein.lambda = "595";
    auto loaded = open<frmProtein>(fid_protein);
    prompts::clear_shown();
    loaded->load_result(as_stored(rows));
    ASSERT_FALSE(prompts::shown().empty());
    EXPECT_EQ(prompts::shown().back().text, "Please press RUN to read samples!");
    EXPECT_EQ(loaded->tspData()->currentIndex(), 1);
    EXPECT_EQ(protein.lambda, "595"); // not in the batch
    EXPECT_FALSE(protein.reading_std);
    const grid& data = loaded->fgdData();
    grid& sample = loaded->fgdSample();
    EXPECT_EQ(data.Rows(), 7);
    EXPECT_EQ(sample.Rows(), 1 + 2 + 2);
    EXPECT_EQ(data.TextMatrix(3, 0), "Avg1");
    EXPECT_EQ(data.TextMatrix(5, 4), "-0.701"); // Cal-Conc. and Diff from the refit
    EXPECT_EQ(sample.TextMatrix(1, 0), "1-1");
    EXPECT_EQ(sample.TextMatrix(2, 0), "Avg1");
    // The reader cuts at fixed columns: the long cell loses its tail to the next one.
    EXPECT_EQ(sample.TextMatrix(2, 2), "12345.6789");
    EXPECT_EQ(sample.TextMatrix(2, 3), "01");
    sample.setTextMatrix(2, 2, "12345.678901");
    sample.setTextMatrix(2, 3, "");
    EXPECT_EQ(rows_text(loaded->result_rows()), rows_text(rows));
    // A batch cut short loads the records it has.
    loaded->load_result(as_stored(cut(rows, "D", 3)));
    EXPECT_EQ(protein.data_rows, 5);
    EXPECT_EQ(protein.sample_rows, 0);

    // A parameter batch brings back the setup and an empty standards table, without a word.
    prompts::clear_shown();
    protein.std_reps = 1;
    loaded->read_parameters(params);
    loaded->parameters_loaded();
    EXPECT_TRUE(prompts::shown().empty());
    EXPECT_EQ(protein.std_reps, 2);
    EXPECT_EQ(protein.data_rows, 0);
    EXPECT_EQ(loaded->fgdData().Rows(), 7);
    EXPECT_EQ(loaded->fgdData().TextMatrix(6, 1), "20.000");
    EXPECT_EQ(loaded->fgdData().TextMatrix(6, 2), "");
}

TEST_F(BatchLayouts, Kinetic) {
    reset_kinetic();
    auto w = open<frmKinetic>(fid_kinetic);
    w->clear_form();
    EXPECT_FALSE(w->batch_data());
    KineticSetup& s = kinetic_setup;
    s.kn_wavelength = "340.5", s.kn_sampling_number = 7, s.kn_lag = 10, s.kn_rate = 60, s.kn_delay = 3;
    s.kn_low = -0.1, s.kn_high = 2.5, s.kn_factor = 1.5, s.kn_unit = "U/l";
    s.kn_print_flag = {1, 0, 1, 0, 1, 0};
    for (int k = 0; k < kn_samples_count; ++k)
        kinetic.kn_samples[static_cast<std::size_t>(k)] = 0.25 + k * 0.001;
    kinetic.kn_run_count = 2;
    for (const kn_output& o :
         {kn_output{340.5, 0.2f, 0.0125f, 0.01875f, -1}, kn_output{340.5, 0.3f, -0.5f, 2.f, 0}}) {
        kinetic.outputs.push_back(o);
        w->fgdValley().AddItem(output_row(static_cast<int>(kinetic.outputs.size()), o));
    }
    ASSERT_TRUE(w->batch_data());
    const auto rows = w->result_rows();
    ASSERT_EQ(rows.size(), 20u + 281 + 8);
    EXPECT_EQ(
        rows_text(std::vector<batch_row>(rows.begin(), rows.begin() + 22)),
        "P1=340.5 P2=7 P3=10 P4=60 P5=3 P6=-0.1 P7=2.5 P8=1.5 P9=U/l P10=0 P11=My laboratory P12=Sample "
        "P13=Operator P14= P15=1 P16=0 P17=1 P18=0 P19=1 P20=0 D1=0.25 D2=0.251");
    EXPECT_EQ(
        rows_text(std::vector<batch_row>(rows.end() - 9, rows.end())),
        "D281=0.53 V1=340.50nm V2=0.200A V3=0.0125 V4=0.0188 V5=340.50nm V6=0.300A V7=-0.5000 V8=2.0000");
    EXPECT_EQ(rows_text(w->parameter_rows()),
              rows_text(std::vector<batch_row>(rows.begin(), rows.begin() + 20)));

    w.reset();
    reset_kinetic();
    auto loaded = open<frmKinetic>(fid_kinetic);
    loaded->load_result(as_stored(rows));
    EXPECT_EQ(kinetic_setup.kn_unit, "U/l");
    EXPECT_EQ(kinetic_setup.kn_rate, 60);
    EXPECT_DOUBLE_EQ(kinetic_setup.kn_window, processing::kinetic_window(60));
    EXPECT_EQ(kinetic.kn_samples[280], 0.53);
    ASSERT_EQ(kinetic.outputs.size(), 2u);
    EXPECT_FLOAT_EQ(kinetic.outputs[1].dabs_dt, -0.5f);
    EXPECT_TRUE(loaded->batch_data());
    EXPECT_GT(kinetic.fit.dabs_dt, 0); // the fit is made again over the loaded curve
    EXPECT_EQ(rows_text(loaded->result_rows()), rows_text(rows));

    // A batch cut short in its output rows keeps the whole rows; damaged setup values are bounded.
    auto damaged = cut(rows, "V", 3);
    damaged[1].value = "500";
    loaded->load_result(as_stored(damaged));
    EXPECT_EQ(kinetic.outputs.size(), 1u);
    EXPECT_EQ(kinetic_setup.kn_sampling_number, 99);
}
