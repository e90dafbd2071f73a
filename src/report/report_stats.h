#pragma once
// The statistics in the report and the workbook: a section after a function's own sections and
// a "Statistics" sheet after its own sheets, both only when "Print statistics" is ticked in the
// preview.
#include "functions/stats_panel.h"
#include "workbook.h"

#include <vector>

namespace lumora {

class report_page;

// "Print statistics": off until the user ticks it in the preview; it holds for the session and
// governs the report and the workbook alike.
extern bool report_print_statistics;

void report_calibration_statistics(report_page& page, const calibration_stats& s, const QString& unit,
                                   const std::vector<labelled_prediction>& samples);
void report_rate_statistics(report_page& page, const processing::rate_stats& r);

void calibration_statistics_sheet(workbook& book, const calibration_stats& s, const QString& unit,
                                  const std::vector<labelled_prediction>& samples);
void rate_statistics_sheet(workbook& book, const processing::rate_stats& r);

} // namespace lumora
