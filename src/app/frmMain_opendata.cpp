// The open-data export of the File menu: the active function's exporter writes into the folder of
// the file the user names, under that name, in the format of the chosen filter.
#include "frmMain.h"
#include "functions/function_window.h"
#include "link/shared_state.h"
#include "open_data_menu.h"
#include "opendata/exporters.h"
#include "platform/prompts.h"
#include "platform/status_bar.h"
#include "store/batches.h"
#include "store/database.h"

#include <QFileDialog>
#include <QFileInfo>

namespace lumora {
namespace {

using namespace opendata;

const QString csv_filter = QStringLiteral("CSV table (*.csv)");
const QString jcamp_filter = QStringLiteral("JCAMP-DX, a file per curve (*.jdx)");
const QString compound_filter = QStringLiteral("JCAMP-DX, all curves in one file (*.jdx)");

void inform(const QString& text) {
    prompts::message_box(text, box_icon::information, QStringLiteral("System Message"));
}

} // namespace

save_dialog open_data_dialog = [](QWidget* parent, const QString& proposed, const QString& filters,
                                  QString* filter) {
    return QFileDialog::getSaveFileName(parent, QStringLiteral("Export data"), proposed, filters, filter);
};

void export_open_data(frmMain& main) {
    function_window* fn = main.current_function();
    const function_export* e = export_for(shared.function_id);
    if (!fn || !e) return inform(QStringLiteral("The function is not available!"));
    if (!fn->has_data()) return inform(QStringLiteral("The data is empty!"));

    QStringList filters{csv_filter};
    if (e->spectra) filters << jcamp_filter << compound_filter;
    QString filter = e->spectra ? jcamp_filter : csv_filter;
    const QString stem = batch_function_name(e->function_id).toLower();
    const QString proposed = data_folder() + QLatin1Char('/') + stem +
                             (e->spectra ? QStringLiteral(".jdx") : QStringLiteral(".csv"));
    const QString path = open_data_dialog(&main, proposed, filters.join(QStringLiteral(";;")), &filter);
    if (path.isEmpty()) return;

    const export_format format = filter == compound_filter ? export_format::jcamp_compound
                                 : filter == jcamp_filter  ? export_format::jcamp
                                                           : export_format::csv;
    const QFileInfo chosen(path);
    QString name = chosen.fileName();
    for (const char* ext : {".csv", ".jdx", ".dx"})
        if (name.endsWith(QLatin1String(ext), Qt::CaseInsensitive)) name.chop(static_cast<int>(qstrlen(ext)));
    export_source source;
    source.name = safe_file_name(name);
    const std::vector<out_file> files = e->make(*fn, format, source);
    if (files.empty()) return inform(QStringLiteral("The data is empty!"));
    const QString why = write_all(chosen.absolutePath(), files);
    if (!why.isEmpty()) {
        main.sbStatusBar().set_text(6, QStringLiteral("Export data failed."));
        prompts::message_box(QStringLiteral("The data could not be exported, the file was not written:\n") +
                                 why,
                             box_icon::exclamation, QStringLiteral("Warning"));
        return;
    }
    main.sbStatusBar().set_text(6, QStringLiteral("Export data completed!"));
}

} // namespace lumora
