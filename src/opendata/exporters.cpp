#include "exporters.h"

#include "functions/stats_panel.h"
#include "link/shared_state.h"
#include "store/batches.h"

#include <QCoreApplication>

namespace lumora::opendata {

QString iso_time(const QDateTime& time) {
    return time.toOffsetFromUtc(time.offsetFromUtc()).toString(Qt::ISODate);
}

context_lines common_context(const QString& function_caption, const export_source& source,
                             const QString& laboratory, const QString& subject, const QString& op,
                             const QString& remark) {
    context_lines c;
    c.emplace_back(QStringLiteral("program"), QStringLiteral("Lumora " LUMORA_VERSION));
    c.emplace_back(QStringLiteral("function"), function_caption);
    if (!source.batch.isEmpty()) {
        c.emplace_back(QStringLiteral("batch"), source.batch);
        c.emplace_back(QStringLiteral("saved by"), source.saved_by);
        c.emplace_back(QStringLiteral("saved at"), source.saved_at.isValid()
                                                       ? iso_time(source.saved_at)
                                                       : QStringLiteral("not recorded"));
    }
    c.emplace_back(QStringLiteral("exported at"), iso_time(QDateTime::currentDateTime()));
    c.emplace_back(QStringLiteral("laboratory"), laboratory);
    c.emplace_back(QStringLiteral("subject"), subject);
    c.emplace_back(QStringLiteral("operator"), op);
    if (!remark.isEmpty()) c.emplace_back(QStringLiteral("remark"), remark);
    return c;
}

const std::vector<function_export>& exports() {
    // Kinetic and Protein join here with their own routine.
    static const std::vector<function_export> table{
        {fid_photometry, false, photometry_export},
        {fid_spectrum, true, spectrum_export},
        {fid_timescan, false, timescan_export},
        {fid_quantitative, false, quant_export},
        {fid_timescan2, false, timescan_interval_export},
        {fid_protein, false, protein_export},
        {fid_kinetic, false, kinetic_export},
    };
    return table;
}

const function_export* export_for(int function_id) {
    for (const function_export& e : exports())
        if (e.function_id == function_id) return &e;
    return nullptr;
}

const function_export* export_for(const QString& name) {
    for (const function_export& e : exports())
        if (batch_function_name(e.function_id).compare(name, Qt::CaseInsensitive) == 0) return &e;
    return nullptr;
}

void add_statistics(context_lines& c, const QList<QStringList>& rows) {
    for (const QStringList& row : rows) {
        if (row.size() < 2) continue;
        QString value = row[1];
        if (row.size() > 2 && !row[2].isEmpty()) value += QStringLiteral(" (") + row[2] + QLatin1Char(')');
        c.emplace_back(QStringLiteral("statistics ") + row[0], value);
    }
}

QString fit_equation_text(int fit_type) {
    switch (fit_type) {
    case 1:
        return QStringLiteral("Conc. = Ka A");
    case 2:
        return QStringLiteral("Conc. = Ka A + Kb");
    case 3:
        return QStringLiteral("Conc. = Ka A^2 + Kb A");
    case 4:
        return QStringLiteral("Conc. = Ka A^2 + Kb A + Kc");
    default:
        return QStringLiteral("none");
    }
}

void add_predictions(context_lines& c, const std::vector<labelled_prediction>& predictions) {
    QList<QStringList> rows;
    for (const labelled_prediction& p : predictions) {
        const QStringList cells = prediction_cells(p);
        rows.append({QStringLiteral("sample ") + cells[0],
                     p.p.ok
                         ? cells[1] + QStringLiteral(", 95% ") + cells[2] + QStringLiteral(" to ") + cells[3]
                         : QString(),
                     cells[4]});
    }
    add_statistics(c, rows);
}

} // namespace lumora::opendata
