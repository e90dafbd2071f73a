#pragma once
// Numbers as exchange files write them: the shortest text that reads back to the same double,
// always with a point as the decimal mark, whatever the locale of the program or the system.
#include <QString>

namespace lumora::opendata {

// Shortest round-trip text: "0.1", "-2.5e-07", "1234".
QString exact_text(double value);
// The same value without an exponent where that stays short ("0.00000025"); a value whose plain
// form would run past 24 characters keeps its exponent.
QString plain_text(double value);
// A time computed from a step count, rounded to the nanosecond so that 3 x 0.1 s reads "0.3".
QString seconds_text(double seconds);
// Parses either form with a point as the decimal mark; false for anything else.
bool parse_number(const QString& text, double& value);

} // namespace lumora::opendata
