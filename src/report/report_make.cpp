#include "report_make.h"

#include "functions/function_window.h"
#include "report_parts.h"
#include "report_registry.h"
#include "report_stats.h"
#include "store/database.h"

#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>

namespace lumora {

std::unique_ptr<report_page> report_make(function_window& window, double scale) {
    const report_piece* piece = report_piece_for(window.entry().function_id);
    if (!piece) return nullptr;
    auto page = std::make_unique<report_page>(scale, piece->flags());
    QString lab, subject, op, remark;
    piece->title(lab, subject, op, remark);
    report_title_block(*page, lab, subject, op, remark);
    piece->body(window, *page);
    if (report_print_statistics && piece->statistics) piece->statistics(window, *page);
    page->finish();
    return page;
}

bool print_pages(const report_page& page, QPrinter& printer) {
    // The page is 8 by 10.83 inches: it sits in a letter sheet with a quarter inch left.
    printer.setPageSize(QPageSize(QPageSize::Letter));
    printer.setFullPage(true);
    printer.setPageMargins(QMarginsF(0.25, 0.08, 0.25, 0.08), QPageLayout::Inch);
    QPainter painter;
    if (!painter.begin(&printer)) return false;
    painter.translate(printer.logicalDpiX() * 0.25, printer.logicalDpiY() * 0.08);
    page.print(painter, printer);
    return painter.end();
}

QString pdf_path_for(const QString& what) {
    // Two prints within a second each keep their own file.
    const QString stem =
        QDir(data_folder())
            .filePath(what + QLatin1Char('_') +
                      QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd_hhmmss")));
    QString path = stem + QStringLiteral(".pdf");
    for (int n = 2; QFileInfo::exists(path); ++n)
        path = stem + QLatin1Char('-') + QString::number(n) + QStringLiteral(".pdf");
    return path;
}

print_result print_report(function_window& window, const QString& pdf_path) {
    print_result result;
    auto page = report_make(window, 1.0);
    if (!page) return result;
    QPrinter printer(QPrinter::HighResolution);
    const bool to_pdf = !pdf_path.isEmpty() || QPrinterInfo::defaultPrinter().isNull();
    if (to_pdf) {
        result.pdf_path = pdf_path.isEmpty() ? pdf_path_for(QStringLiteral("report")) : pdf_path;
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(result.pdf_path);
    }
    printer.setDocName(QStringLiteral("Report"));
    result.ok = print_pages(*page, printer);
    return result;
}

} // namespace lumora
