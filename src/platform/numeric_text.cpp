#include "numeric_text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>

namespace lumora {
namespace {

bool is_digit_placeholder(char c) {
    return c == '0' || c == '#';
}

// Writes into a caller's buffer and counts what did not fit, so that the caller can tell.
class text_sink {
public:
    explicit text_sink(std::span<char> out) : out_(out) {}
    void put(char c) {
        if (size_ < out_.size()) out_[size_] = c;
        ++size_;
    }
    void put(std::string_view s) {
        for (char c : s)
            put(c);
    }
    void put(char c, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i)
            put(c);
    }
    std::size_t size() const { return size_; }

private:
    std::span<char> out_;
    std::size_t size_ = 0;
};

// The number part of a pattern and the literals around it.
struct number_pattern {
    std::string_view prefix, suffix;
    bool has_point = false;
    bool has_decimal_places = false; // anything after the point
    int min_int = 0;                 // '0' placeholders before the point
    int decimals = 0, min_dec = 0;   // placeholders after the point, and up to the last '0'
};

// False when the pattern has no number part at all.
bool split_pattern(std::string_view pattern, number_pattern& p) {
    std::size_t first = pattern.size(), last = 0;
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        if (is_digit_placeholder(pattern[i]) || pattern[i] == '.') {
            if (first == pattern.size()) first = i;
            last = i;
        }
    }
    if (first == pattern.size()) return false;
    p.prefix = pattern.substr(0, first);
    p.suffix = pattern.substr(last + 1);
    const std::string_view number = pattern.substr(first, last - first + 1);
    const std::size_t dot = number.find('.');
    p.has_point = dot != std::string_view::npos;
    for (char c : number.substr(0, dot))
        p.min_int += c == '0';
    if (p.has_point) {
        const std::string_view dec = number.substr(dot + 1);
        p.has_decimal_places = !dec.empty();
        for (char c : dec) {
            if (is_digit_placeholder(c)) ++p.decimals;
            if (c == '0') p.min_dec = p.decimals;
        }
    }
    return true;
}

// |x| as 0.ddddddddddddddd * 10^point: its fifteen significant digits. Working on these, binary
// noise such as 2.67499999... rounds as the 2.675 the user typed.
struct significant {
    char digits[15];
    int point;
};

significant significant_digits(double x) {
    // to_chars, not printf: the digits must not follow the user's locale.
    char buf[40];
    const auto end = std::to_chars(buf, buf + sizeof buf - 1, std::fabs(x), std::chars_format::scientific, 14).ptr;
    *end = '\0';
    // buf: d.dddddddddddddde[+-]XX
    significant s{};
    s.digits[0] = buf[0];
    std::memcpy(s.digits + 1, buf + 2, 14);
    s.point = (x == 0.0 ? 0 : std::atoi(buf + 17)) + 1;
    return s;
}

// The integer digits (at least one) and the decimals a rounding to `decimals` places keeps.
int kept_digits(const significant& s, int decimals) {
    return std::max(s.point, 1) + decimals;
}

// The decimal digits of |x| with the point after `int_digits` of them, rounded half away from
// zero to `decimals` places, into `digits`, which has room for kept_digits + 1; returns the count.
std::size_t rounded_digits(const significant& s, int decimals, char* digits, int& int_digits) {
    // Zeros in front give the integer part at least one digit; zeros behind stand for the places
    // past the fifteen.
    const int leading = s.point < 1 ? 1 - s.point : 0;
    int_digits = std::max(s.point, 1);
    const int keep = int_digits + decimals;
    const auto digit = [&](int j) {
        const int k = j - leading;
        return j < leading || k >= 15 ? '0' : s.digits[k];
    };
    // digits[0] is left for a carry out of the first digit.
    for (int j = 0; j < keep; ++j)
        digits[j + 1] = digit(j);
    if (digit(keep) >= '5') {
        int i = keep;
        while (i >= 1 && digits[i] == '9')
            digits[i--] = '0';
        if (i >= 1) {
            ++digits[i];
        } else {
            digits[0] = '1';
            ++int_digits;
            return static_cast<std::size_t>(keep + 1);
        }
    }
    std::memmove(digits, digits + 1, static_cast<std::size_t>(keep));
    return static_cast<std::size_t>(keep);
}

