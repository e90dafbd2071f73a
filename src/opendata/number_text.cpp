#include "number_text.h"

#include <charconv>
#include <cmath>

namespace lumora::opendata {
namespace {

QString chars(double value, std::chars_format format) {
    char buffer[400];
    const auto r = std::to_chars(buffer, buffer + sizeof buffer, value, format);
    return QString::fromLatin1(buffer, static_cast<qsizetype>(r.ptr - buffer));
}

} // namespace

QString exact_text(double value) {
    if (!std::isfinite(value)) return QStringLiteral("NaN");
    if (value == 0) return QStringLiteral("0"); // no "-0"
    return chars(value, std::chars_format::general);
}

QString plain_text(double value) {
    if (!std::isfinite(value)) return QStringLiteral("NaN");
    if (value == 0) return QStringLiteral("0");
    const QString fixed = chars(value, std::chars_format::fixed);
    return fixed.size() <= 24 ? fixed : chars(value, std::chars_format::scientific);
}

QString seconds_text(double seconds) {
    return exact_text(std::round(seconds * 1e9) / 1e9);
}

bool parse_number(const QString& text, double& value) {
    const QByteArray bytes = text.trimmed().toLatin1();
    if (bytes.isEmpty()) return false;
    const char* first = bytes.constData();
    if (*first == '+') ++first;
    const char* last = bytes.constData() + bytes.size();
    const auto r = std::from_chars(first, last, value);
    return r.ec == std::errc() && r.ptr == last;
}

} // namespace lumora::opendata
