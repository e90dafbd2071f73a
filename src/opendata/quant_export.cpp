// Quantitative's export: the standards and the samples as two tables, each row with the values the
// program holds (not the grid's three places) and a sample's mark, and the calibration as context.
#include "csv.h"
#include "exporters.h"
#include "functions/quantitative/frmQuant.h"
#include "functions/quantitative/quant_setup.h"
#include "number_text.h"

namespace lumora::opendata {
namespace {

context_lines quant_context(const export_source& source) {
    const QuantSetup& q = quant;
    context_lines c = common_context(QStringLiteral("Quantitative"), source, q.report_laboratory,
                                     q.report_subject, q.report_operator, q.report_remark);
    c.emplace_back(QStringLiteral("wavelength"), q.lambda + QStringLiteral(" nm"));
    c.emplace_back(QStringLiteral("standards"), q.std_type == 2   ? QStringLiteral("known factor")
                                                : q.std_type == 1 ? QStringLiteral("keyed ABS")
                                                                  : QStringLiteral("read ABS"));
    c.emplace_back(QStringLiteral("fit"), fit_equation_text(q.cal.fit_type));
    c.emplace_back(QStringLiteral("Ka"), exact_text(q.cal.fit_ka));
    c.emplace_back(QStringLiteral("Kb"), exact_text(q.cal.fit_kb));
    c.emplace_back(QStringLiteral("Kc"), exact_text(q.cal.fit_kc));
    c.emplace_back(QStringLiteral("R squared"), exact_text(q.cal.fit_r2));
    return c;
}

QString conc_header() {
    return quant.unit.isEmpty() || quant.unit == QLatin1String("None")
               ? QStringLiteral("Conc.")
               : QStringLiteral("Conc. (%1)").arg(quant.unit);
}

} // namespace

std::vector<out_file> quant_export(const function_window& window, export_format format,
                                   const export_source& source) {
    if (format != export_format::csv) return {};
    const QuantSetup& q = quant;
    const int standards = q.std_type == 2 ? 0 : std::clamp<int>(q.cal.std_count, 0, 20);
    // While read standards are due, those not read yet have no ABS, as in the table.
    const int with_abs =
        q.std_type == 0 && q.reading_std ? std::clamp<int>(q.std_read, 0, standards) : standards;
    const int samples = std::clamp<int>(q.sample_count, 0, max_samples);
    if (standards == 0 && samples == 0) return {};
    std::vector<out_file> files;

    // The statistics beside the calibration, each sample's prediction beside the samples.
    const auto* w = qobject_cast<const frmQuant*>(&window);
    const calibration_stats stats = w ? w->statistics() : calibration_stats{};
    csv_table st;
    st.context = quant_context(source);
    if (w) add_statistics(st.context, stats_rows(stats, q.unit));
    st.header << QStringLiteral("No.") << conc_header() << QStringLiteral("Absorbance");
    for (int r = 1; r <= standards; ++r) {
        const auto i = static_cast<std::size_t>(r - 1);
        st.rows.push_back({QString::number(r), exact_text(q.cal.std_conc[i]),
                           r <= with_abs ? exact_text(q.cal.std_abs[i]) : QString()});
    }
    files.push_back({source.name + QStringLiteral("-standards.csv"), csv_text(st)});

    csv_table sa;
    sa.context = quant_context(source);
    add_predictions(sa.context, w ? w->sample_predictions(stats) : std::vector<labelled_prediction>{});
    sa.header << QStringLiteral("No.") << QStringLiteral("Mark") << QStringLiteral("Absorbance")
              << conc_header();
    for (int r = 1; r <= samples; ++r) {
        const auto k = static_cast<std::size_t>(r);
        sa.rows.push_back({QString::number(r), q.sample_valid[k] ? QStringLiteral("V") : QStringLiteral("X"),
                           exact_text(q.sample_abs[k]), exact_text(q.sample_conc[k])});
    }
    files.push_back({source.name + QStringLiteral("-samples.csv"), csv_text(sa)});
    return files;
}

} // namespace lumora::opendata
