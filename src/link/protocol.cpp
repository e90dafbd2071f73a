#include "protocol.h"

#include "platform/numeric_text.h"

#include <charconv>
#include <cmath>

namespace lumora {

std::optional<std::array<std::uint8_t, 2>> wavelength_pair(double x) {
    // The value goes through its text form first, as the program always did: 15 significant digits.
    char text[40];
    const auto end = std::to_chars(text, text + sizeof text, x, std::chars_format::general, 15).ptr;
    double v = 0;
    std::from_chars(text, end, v);
    const double hi = std::floor(v / 256.0);
    const std::int32_t rounded = cint(v);
    if (!(hi >= 0 && hi <= 255) || rounded < 0) return std::nullopt;
    return std::array<std::uint8_t, 2>{static_cast<std::uint8_t>(hi),
                                       static_cast<std::uint8_t>(rounded % 256)};
}

std::uint8_t speed_bits(int scan_speed) {
    switch (scan_speed) {
    case 1:
        return 16;
    case 2:
        return 32;
    default:
        return 0;
    }
}

std::int32_t bytes_to_long(int start, int count, const std::uint8_t* bytes, std::size_t size) {
    if (start < 0 || count < 0 || static_cast<std::size_t>(start + count) > size) return 0;
    std::uint32_t v = 0;
    for (int i = 0; i < count; ++i)
        v = (v << 8) | bytes[start + i];
    return static_cast<std::int32_t>(v);
}

int band_of(double nm) {
    if (nm >= 320 && nm <= 379) return 0;
    if (nm >= 380 && nm <= 459) return 1;
    if (nm >= 460 && nm <= 559) return 2;
    if (nm >= 560 && nm <= 759) return 3;
    if (nm >= 760 && nm <= 1100) return 4;
    return -1;
}

} // namespace lumora
