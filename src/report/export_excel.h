#pragma once
// The workbook export of the active function: the name asked for, its sheets written to
// name + ".xlsx" in the data folder, and the user told where.
#include <QString>

namespace lumora {

class function_window;

// The name rule of the answer: cut at ".xls" in any case, blanks trimmed. "" when nothing is left.
QString export_name(const QString& answer);

// ExportExcel: asks for the name and writes the workbook. Returns the path written, or "" when
// nothing was written (cancelled, refused or failed; each says so).
QString export_excel(function_window& window);

} // namespace lumora
