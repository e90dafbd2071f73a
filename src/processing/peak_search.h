#pragma once
// Peak and valley search on the active curve as it stands on the screen: the 281 values of the plot
// columns, not the 1 nm data, so a zoomed view is searched at its own finer resolution.
//
// A column is a candidate when it lies strictly above (peak) or below (valley) both columns n away;
// a base is the opposite. Columns 0 and 279 are always bases, so that the walks from a candidate to
// its nearest base on either side end. A candidate stays only if it differs from both nearest bases
// by more than the threshold. A thinning pass from left to right then keeps one of two neighbours.
// Each find, in column order, gets a box on the plot; the first 100 also get a table row and a mark
// record, and a 101st ends the search after its box.
#include "processing/curve_arrays.h"

#include <array>
#include <cstdint>
#include <functional>

namespace lumora::processing {

// A table row's record: flag -1 the row is selected and goes to the report, 0 it is not; column is
// the plot column 0..280, row the Y pixel of the value. Same layout as the tracking records.
struct mark {
    std::int16_t flag = 0, column = 0, row = 0;
};

using mark_array = std::array<mark, screen_columns>;

constexpr int search_row_limit = 100;

// The height a find must exceed on both sides: 0.005 ABS, or 0.05 %T.
double search_threshold(bool percent_t);

// The half width n from the setup's range (stop - start, not the view's): 2 for 40 nm or more,
// 4 for 25 nm up to 40, 6 under 25.
int search_half_width(double start_lambda, double stop_lambda);

struct search_setup {
    double threshold = 0.005; // h, in data units
    int half_width = 2;       // n, in plot columns, 1..140
    int view_start = 0;       // the view's X range, for the wavelength of a column [nm]
    int view_span = 0;
    std::function<int(double)> row_of; // the plot row of a value (y_to_pixel with the view's high and low)
};

// One box on the plot.
struct search_find {
    std::int16_t column = 0; // plot column 0..280, drawn at x = 60 + column
    std::int16_t row = 0;    // row_of(value)
    double value = 0;        // screen_curve[column]
    double lambda = 0;       // column * view_span / 280 + view_start, rounded half to even to whole nm
};

struct search_result {
    std::array<search_find, search_row_limit + 1> finds{}; // finds[0..boxes-1], in column order
    int boxes = 0;              // boxes to draw: count, plus one when the limit was reached
    std::int16_t count = 0;     // table rows, at most 100 (peak_count / valley_count)
    bool limit_reached = false; // a 101st find was boxed but has no row; the search stopped there
};

// Fills the table's records marks[0..count-1] (flag -1, the column, the row) and leaves the others
// as they were. The caller writes the rows: "  V" and k + 1, the lambda, the value.
search_result search_peak(const screen_array& screen_curve, const search_setup& setup, mark_array& marks);
search_result search_valley(const screen_array& screen_curve, const search_setup& setup, mark_array& marks);

} // namespace lumora::processing
