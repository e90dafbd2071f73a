#pragma once
// The report of a function window, for the preview and the printer, and the routes to the paper.
#include "report_page.h"

#include <QString>
#include <memory>

class QPrinter;

namespace lumora {

class function_window;

// The whole report of `window` at `scale`, dispatched by its function_id; nullptr for a function
// that has no report.
std::unique_ptr<report_page> report_make(function_window& window, double scale);

// Where print_report sends the pages: the default printer, or with none installed a PDF in the
// data folder.
struct print_result {
    bool ok = false;
    QString pdf_path; // set when the pages went to a PDF
};
// The report at scale 1 on `printer` (already set up); false when the printer cannot start.
bool print_pages(const report_page& page, QPrinter& printer);
// The report on the default printer or to a PDF; `pdf_path` forces a PDF there.
print_result print_report(function_window& window, const QString& pdf_path = {});

// A new PDF path in the data folder for a document of `what` ("report", "graph", ...).
QString pdf_path_for(const QString& what);

} // namespace lumora
