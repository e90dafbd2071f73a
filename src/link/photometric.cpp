#include "photometric.h"

#include "platform/numeric_text.h"
#include "protocol.h"

#include <cmath>

namespace lumora {

std::int32_t get_dark() {
    const int band = band_of(shared.lambda_now);
    return band < 0 ? 0 : shared.dark_by_band[static_cast<std::size_t>(band)];
}

std::int32_t get_now_data() {
    double sum = 0;
    for (double r : shared.readings)
        sum += r;
    return fix(sum / 10.0);
}

bool show_now_abs(std::int32_t intensity) {
    const std::int32_t dark = get_dark();
    shared.net_signal = intensity - dark;
    if (shared.lambda_now >= 320) {
        const std::int32_t index = cint(shared.lambda_now - 320);
        if (index >= wavelength_points) throw run_fault{"index out of range"};
        const double denominator = shared.reference_intensity[static_cast<std::size_t>(index)] - dark;
        if (denominator == 0) throw run_fault{"division by zero"};
        shared.now_trans = shared.net_signal / denominator;
    }
    if (shared.now_trans > 0) {
        double a = std::log(1.0 / shared.now_trans) / std::log(10.0);
        if (a <= -0.3) a = -0.3;
        if (!(a < 4.5)) a = 4.5;
        shared.now_abs = a;
    } else {
        shared.now_abs = 4.5;
    }
    double p = shared.now_trans * 100.0;
    if (p <= 0) p = 0;
    if (p >= 120) p = 120;
    shared.now_percent_t = p;
    return true;
}

namespace {

// The value panel 2 shows and its pattern, the unit included; no pattern for an unknown mode.
struct reading_format {
    double value = 0;
    const char* pattern = nullptr;
};

reading_format reading_of(std::uint16_t show_mode, bool four_digits, double abs, double percent_t,
                          float factor) {
    switch (show_mode) {
    case 0:
        return {abs, four_digits ? "#0.0000A" : "#0.000A"};
    case 1:
        if (percent_t < 1) return {percent_t, four_digits ? "#0.0000%T" : "#0.000%T"};
        if (percent_t < 10) return {percent_t, four_digits ? "#0.000%T" : "#0.00%T"};
        return {percent_t, four_digits ? "#0.00%T" : "#0.0%T"};
    case 2: {
        // The product is of the absorbance as displayed, not of the full-precision value.
        char shown[64];
        const std::size_t n = format_number(shown, abs, four_digits ? "0.0000" : "0.000");
        const double a = n <= sizeof shown ? val(std::string_view(shown, n))
                                           : val(format_number(abs, four_digits ? "0.0000" : "0.000"));
        return {static_cast<double>(factor) * a, four_digits ? "#0.0000C" : "#0.000C"};
    }
    default:
        return {};
    }
}

} // namespace

std::string reading_text(std::uint16_t show_mode, bool four_digits, double abs, double percent_t,
                         float factor) {
    const reading_format r = reading_of(show_mode, four_digits, abs, percent_t, factor);
    return r.pattern ? format_number(r.value, r.pattern) : std::string();
}

void reading_text(QString& out, std::uint16_t show_mode, bool four_digits, double abs, double percent_t,
                  float factor) {
    const reading_format r = reading_of(show_mode, four_digits, abs, percent_t, factor);
    if (r.pattern)
        format_text(out, r.value, r.pattern);
    else
        out.resize(0);
}

} // namespace lumora
