#include "numeric_text.h"

#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

namespace lumora {
namespace {

bool is_digit_placeholder(char c) {
    return c == '0' || c == '#';
}

// The decimal digits of |x| with the point after `int_digits` of them, rounded half away from
// zero to `decimals` places. Works on the 15-significant-digit form so that binary noise such as
// 2.67499999... rounds as the 2.675 the user typed.
std::string rounded_digits(double x, int decimals, int& int_digits) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.14e", std::fabs(x));
    // buf: d.dddddddddddddde[+-]XX
    std::string mant;
    mant += buf[0];
    const char* p = buf + 2;
    while (*p && *p != 'e')
        mant += *p++;
    int exp10 = std::atoi(p + 1);
    if (x == 0.0) exp10 = 0;
    // Value = 0.mant * 10^(exp10 + 1); pad so that the integer part has at least one digit.
    int point = exp10 + 1;
    if (point < 1) {
        mant.insert(0, static_cast<std::size_t>(1 - point), '0');
        point = 1;
    }
    const std::size_t keep = static_cast<std::size_t>(point + decimals);
    if (mant.size() < keep + 1) mant.append(keep + 1 - mant.size(), '0');
    const bool round_up = mant[keep] >= '5';
    mant.resize(keep);
    if (round_up) {
        int i = static_cast<int>(keep) - 1;
        while (i >= 0 && mant[static_cast<std::size_t>(i)] == '9')
            mant[static_cast<std::size_t>(i--)] = '0';
        if (i >= 0) {
            ++mant[static_cast<std::size_t>(i)];
        } else {
            mant.insert(0, 1, '1');
            ++point;
        }
    }
    int_digits = point;
    return mant;
}

} // namespace

std::string format_number(double x, std::string_view pattern) {
    if (!std::isfinite(x)) return std::isnan(x) ? "NaN" : (x > 0 ? "Inf" : "-Inf");
    // Split the pattern into literal prefix, number part and literal suffix.
    std::size_t first = pattern.size(), last = 0;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (is_digit_placeholder(pattern[i]) || pattern[i] == '.') {
            if (first == pattern.size()) first = i;
            last = i;
        }
    }
    if (first == pattern.size()) return std::string(pattern);
    const std::string_view prefix = pattern.substr(0, first);
    const std::string_view number = pattern.substr(first, last - first + 1);
    const std::string_view suffix = pattern.substr(last + 1);

    const std::size_t dot = number.find('.');
    const std::string_view int_pat = number.substr(0, dot);
    const std::string_view dec_pat =
        dot == std::string_view::npos ? std::string_view{} : number.substr(dot + 1);
    int min_int = 0;
    for (char c : int_pat)
        min_int += c == '0';
    int decimals = 0, min_dec = 0;
    for (char c : dec_pat) {
        if (is_digit_placeholder(c)) ++decimals;
        if (c == '0') min_dec = decimals;
    }

    int int_digits = 0;
    const std::string digits = rounded_digits(x, decimals, int_digits);
    std::string int_part = digits.substr(0, static_cast<std::size_t>(int_digits));
    std::string dec_part = digits.substr(static_cast<std::size_t>(int_digits));
    // Strip insignificant leading zeros, keeping as many as the '0' placeholders ask for.
    std::size_t lead = 0;
    while (lead < int_part.size() && int_part[lead] == '0')
        ++lead;
    int_part.erase(0, lead);
    if (static_cast<int>(int_part.size()) < min_int)
        int_part.insert(0, static_cast<std::size_t>(min_int) - int_part.size(), '0');
    // Trailing '#' decimals are dropped when they are zero.
    while (static_cast<int>(dec_part.size()) > min_dec && dec_part.back() == '0')
        dec_part.pop_back();

    const bool is_zero = digits.find_first_not_of('0') == std::string::npos;
    std::string out(prefix);
    if (x < 0 && !is_zero) out += '-';
    out += int_part;
    if (dot != std::string_view::npos && (!dec_part.empty() || dec_pat.empty())) {
        out += '.';
        out += dec_part;
    }
    out += suffix;
    return out;
}

double val(std::string_view text) {
    std::string compact;
    compact.reserve(text.size());
    for (char c : text)
        if (c != ' ' && c != '\t' && c != '\n' && c != '\r') compact += c;
    std::size_t i = 0;
    std::string num;
    if (i < compact.size() && (compact[i] == '+' || compact[i] == '-')) num += compact[i++];
    bool any_digit = false, seen_point = false;
    for (; i < compact.size(); ++i) {
        const char c = compact[i];
        if (std::isdigit(static_cast<unsigned char>(c))) {
            num += c;
            any_digit = true;
        } else if (c == '.' && !seen_point) {
            num += c;
            seen_point = true;
        } else {
            break;
        }
    }
    if (!any_digit) return 0.0;
    // An exponent counts only when digits follow it.
    if (i + 1 < compact.size() &&
        (compact[i] == 'e' || compact[i] == 'E' || compact[i] == 'd' || compact[i] == 'D')) {
        std::size_t j = i + 1;
        std::string ex = "e";
        if (compact[j] == '+' || compact[j] == '-') ex += compact[j++];
        const std::size_t digits_from = j;
        while (j < compact.size() && std::isdigit(static_cast<unsigned char>(compact[j])))
            ex += compact[j++];
        if (j > digits_from) num += ex;
    }
    return std::strtod(num.c_str(), nullptr);
}

std::int32_t cint(double x) {
    if (std::isnan(x)) return 0;
    if (x >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
    if (x <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(std::nearbyint(x)); // default mode: to nearest, ties to even
}

std::int32_t fix(double x) {
    if (std::isnan(x)) return 0;
    if (x >= 2147483647.0) return std::numeric_limits<std::int32_t>::max();
    if (x <= -2147483648.0) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(std::trunc(x));
}

QString format_text(double x, std::string_view pattern) {
    return QString::fromStdString(format_number(x, pattern));
}

bool fits_int16(double x) {
    const double r = std::nearbyint(x);
    return r >= -32768.0 && r <= 32767.0;
}

} // namespace lumora
