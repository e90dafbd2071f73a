#include "kinetic_data.h"

#include "platform/numeric_text.h"

#include <algorithm>
#include <cmath>

namespace lumora {

KineticSetup kinetic_setup;
KineticRun kinetic;

void KineticSetup::derive() {
    kn_start_time = processing::kinetic_start_time(kn_lag, kn_delay, kn_rate);
    kn_window = processing::kinetic_window(kn_rate);
}

void reset_kinetic() {
    kinetic_setup = KineticSetup{};
    kinetic = KineticRun{};
}

void clear_kinetic_data() {
    kinetic.outputs.clear();
    kinetic.kn_samples.fill(0);
    kinetic.kn_fit.fill(0);
    kinetic.kn_run_count = 0;
    kinetic.fit = {};
    kinetic.tracks = track_state{};
    kinetic.cross_count = 0;
}

timed_plan kinetic_plan(const KineticSetup& s) {
    timed_plan p;
    p.start = s.kn_start_time;
    p.step = s.step();
    p.lag_from = s.kn_delay;
    return p;
}

int cross_sample(const KineticSetup& s, int i, int n) {
    const double dt = static_cast<double>(s.kn_rate) / (n - 1);
    const double k = 280 / s.kn_window;
    const double position = kn_first_fit + i * dt * k;
    return std::clamp(static_cast<int>(std::floor(position + 0.5)), 0, kn_samples_count - 1);
}

void auto_range(const std::array<double, kn_samples_count>& samples, double& high, double& low) {
    double largest = samples[0], smallest = samples[0];
    for (double v : samples) {
        largest = std::max(largest, v);
        smallest = std::min(smallest, v);
    }
    if (largest - smallest < 0.001) {
        largest += 0.0005;
        smallest -= 0.0005;
    }
    high = largest + (largest - smallest) / 100;
    low = smallest - (largest - smallest) / 100;
}

namespace {

QString absorbance(double value) {
    return format_text(value, "#0.000") + QStringLiteral("A");
}

} // namespace

QString cross_row(int number, double time, double value, const double* before) {
    QString row = QStringLiteral("%1  V\t%2\t%3")
                      .arg(number)
                      .arg(format_text(time, "###0.0sec"))
                      .arg(absorbance(value));
    if (before) {
        // The difference of the two values as shown, not of the values themselves.
        const double diff = val(format_text(value, "#0.000").toStdString()) -
                            val(format_text(*before, "#0.000").toStdString());
        row += QLatin1Char('\t') + absorbance(diff);
    }
    return row;
}

QString output_row(int number, const kn_output& o) {
    return QStringLiteral("%1%2\t%3\t%4\t%5\t%6")
        .arg(number)
        .arg(o.flag ? QStringLiteral("  V") : QStringLiteral("  X"))
        .arg(format_text(o.lambda, "###0.00nm"))
        .arg(absorbance(o.abs0))
        .arg(format_text(o.dabs_dt, "#0.0000"))
        .arg(format_text(o.dc_dt, "#0.0000"));
}

QString track_row(int number, double time, double value, double fit) {
    return QStringLiteral("%1  V\t%2\t%3\t%4")
        .arg(number)
        .arg(format_text(time, "#0.0sec"))
        .arg(absorbance(value))
        .arg(absorbance(fit));
}

fit_block fit_text_block(const KineticSetup& s, const processing::kinetic_result& r,
                         const std::function<int(const QString&)>& width, int line_height) {
    fit_block b;
    // The units stand in one column, after the widest rate the block can show.
    const int units = 60 + width(QStringLiteral("dABS/dT = 99999.9999"));
    b.texts.push_back({60, 340, QStringLiteral("   T = ") + format_text(s.kn_rate, "#0.0 sec")});
    b.glyphs.push_back({60, 340});
    b.texts.push_back({200, 340, QStringLiteral("Factor = ") + format_text(s.kn_factor, "#0.000")});
    b.texts.push_back({60, 355, QStringLiteral("   ABS/   T = ") + format_text(r.dabs_dt, "#0.0000")});
    b.glyphs.push_back({60, 355});
    b.glyphs.push_back({60 + width(QStringLiteral("   ABS/")), 355});
    b.texts.push_back({units, 355, QStringLiteral(" (   ABS)/min")});
    b.glyphs.push_back({60 + width(QStringLiteral("dABS/dT = 99999.9999 (")), 355});
    b.texts.push_back({60, 370, QStringLiteral("   C/   T = ") + format_text(r.dc_dt, "#0.0000")});
    b.glyphs.push_back({60, 370});
    b.glyphs.push_back({60 + width(QStringLiteral("   C/")), 370});
    b.texts.push_back({units, 370, QStringLiteral(" (") + s.kn_unit + QStringLiteral(")/min")});
    b.texts.push_back({60, 385, QStringLiteral("ABS = Ka * T + Kb")});
    b.texts.push_back({60, 385 + line_height, QStringLiteral("Ka = ") + format_text(r.ka, "#0.0000")});
    b.texts.push_back({60, 385 + 2 * line_height, QStringLiteral("Kb = ") + format_text(r.kb, "#0.0000")});
    return b;
}

} // namespace lumora
