#include "export_excel.h"

#include "functions/function_window.h"
#include "link/link_context.h"
#include "platform/prompts.h"
#include "report_registry.h"
#include "store/database.h"
#include "workbook.h"

#include <QDir>

namespace lumora {

QString export_name(const QString& answer) {
    QString name = answer;
    const int cut = name.toLower().indexOf(QStringLiteral(".xls"));
    if (cut >= 0) name.truncate(cut);
    return name.trimmed();
}

QString export_excel(function_window& window) {
    const report_piece* piece = report_piece_for(window.entry().function_id);
    if (!piece || !piece->sheets) return {};
    const QString title = QStringLiteral("System Message");
    const QString name =
        export_name(prompts::input_box(QStringLiteral("Key in a file name to export.\n(Ex., myscan20030902)"),
                                       QStringLiteral("Export data")));
    if (name.isEmpty()) {
        prompts::message_box(QStringLiteral("The batch name is blank or operation canceled!"),
                             box_icon::information, title);
        return {};
    }
    // The name is a file in the data folder, never a path elsewhere or a hidden file.
    if (name.contains(QLatin1Char('/')) || name.contains(QLatin1Char('\\')) ||
        name.startsWith(QLatin1Char('.'))) {
        prompts::message_box(
            QStringLiteral("The file name may not hold \"/\" or \"\\\" or begin with \".\"!"),
            box_icon::information, title);
        return {};
    }
    set_panel(6, QStringLiteral("Exporting data, please wait..."));
    workbook book;
    piece->sheets(window, book);
    const QString path = QDir(data_folder()).filePath(name + QStringLiteral(".xlsx"));
    QString reason;
    if (!book.save(path, reason)) {
        prompts::message_box(QStringLiteral("The workbook cannot be written:\n") + path + QLatin1Char('\n') +
                                 reason,
                             box_icon::exclamation, QStringLiteral("Warning"));
        set_panel(6, QStringLiteral("OK"));
        return {};
    }
    prompts::message_box(QStringLiteral("File export to Excel completed.\nFile path ") + path,
                         box_icon::information, title);
    set_panel(6, QStringLiteral("OK"));
    return path;
}

} // namespace lumora
