// The fixed-interval Timescan's export: a row per sample, its time from the interval and its
// value as the grid holds it (the grid's text is the store), with the row's mark.
#include "csv.h"
#include "exporters.h"
#include "functions/timescan/timescan_setup.h"
#include "functions/timescan_interval/frmTimescan2.h"
#include "grid_rows.h"
#include "number_text.h"
#include "platform/grid.h"

namespace lumora::opendata {

std::vector<out_file> timescan_interval_export(const function_window& window, export_format format,
                                               const export_source& source) {
    const auto* form = qobject_cast<const frmTimescan2*>(&window);
    if (!form || format != export_format::csv) return {};
    const grid& g = form->fgdTrack();
    const int samples = g.Rows() - 1;
    if (samples <= 0) return {};
    const TimescanIntervalSetup& s = timescan_interval_setup;
    csv_table t;
    t.context = common_context(QStringLiteral("Time scan (fixed interval)"), source, s.ti_report_text[0],
                               s.ti_report_text[1], s.ti_report_text[2], s.ti_report_text[3]);
    t.context.emplace_back(QStringLiteral("wavelength"), s.ti_wavelength + QStringLiteral(" nm"));
    t.context.emplace_back(QStringLiteral("interval"), exact_text(s.ti_interval) + QStringLiteral(" s"));
    t.context.emplace_back(QStringLiteral("delay"), exact_text(s.ti_delay) + QStringLiteral(" s"));
    t.header << QStringLiteral("No.") << QStringLiteral("Mark") << QStringLiteral("Time (s)")
             << (s.percent_t() ? QStringLiteral("%T") : QStringLiteral("Absorbance"));
    t.rows.reserve(static_cast<std::size_t>(samples));
    for (int row = 1; row <= samples; ++row) {
        const row_label label = split_row_label(g.TextMatrix(row, 0));
        t.rows.push_back({label.number, label.mark, seconds_text((row - 1) * s.ti_interval),
                          g.TextMatrix(row, 2).trimmed()});
    }
    return {{source.name + QStringLiteral(".csv"), csv_text(t)}};
}

} // namespace lumora::opendata
