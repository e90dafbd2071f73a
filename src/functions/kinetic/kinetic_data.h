#pragma once
// The Kinetic parameter record and run state, one instance each, and the plain arithmetic of a
// run apart from any window: where a sample falls in time, the crosses, the rows of the three
// tables and the text under the plot. A run takes 281 samples, 35..245 being the rate stretch.
#include "link/timed_steps.h"
#include "plot/plot_tracking.h"
#include "plot/plot_view.h"
#include "processing/kinetic_fit.h"

#include <QString>
#include <array>
#include <cstdint>
#include <functional>
#include <vector>

namespace lumora {

constexpr int kn_samples_count = processing::kinetic_samples;
constexpr int kn_first_fit = 35, kn_last_fit = 246; // the fit line overruns the stretch by one step

struct KineticSetup {
    QString kn_wavelength = QStringLiteral("500"); // [nm] kept as typed: a fraction survives
    std::int16_t kn_sampling_number = 5;           // points of the fit, 2..99
    std::int16_t kn_lag = 2;                       // [s] 2..9999
    std::int16_t kn_rate = 15;                     // [s] 15..9999
    std::int16_t kn_delay = 0;                     // [s] 0..50
    double kn_low = 0;
    double kn_high = 3.0;
    double kn_factor = 1.0; // 0..10000
    QString kn_unit = QStringLiteral("None");
    std::int16_t kn_auto_zoom = 0;
    std::array<QString, 4> kn_report_text{QStringLiteral("My laboratory"), QStringLiteral("Sample"),
                                          QStringLiteral("Operator"), QString()};
    // date, page number, parameter setup, track data, sampled data, output data
    std::array<std::int16_t, 6> kn_print_flag{1, 1, 1, 1, 1, 1};
    // Derived on each OK and at program start.
    double kn_start_time = processing::kinetic_start_time(2, 0, 15); // [s] from Read to sample 0
    double kn_window = processing::kinetic_window(15);               // [s] from sample 0 to 280

    void derive();
    double step() const { return kn_window / 280; }
    // Sample k's time counted from the end of the delay.
    double sample_time(int k) const { return (kn_lag - kn_rate / 6.0) + k * step(); }
};

// One finished run: a row of the output table.
struct kn_output {
    double lambda = 0;
    float abs0 = 0, dabs_dt = 0, dc_dt = 0;
    std::int16_t flag = -1; // selected for the report
};

struct KineticRun {
    bool kn_dirty = true;
    std::int16_t kn_zero_done = 1; // 0 from a Zero press to the first frame after it
    std::int32_t kn_ticks = 0;     // frames since Read
    std::int16_t kn_sample_index = 0;
    std::int32_t kn_run_count = 0;
    bool kn_running = false; // between Read and the last sample or Stop
    std::array<double, kn_samples_count> kn_samples{};
    std::array<double, kn_samples_count> kn_fit{};
    processing::kinetic_result fit;
    double last_trans = 0;

    plot_view view;
    track_state tracks;                  // fgdTrack
    std::int16_t cross_count = 0;        // fgdPeak
    std::array<mark, 100> cross_marks{}; //
    std::vector<kn_output> outputs;      // fgdValley, kept over runs
};

extern KineticSetup kinetic_setup;
extern KineticRun kinetic;

void reset_kinetic();
// Empties the samples, the fit, the three tables' records and the output rows (clear_form
// without a window).
void clear_kinetic_data();

// The frame-clock schedule of a run: sampling from kn_start_time, "lag time..." from the delay.
timed_plan kinetic_plan(const KineticSetup& s);

// The sample index of cross i of n: 35 + i * (R / (n - 1)) * (280 / window), to the nearest
// integer, halves up. It may differ by one from the fit's own pick.
int cross_sample(const KineticSetup& s, int i, int n);

// The view's Y range of the auto zoom over all 281 samples.
void auto_range(const std::array<double, kn_samples_count>& samples, double& high, double& low);

// Rows of the three tables, tab-separated cells.
QString cross_row(int number, double time, double value, const double* before);
QString output_row(int number, const kn_output& o);
QString track_row(int number, double time, double value, double fit);

// The text block under the plot: each piece with its anchor, and the columns of the Δ glyphs.
struct fit_text {
    int x = 0, y = 0;
    QString text;
};
struct fit_glyph {
    int x = 0, y = 0;
};
struct fit_block {
    std::vector<fit_text> texts;
    std::vector<fit_glyph> glyphs;
};
// `width` measures a text in the plot's font. Lines after the third follow at `line_height`.
fit_block fit_text_block(const KineticSetup& s, const processing::kinetic_result& r,
                         const std::function<int(const QString&)>& width, int line_height);

} // namespace lumora
