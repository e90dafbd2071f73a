#include "photometry_rules.h"

#include "link/link_context.h"
#include "link/photometric.h"
#include "link/shared_state.h"
#include "platform/numeric_text.h"

#include <cmath>

namespace lumora {

ph_cell ph_cell_of(int index, int n) {
    if (n < 1) n = 1;
    return {index / n + 1, index % n + 1};
}

double ph_absorbance(double now_trans) {
    if (!(now_trans > 0)) return 3.0;
    double a = std::log10(1.0 / now_trans);
    if (a < -0.3) a = -0.3;
    if (a >= 3.0) a = 3.0;
    return a;
}

double ph_percent(double now_trans) {
    double p = now_trans * 100.0;
    if (p < 0) p = 0;
    if (p >= 120) p = 120;
    return p;
}

bool ph_show_now_abs(std::int32_t value) {
    const std::int32_t dark = get_dark();
    shared.net_signal = value - dark;
    if (shared.lambda_now_int >= 320) {
        const int index = shared.lambda_now_int - 320;
        if (index >= wavelength_points) throw run_fault{"index out of range"};
        auto& reference = shared.reference_intensity[static_cast<std::size_t>(index)];
        if (photometry_run.ph_zeroing) reference = value;
        const double denominator = reference - dark;
        if (denominator == 0) throw run_fault{"division by zero"};
        shared.now_trans = shared.net_signal / denominator;
    }
    if (photometry_run.ph_zeroing) set_panel(2, QStringLiteral("0.000A"));
    photometry_run.ph_abs = ph_absorbance(shared.now_trans);
    photometry_run.ph_percent_t = ph_percent(shared.now_trans);
    return true;
}

QString ph_cell_text(int mode, double abs, double percent_t, float factor, double* c) {
    switch (mode) {
    case 1:
        if (c) *c = percent_t;
        return format_text(percent_t, "##0.00");
    case 2: {
        char shown[32];
        const std::size_t n = format_number(shown, abs, "0.000");
        const double rounded = n <= sizeof shown ? val(std::string_view(shown, n)) : abs;
        const double value = rounded * static_cast<double>(factor);
        if (c) *c = value;
        return format_text(value, value >= 10000 || value <= -1000 ? "0.00" : "0.000");
    }
    default:
        if (c) *c = abs;
        return format_text(abs, "#0.000");
    }
}

QString ph_panel_unit(int mode) {
    switch (mode) {
    case 1:
        return QStringLiteral("%T");
    case 2:
        return QStringLiteral("C");
    default:
        return QStringLiteral("A");
    }
}

QString ph_r_text(int mode, double r, double c) {
    if (mode == 1) return format_text(r, "#0.00");
    if (mode == 2 && (c >= 10000 || c <= -1000)) return format_text(r, "#0.00");
    return format_text(r, "#0.000");
}

double ph_term_value(const QString& text) {
    char buf[64];
    const qsizetype n = text.size();
    if (n < static_cast<qsizetype>(sizeof buf)) {
        for (qsizetype i = 0; i < n; ++i) {
            const char16_t u = text[i].unicode();
            buf[i] = u < 128 ? static_cast<char>(u) : '?';
        }
        return val(std::string_view(buf, static_cast<std::size_t>(n)));
    }
    return val(text.toStdString());
}

QString ph_unit_header(int mode, const QString& unit) {
    switch (mode) {
    case 1:
        return QStringLiteral("No. (Unit=%T)");
    case 2:
        return QStringLiteral("No.") + QStringLiteral(" (Unit=") + unit + QStringLiteral(")");
    default:
        return QStringLiteral("No. (Unit=ABS)");
    }
}

QString ph_lambda_header(double nm) {
    return format_text(nm, "      ###0") + QStringLiteral("nm");
}

QString ph_r_header() {
    return QStringLiteral("               R");
}

QString ph_row_label(int row, bool selected, bool zero) {
    QString t = QString::number(row) + (selected ? QStringLiteral("  V") : QStringLiteral("  X"));
    if (zero) t += QStringLiteral(" Zero");
    return t;
}

} // namespace lumora
