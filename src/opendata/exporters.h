#pragma once
// The exports of the functions: each function's file here turns that function's state (what its
// window shows, or what a loaded batch put there) into the files of a format. The menu and
// lumora-data both come here, so a file from either is the same.
#include "file_out.h"

#include <QDateTime>
#include <QString>
#include <utility>
#include <vector>

namespace lumora {
class function_window;
struct labelled_prediction;
} // namespace lumora

namespace lumora::opendata {

enum class export_format {
    csv,
    jcamp,          // one JCAMP-DX file per curve
    jcamp_compound, // one JCAMP-DX file, a block per curve
};

// Where the data came from, for the files' context lines and names.
struct export_source {
    QString name;     // the file names' stem: the batch name, or the function's when none
    QString batch;    // the batch name, "" for the window as it stands
    QString saved_by; // the batch's header
    QDateTime saved_at;
};

// A time in ISO 8601 with its offset from UTC: "2026-11-24T18:30:00+01:00".
QString iso_time(const QDateTime& time);

using context_lines = std::vector<std::pair<QString, QString>>;

// Statistics rows (label, value, SE or note) as context lines under "statistics <label>".
void add_statistics(context_lines& c, const QList<QStringList>& rows);
// A calibration's fit as a plain equation: "Conc. = Ka A^2 + Kb A"; "none" for an unknown type.
QString fit_equation_text(int fit_type);
// Each sample's 95 % interval and flag as context lines: "statistics sample 3" = "1.2, 95% 1.1 to 1.3".
void add_predictions(context_lines& c, const std::vector<labelled_prediction>& predictions);

// The lines every export starts with: program, function, source, laboratory, operator, ...
context_lines common_context(const QString& function_caption, const export_source& source,
                             const QString& laboratory, const QString& subject, const QString& op,
                             const QString& remark);

using export_routine = std::vector<out_file> (*)(const function_window& window, export_format format,
                                                 const export_source& source);

struct function_export {
    int function_id;     // its batches' type word names it on lumora-data's command line
    bool spectra;        // JCAMP-DX besides CSV
    export_routine make; // empty vector: nothing to export
};

// The export of a function, or nullptr when it has none.
const function_export* export_for(int function_id);
const function_export* export_for(const QString& name);
const std::vector<function_export>& exports();

// The routines, one file each.
std::vector<out_file> spectrum_export(const function_window&, export_format, const export_source&);
std::vector<out_file> photometry_export(const function_window&, export_format, const export_source&);
std::vector<out_file> timescan_export(const function_window&, export_format, const export_source&);
std::vector<out_file> timescan_interval_export(const function_window&, export_format, const export_source&);
std::vector<out_file> quant_export(const function_window&, export_format, const export_source&);
std::vector<out_file> protein_export(const function_window&, export_format, const export_source&);
std::vector<out_file> kinetic_export(const function_window&, export_format, const export_source&);

} // namespace lumora::opendata
