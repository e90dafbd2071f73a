#include "processing/scan_arithmetic.h"

namespace lumora::processing {
namespace {

constexpr int max_curves = spectrum_columns - 1; // 20

double apply(scan_operator op, double left, double right) {
    switch (op) {
    case scan_operator::add:
        return left + right;
    case scan_operator::subtract:
        return left - right;
    case scan_operator::multiply:
        return left * right;
    case scan_operator::none:
        break;
    }
    return left;
}

} // namespace

scan_operator scan_operator_from_text(std::string_view text) {
    if (text == "+") return scan_operator::add;
    if (text == "-") return scan_operator::subtract;
    if (text == "*") return scan_operator::multiply;
    return scan_operator::none;
}

scan_arithmetic_result scan_arithmetic(curve_array& curves, int curve_count, int scan_first_nm,
                                       int scan_last_nm, const scan_formula& f) {
    if (curve_count >= max_curves) return {scan_arithmetic_status::curves_full, 0};
    if (curve_count < 0 || f.p < 1 || f.p > max_curves || f.q < 1 || f.q > max_curves)
        return {scan_arithmetic_status::no_such_curve, 0};
    const int first = scan_first_nm - spectrum_first_nm;
    const int last = scan_last_nm - spectrum_first_nm;
    if (first <= last && (first < 0 || last >= spectrum_points))
        return {scan_arithmetic_status::range_outside, 0};

    const auto p = static_cast<std::size_t>(f.p);
    const auto q = static_cast<std::size_t>(f.q);
    const int column = curve_count + 1;
    const auto out = static_cast<std::size_t>(column);
    for (int i = first; i <= last; ++i) {
        auto& point = curves[static_cast<std::size_t>(i)];
        // Both products are taken before the result is stored. With an operator that is none of
        // the three, the column keeps what it held.
        const double a = f.a * point[p];
        const double b = f.b * point[q];
        if (f.op1 != scan_operator::none) point[out] = apply(f.op1, a, b);
        point[out] = apply(f.op2, point[out], f.c);
    }
    return {scan_arithmetic_status::done, column};
}

} // namespace lumora::processing
