#pragma once
// What each function adds to the report and the workbook: one small piece per function, found by
// function_id. A function that has no piece answers "The function is not available!".
#include <QString>
#include <functional>
#include <vector>

namespace lumora {

class function_window;
class report_page;
class workbook;
struct report_flags;

struct report_piece {
    int function_id = 0;
    // Date and page-number flags of the function's record.
    std::function<report_flags()> flags;
    // The laboratory line and the three lines under it: "Subject:", "Operator:", "Remark:".
    std::function<void(QString& laboratory, QString& subject, QString& op, QString& remark)> title;
    // Everything under the rule: graph, parameter block and the table sections.
    std::function<void(function_window&, report_page&)> body;
    // The quick prints: the graph alone at the top of a page, and the tables alone (every table,
    // whatever the report's flags), page breaks as in the report and no footer.
    std::function<void(function_window&, report_page&)> graph;
    std::function<void(function_window&, report_page&)> tables;
    // The statistics section after the function's own sections, when "Print statistics" is ticked.
    std::function<void(function_window&, report_page&)> statistics;
    // The sheets of the workbook, in the order they are made.
    std::function<void(function_window&, workbook&)> sheets;
};

// Every function's piece, in one table.
const std::vector<report_piece>& report_pieces();
const report_piece* report_piece_for(int function_id);

// The pieces of the functions that stand (report_<function>.cpp).
report_piece spectrum_report();
report_piece photometry_report();
report_piece timescan_report();
report_piece timescan2_report();
report_piece quant_report();
report_piece protein_report();
report_piece kinetic_report();

} // namespace lumora
