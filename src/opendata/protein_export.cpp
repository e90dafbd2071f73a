// Protein analysis's export: the standards with every replicate and average row and the samples
// likewise, each cell as the table shows it (the tables are where the readings live), and the
// assay and the calibration as context.
#include "csv.h"
#include "exporters.h"
#include "functions/protein/frmProtein.h"
#include "functions/protein/protein_setup.h"
#include "number_text.h"
#include "platform/grid.h"

#include <algorithm>

namespace lumora::opendata {
namespace {

context_lines protein_context(const export_source& source) {
    const ProteinSetup& p = protein;
    context_lines c = common_context(QStringLiteral("Protein analysis"), source, p.report_laboratory,
                                     p.report_subject, p.report_operator, p.report_remark);
    const auto& assays = protein_assays();
    const int assay = std::clamp<int>(p.assay, 0, static_cast<int>(assays.size()) - 1);
    c.emplace_back(QStringLiteral("assay"),
                   QString::fromLatin1(assays[static_cast<std::size_t>(assay)].name));
    c.emplace_back(QStringLiteral("wavelength"), p.lambda + QStringLiteral(" nm"));
    c.emplace_back(QStringLiteral("standard replicates"), QString::number(p.std_reps));
    c.emplace_back(QStringLiteral("sample replicates"), QString::number(p.sample_reps));
    c.emplace_back(QStringLiteral("fit"), fit_equation_text(p.cal.fit_type));
    c.emplace_back(QStringLiteral("Ka"), exact_text(p.cal.fit_ka));
    c.emplace_back(QStringLiteral("Kb"), exact_text(p.cal.fit_kb));
    c.emplace_back(QStringLiteral("Kc"), exact_text(p.cal.fit_kc));
    c.emplace_back(QStringLiteral("R squared"), exact_text(p.cal.fit_r2));
    return c;
}

QString with_unit(const QString& head) {
    const QString& unit = protein.unit;
    return unit.isEmpty() || unit == QLatin1String("None") ? head : QStringLiteral("%1 (%2)").arg(head, unit);
}

// A cell as a number field: the padding and the percent sign the table shows go.
QString field(const grid& table, int row, int col) {
    QString text = table.TextMatrix(row, col).trimmed();
    if (text.endsWith(QLatin1Char('%'))) text.chop(1);
    return text.trimmed();
}

QStringList row_of(const grid& table, int row, int cols) {
    QStringList out{table.TextMatrix(row, 0).trimmed()};
    for (int c = 1; c < cols; ++c)
        out << field(table, row, c);
    return out;
}

} // namespace

std::vector<out_file> protein_export(const function_window& window, export_format format,
                                     const export_source& source) {
    if (format != export_format::csv) return {};
    const auto& w = static_cast<const frmProtein&>(window);
    const grid& data = w.fgdData();
    const grid& sample = w.fgdSample();
    // Standards not read yet stand with their Conc. alone, as in the table.
    const int standards = data.Rows() - 1;
    const int samples = std::clamp<int>(protein.sample_rows, 0, sample.Rows() - 1);
    if (standards <= 0 && samples == 0) return {};
    std::vector<out_file> files;

    // The statistics beside the calibration, each sample's prediction beside the samples.
    const calibration_stats stats = w.statistics();
    csv_table st;
    st.context = protein_context(source);
    add_statistics(st.context, stats_rows(stats, protein.unit));
    st.header << QStringLiteral("No.") << with_unit(QStringLiteral("Conc.")) << QStringLiteral("Absorbance")
              << with_unit(QStringLiteral("Cal-Conc.")) << with_unit(QStringLiteral("Diff"))
              << QStringLiteral("%CV");
    for (int r = 1; r <= standards; ++r)
        st.rows.push_back(row_of(data, r, 6));
    files.push_back({source.name + QStringLiteral("-standards.csv"), csv_text(st)});

    csv_table sa;
    sa.context = protein_context(source);
    add_predictions(sa.context, w.sample_predictions(stats));
    sa.header << QStringLiteral("No.") << QStringLiteral("Absorbance") << with_unit(QStringLiteral("Conc."))
              << QStringLiteral("%CV");
    for (int r = 1; r <= samples; ++r)
        sa.rows.push_back(row_of(sample, r, 4));
    files.push_back({source.name + QStringLiteral("-samples.csv"), csv_text(sa)});
    return files;
}

} // namespace lumora::opendata
