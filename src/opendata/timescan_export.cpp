// The fixed-span Timescan's export: the 281 samples of each curve in use against their time from
// the start of the run (the span's 280 steps), in the unit of the run.
#include "csv.h"
#include "exporters.h"
#include "functions/timescan/timescan_data.h"
#include "functions/timescan/timescan_setup.h"
#include "number_text.h"

namespace lumora::opendata {

std::vector<out_file> timescan_export(const function_window&, export_format format,
                                      const export_source& source) {
    const TimescanSetup& s = timescan_setup;
    std::vector<int> columns;
    for (int column = 1; column <= timescan.ts_curve_count && column <= ts_max_curves; ++column) {
        const int state = timescan.ts_curve_state[static_cast<std::size_t>(column)];
        if (state == 1 || state == 2) columns.push_back(column);
    }
    if (format != export_format::csv || columns.empty()) return {};
    csv_table t;
    t.context = common_context(QStringLiteral("Time scan (fixed span)"), source, s.ts_report_text[0],
                               s.ts_report_text[1], s.ts_report_text[2], s.ts_report_text[3]);
    t.context.emplace_back(QStringLiteral("wavelength"), s.ts_wavelength + QStringLiteral(" nm"));
    t.context.emplace_back(QStringLiteral("span"), exact_text(s.ts_span) + QStringLiteral(" s"));
    t.context.emplace_back(QStringLiteral("delay"), exact_text(s.ts_delay) + QStringLiteral(" s"));
    const QString unit = s.percent_t() ? QStringLiteral("%T") : QStringLiteral("Absorbance");
    t.header << QStringLiteral("Time (s)");
    for (std::size_t i = 0; i < columns.size(); ++i)
        t.header << QStringLiteral("Curve %1 %2").arg(i + 1).arg(unit);
    t.rows.reserve(ts_samples);
    for (int k = 0; k < ts_samples; ++k) {
        QStringList row{seconds_text(s.ts_span * k / (ts_samples - 1))};
        for (int column : columns)
            row << exact_text(
                timescan.ts_curves[static_cast<std::size_t>(k)][static_cast<std::size_t>(column)]);
        t.rows.push_back(std::move(row));
    }
    return {{source.name + QStringLiteral(".csv"), csv_text(t)}};
}

} // namespace lumora::opendata
