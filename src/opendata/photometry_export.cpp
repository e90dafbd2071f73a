// Photometry's export: the grid as shown, a row per cycle with its mark, a column per wavelength
// and R when the equation is on. The grid's cell texts are the readings' store, so they are
// written as they stand.
#include "csv.h"
#include "exporters.h"
#include "functions/photometry/frmPhotometry.h"
#include "functions/photometry/photometry_setup.h"
#include "grid_rows.h"
#include "number_text.h"
#include "platform/grid.h"

namespace lumora::opendata {
namespace {

QString unit_name(const PhotometrySetup& s) {
    if (s.ph_mode == 1) return QStringLiteral("%T");
    if (s.ph_mode == 2) return s.ph_unit == QLatin1String("None") ? QStringLiteral("Factor*ABS") : s.ph_unit;
    return QStringLiteral("Absorbance");
}

} // namespace

std::vector<out_file> photometry_export(const function_window& window, export_format format,
                                        const export_source& source) {
    const auto* form = qobject_cast<const frmPhotometry*>(&window);
    const PhotometrySetup& s = photometry_setup;
    const int count = photometry_run.ph_data_count;
    if (!form || format != export_format::csv || count <= 0) return {};
    const grid& g = form->fgdData();
    const int n = std::clamp<int>(s.ph_lambda_count, 1, ph_max_lambdas);
    const bool with_r = s.ph_advanced == 1 && g.Cols() > n + 1;

    csv_table t;
    t.context = common_context(QStringLiteral("Photometry"), source, s.ph_report_text[0], s.ph_report_text[1],
                               s.ph_report_text[2], s.ph_report_text[3]);
    t.context.emplace_back(QStringLiteral("mode"), s.ph_mode == 1   ? QStringLiteral("%T")
                                                   : s.ph_mode == 2 ? QStringLiteral("Factor*ABS")
                                                                    : QStringLiteral("ABS"));
    if (s.ph_mode == 2) t.context.emplace_back(QStringLiteral("factor"), exact_text(s.ph_factor));
    t.context.emplace_back(QStringLiteral("unit"), unit_name(s));
    if (with_r)
        t.context.emplace_back(QStringLiteral("equation"),
                               QStringLiteral("R = K1 (WL%1 %2 WL%3) %4 K2 (WL%5 %6 WL%7), K1 = %8, K2 = %9")
                                   .arg(s.ph_wl_pick[0])
                                   .arg(s.ph_sign[0] == 0 ? '+' : '-')
                                   .arg(s.ph_wl_pick[1])
                                   .arg(s.ph_sign[1] == 0 ? '+' : '-')
                                   .arg(s.ph_wl_pick[2])
                                   .arg(s.ph_sign[2] == 0 ? '+' : '-')
                                   .arg(s.ph_wl_pick[3])
                                   .arg(exact_text(s.ph_k1), exact_text(s.ph_k2)));
    const QString unit = unit_name(s);
    t.header << QStringLiteral("No.") << QStringLiteral("Mark") << QStringLiteral("Note");
    for (int k = 1; k <= n; ++k)
        t.header << QStringLiteral("%1 nm (%2)")
                        .arg(exact_text(s.ph_lambda[static_cast<std::size_t>(k - 1)]), unit);
    if (with_r) t.header << QStringLiteral("R");
    for (int row = 1; (row - 1) * n < count && row < g.Rows(); ++row) {
        const row_label label = split_row_label(g.TextMatrix(row, 0));
        QStringList r{label.number, label.mark, label.note};
        for (int k = 1; k <= n; ++k)
            r << ((row - 1) * n + k <= count ? g.TextMatrix(row, k).trimmed() : QString());
        if (with_r) r << g.TextMatrix(row, n + 1).trimmed();
        t.rows.push_back(std::move(r));
    }
    return {{source.name + QStringLiteral(".csv"), csv_text(t)}};
}

} // namespace lumora::opendata
