#pragma once
// The calibration in a report and a workbook, as Quantitative and Protein show it: the fit block
// of the parameter settings, the calibration graph, and the sheet "Equation".
#include "processing/calibration_fit.h"

#include <QString>
#include <QStringList>

namespace lumora {

class report_page;
class workbook;

// "Fit type = ...", the plot's equation label with its superscript 2, "Ka = " .. as far as the fit
// has them, and R squared; nothing for a fit type outside 1 to 4.
QStringList report_fit_lines(const calibration_set& c);

// The graph of Conc. (X, "Conc(unit)") on ABS (Y) with the fitted curve and the standards' crosses.
void report_calibration_graph(report_page& page, const calibration_set& c, const QString& unit);

// The sheet "Equation": the label ("ABS2" for the square), the coefficients and "R2   =", a line a
// row; empty for a fit type outside 1 to 4.
void equation_sheet(workbook& book, const calibration_set& c);

} // namespace lumora
