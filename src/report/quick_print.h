#pragma once
// The quick prints: a setup dialog's settings as its boxes stand, and a result window's graph or
// tables alone. Each goes to the default printer, or with none installed to a PDF in the data
// folder, whose path panel 6 tells.
#include "report_page.h"

#include <QString>
#include <QStringList>
#include <memory>

class QDialog;

namespace lumora {

class function_window;

// The lines QuickPrintParameter prints for `dialog`: the function, then for each field of the
// Instrument tab its caption and the text of its box.
QStringList quick_parameter_lines(const QDialog& dialog);

// The pages of the quick prints at scale 1.
std::unique_ptr<report_page> quick_parameter_page(const QDialog& dialog);
std::unique_ptr<report_page> quick_graph_page(function_window& window);
std::unique_ptr<report_page> quick_data_page(function_window& window);

// Sends a page to the default printer or a PDF; the PDF's path, or "" on paper. `what` names the
// PDF ("parameter", "graph", "data"). False in `ok` when the printer cannot start.
QString send_to_printer(const report_page& page, const QString& what, bool& ok, const QString& pdf_path = {});

void QuickPrintParameter(QDialog* dialog);
void QuickPrintGraph(function_window& window);
void QuickPrintData(function_window& window);

// Fills the functions' quick-print hook.
void install_quick_print();

} // namespace lumora
