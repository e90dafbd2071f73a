#pragma once
// Numeric text as the program shows and reads it: display patterns, the lenient number
// reader, and the two ways a real becomes an integer.
#include <QString>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace lumora {

// Formats x by a display pattern such as "#0.000", "###0nm", "###.00" or "      ###0".
// In the number part '0' is a digit always shown and '#' a digit shown only when significant;
// characters before and after it are copied as they stand. The integer part is never cut, so a
// value wider than the pattern shows all its digits. Rounding is half away from zero on the
// value's shortest decimal form, so 2.675 with "0.00" gives "2.68". A result that rounds to
// zero carries no minus sign.
std::string format_number(double x, std::string_view pattern);
// The same text into `out`, without the heap for any usual number: returns the length of the
// whole text, which is written only as far as `out` has room.
std::size_t format_number(std::span<char> out, double x, std::string_view pattern);

// The leading number of a text: blanks skipped anywhere, optional sign, digits, one point,
// an optional exponent. Anything else ends the number; no number at all gives 0.
double val(std::string_view text);

// A real to an integer, to the nearest with halves to even (2.5 -> 2, 3.5 -> 4).
// Values beyond the 32-bit range saturate.
std::int32_t cint(double x);

// A real to an integer by truncation toward zero.
std::int32_t fix(double x);

// format_number as the widgets take it.
QString format_text(double x, std::string_view pattern);
// The same into a QString kept for the purpose: rewritten in place, without an allocation once it
// has room and is not shared.
void format_text(QString& out, double x, std::string_view pattern);

// True when cint(x) fits a signed 16-bit field; the program treats anything else as an overflow.
bool fits_int16(double x);

} // namespace lumora
