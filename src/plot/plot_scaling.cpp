#include "plot_scaling.h"

#include "platform/numeric_text.h"
#include "platform/prompts.h"

#include <cmath>

namespace lumora {
namespace {

// One mapping: `steps` rows of scale, the row of `value` counted up from `bottom`, held to
// bottom - steps .. bottom. `warned` is the mapping's own once-only flag.
int map_to_row(double value, double high, double low, int steps, int bottom, bool& warned) {
    if (value >= high) value = high;
    if (value < low) value = low;
    float t = static_cast<float>((value - low) * steps);
    if (high == low) {
        if (!warned) {
            warned = true;
            prompts::message_box(QStringLiteral("Divide by zero. The data may be wrong!"), box_icon::critical,
                                 QStringLiteral("Warning"));
        }
        return bottom;
    }
    warned = false;
    t = static_cast<float>(static_cast<double>(t) / (high - low));
    // A value that is no number at all (a curve that never got data through a fault) has no row
    // of its own; it lies on the bottom line like a value held to `low`.
    if (std::isnan(t)) return bottom;
    const int r = cint(static_cast<double>(t));
    const int row = bottom - r;
    const int top = bottom - steps;
    return row < top ? top : (row > bottom ? bottom : row);
}

bool warned_screen = false;
bool warned_report = false;
bool warned_derivative = false;
bool warned_report_derivative = false;

} // namespace

int y_to_pixel(double value, double high, double low) {
    return map_to_row(value, high, low, 280, 300, warned_screen);
}

int report_y_to_pixel(double value, double high, double low) {
    return map_to_row(value, high, low, 280, 520, warned_report);
}

int DerivateGetPixelY(double value, double high, double low) {
    return map_to_row(value, high, low, 140, 490, warned_derivative);
}

int PrtDerivateGetPixelY(double value, double high, double low) {
    return map_to_row(value, high, low, 140, 720, warned_report_derivative);
}

void reset_pixel_warnings() {
    warned_screen = warned_report = warned_derivative = warned_report_derivative = false;
}

} // namespace lumora
