#pragma once
// Pieces every function's report is built from: the title block, the graph in its frame with
// its marks, section heads and the rows of the two side-by-side columns.
#include "plot/curve_drawing.h"
#include "processing/peak_search.h"
#include "report_page.h"

#include <QStringList>
#include <array>
#include <functional>
#include <vector>

namespace lumora {

class grid;

// Title, the four lines under it and the rule, fonts 16 and 14.
void report_title_block(report_page& page, const QString& laboratory, const QString& subject,
                        const QString& op, const QString& remark);

// Marks of one kind on the graph, numbered from 1 among the selected ones.
struct report_marks {
    const processing::mark* marks = nullptr;
    int count = 0;
    int color = 9; // standard colour
};

// Font 8. The graph's frame from (100, top) to (380, top + 280) in page units, 41 ticks on the
// left and bottom edges, six labels each way and the two captions; the curves laid out over the
// view as on screen, with black along the top row and white along the bottom row; the marks.
// `row_of` maps a value to a row of the upper graph (240..520) or the derivative graph (580..720).
struct report_graph {
    int top = 240, bottom = 520;
    int (*row_of)(double value, double high, double low) = nullptr;
    double high = 0, low = 0;
    QString title; // above the frame ("1st Derivative"), or none
    // An X range of its own for the labels (a calibration's Conc.); the view's when equal.
    double x_low = 0, x_high = 0;
};
// A curve as the graph's 281 columns show it, in its colour.
struct report_curve {
    std::array<double, plot_columns> values{};
    QColor color;
    bool gap_after_zero = true; // no line from a column whose value is exactly 0, as a redraw does
};
// A curve of X in whole units (nm) laid out over the view in the two ways of the screen: a stored
// point per column over a span of 280 or more, straight lines between points over a narrower one.
report_curve lay_out_curve(const plot_view& view, const curve_data& curve);
void report_draw_graph(report_page& page, const plot_view& view, const axes_text& axes,
                       const report_graph& graph, const std::vector<report_curve>& curves,
                       const std::vector<report_marks>& marks = {});

// A section: the break test, then the head at 50 with its grey box on the print position.
void report_section(report_page& page, const QString& head);

// Rows in two columns: even rows at 50, odd rows at 360 on the same line. Each row's cells go at
// the column's offsets (page units). The break test runs before every row.
class report_columns {
public:
    report_columns(report_page& page, std::vector<int> offsets);
    void row(const QStringList& cells);
    // Ends a half-filled line.
    void close();

private:
    report_page& page_;
    std::vector<int> offsets_;
    int n_ = 0;
};

// The marked rows of a table: for each of the `count` marks whose flag is set, a running number
// from 1 and the texts of cells 1..`cols - 1` of its row.
void report_marked_rows(report_columns& out, const grid& table, const processing::mark* marks, int count,
                        int cols);

// Text stops this far short of the page's right edge.
constexpr int report_right_margin = 40;

// The parameter block at `left`: head "Parameter settings" at row 200 and a line each. A line
// that would run past the page's right margin goes on in the next line, indented.
void report_parameters(report_page& page, int left, const QStringList& lines);
// `text` in pieces no wider than `width` by `measure`, broken after the last blank or comma that
// fits (inside a word where none does); every piece after the first starts with two blanks.
QStringList wrap_line(const QString& text, double width,
                      const std::function<double(const QString&)>& measure);

} // namespace lumora
