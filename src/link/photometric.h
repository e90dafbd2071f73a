#pragma once
// The conversions that every function shares: dark subtraction, intensity to absorbance and %T,
// and the text of the live reading in panel 2.
#include "shared_state.h"

#include <QString>
#include <string>

namespace lumora {

// A run-time fault of a handler (division by zero, index out of range, 16-bit overflow). It ends
// the handling of the reply that raised it; recv_message catches it, nothing else sees it.
struct run_fault {
    const char* what;
};

// dark_by_band of the band of lambda_now, 0 outside the bands.
std::int32_t get_dark();
// The mean of the last ten readings, truncated toward zero.
std::int32_t get_now_data();
// net_signal, now_trans, now_abs (-0.3..4.5) and now_percent_t (0..120) from one intensity.
// Throws run_fault when the reference equals the dark (division by zero) or lambda_now is past
// the arrays.
bool show_now_abs(std::int32_t intensity);
// The text of the live reading for the lambda panel's mode and digits: "0.000A", "100.0%T", "0.308C".
std::string reading_text(std::uint16_t show_mode, bool four_digits, double abs, double percent_t,
                         float factor);
// The same text written into `out` in place (see format_text): a reading a frame, no allocation.
void reading_text(QString& out, std::uint16_t show_mode, bool four_digits, double abs, double percent_t,
                  float factor);

} // namespace lumora