void format_into(text_sink& out, double x, std::string_view pattern) {
    if (!std::isfinite(x)) {
        out.put(std::isnan(x) ? "NaN" : (x > 0 ? "Inf" : "-Inf"));
        return;
    }
    number_pattern p;
    if (!split_pattern(pattern, p)) {
        out.put(pattern);
        return;
    }
    const significant sig = significant_digits(x);
    // The digits of any usual number fit on the stack; a huge one or a very long pattern does not.
    const std::size_t room = static_cast<std::size_t>(kept_digits(sig, p.decimals)) + 1;
    char local[128];
    std::unique_ptr<char[]> large;
    char* digits = local;
    if (room > sizeof local) {
        large = std::make_unique<char[]>(room);
        digits = large.get();
    }
    int int_digits = 0;
    const std::size_t count = rounded_digits(sig, p.decimals, digits, int_digits);
    const std::string_view all(digits, count);
    std::string_view int_part = all.substr(0, static_cast<std::size_t>(int_digits));
    std::string_view dec_part = all.substr(static_cast<std::size_t>(int_digits));
    // Insignificant leading zeros go, keeping as many as the '0' placeholders ask for.
    while (!int_part.empty() && int_part.front() == '0')
        int_part.remove_prefix(1);
    // Trailing '#' decimals are dropped when they are zero.
    while (static_cast<int>(dec_part.size()) > p.min_dec && dec_part.back() == '0')
        dec_part.remove_suffix(1);

    const bool is_zero = all.find_first_not_of('0') == std::string_view::npos;
    out.put(p.prefix);
    if (x < 0 && !is_zero) out.put('-');
    if (static_cast<int>(int_part.size()) < p.min_int)
        out.put('0', static_cast<std::size_t>(p.min_int) - int_part.size());
    out.put(int_part);
    if (p.has_point && (!dec_part.empty() || !p.has_decimal_places)) {
        out.put('.');
        out.put(dec_part);
    }
    out.put(p.suffix);
}

} // namespace

std::size_t format_number(std::span<char> out, double x, std::string_view pattern) {
    text_sink sink(out);
    format_into(sink, x, pattern);
    return sink.size();
}

std::string format_number(double x, std::string_view pattern) {
    char buf[64];
    const std::size_t n = format_number(buf, x, pattern);
    if (n <= sizeof buf) return std::string(buf, n);
    std::string text(n, '\0');
    format_number(text, x, pattern);
    return text;
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
    // from_chars reads a point whatever the user's locale; strtod would stop at it under a comma locale.
    const char* first = num.data() + (num[0] == '+' ? 1 : 0);
    double x = 0;
    const auto [ptr, ec] = std::from_chars(first, num.data() + num.size(), x);
    if (ec == std::errc::result_out_of_range) {
        const bool tiny = num.find("e-") != std::string::npos;
        const double size = tiny ? 0.0 : HUGE_VAL;
        return num[0] == '-' ? -size : size;
    }
    return x;
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

void format_text(QString& out, double x, std::string_view pattern) {
    char buf[64];
    const std::size_t n = format_number(buf, x, pattern);
    const bool ascii = std::all_of(buf, buf + std::min(n, sizeof buf),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    if (n > sizeof buf || !ascii) {
        out = format_text(x, pattern);
        return;
    }
    // Written in place: resize keeps the buffer when it has room and nobody else holds it.
    out.resize(static_cast<qsizetype>(n));
    QChar* d = out.data();
    for (std::size_t i = 0; i < n; ++i)
        d[i] = QLatin1Char(buf[i]);
}

bool fits_int16(double x) {
    const double r = std::nearbyint(x);
    return r >= -32768.0 && r <= 32767.0;
}

} // namespace lumora
