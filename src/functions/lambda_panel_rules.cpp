#include "lambda_panel_rules.h"

#include "platform/numeric_text.h"

namespace lumora {

int clamp_goto_wavelength(const std::string& text) {
    int nm = fix(val(text));
    if (nm < 330) nm = 330;
    if (nm > 1100) nm = 1100;
    return nm;
}

std::string clamp_factor_text(const std::string& text) {
    double f = val(text);
    if (f < 0) f = 0;
    if (f > 10000) f = 10000;
    return format_number(f, "0.000");
}

} // namespace lumora
