#pragma once
// A new curve from two existing ones and a constant:
//     result = (a * scan p) op1 (b * scan q) op2 c
// over every point of the scan range, scan_first_nm - 320 to scan_last_nm - 320 inclusive, into the
// next free column. Points outside the range are not written.
#include "processing/curve_arrays.h"

#include <string_view>

namespace lumora::processing {

// "+", "-" or "*"; any other text is `none`, which leaves the value as it is.
enum class scan_operator { add, subtract, multiply, none };
scan_operator scan_operator_from_text(std::string_view text);

struct scan_formula {
    double a = 1, b = 1, c = 1; // as the window reads them, through "0.000"
    int p = 1, q = 1;           // curve numbers, columns 1..20
    scan_operator op1 = scan_operator::add;
    scan_operator op2 = scan_operator::add;
};

enum class scan_arithmetic_status {
    done,
    curves_full,   // 20 curves already: there is no column for the result, nothing was written
    no_such_curve, // p or q is not a curve column 1..20
    range_outside, // the scan range reaches beyond points 0..790 (counters that no scan has set)
};

struct scan_arithmetic_result {
    scan_arithmetic_status status = scan_arithmetic_status::done;
    int column = 0; // the column written, curve_count + 1, when done
};

// Writes column curve_count + 1 of `curves` and nothing else. The caller then makes it the active
// curve (active_curve = old curve_count, curve_count + 1, its state 2), keeps it as scanned data and
// redraws. With curve_count at 20 it refuses and changes nothing.
scan_arithmetic_result scan_arithmetic(curve_array& curves, int curve_count, int scan_first_nm,
                                       int scan_last_nm, const scan_formula& formula);

} // namespace lumora::processing
