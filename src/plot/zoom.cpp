#include "zoom.h"

#include "platform/numeric_text.h"

#include <algorithm>

namespace lumora {
namespace {

// The narrowest Y range a view may take: 0.01 %T or 0.001 ABS.
double narrowest_range(bool percent_t) {
    return percent_t ? 0.01 : 0.001;
}

} // namespace

void zoom_cursor(plot_view& view, bool percent_t) {
    if (!(view.view_high > view.view_low)) return;
    view.zoomed = true;
    const QRect& r = view.zoom_rect;
    const double unit = (view.view_high - view.view_low) / 280;
    const double new_high = (plot_bottom - r.top()) * unit + view.view_low;
    const double new_low = (plot_bottom - r.bottom()) * unit + view.view_low;
    const double px = (view.view_stop - view.view_start) / 280.0;
    const double new_start = (r.left() - plot_left) * px + view.view_start;
    const double new_stop = (r.right() - plot_left) * px + view.view_start;
    // A band narrower than 12 units of X is taken for a slip of the hand: nothing changes.
    if (new_stop - new_start < 12) return;
    view.view_start = static_cast<std::int16_t>(cint(new_start));
    view.view_stop = static_cast<std::int16_t>(cint(new_stop));
    const double least = narrowest_range(percent_t);
    if (new_high - new_low < least) {
        view.view_high = new_high;
        view.view_low = new_high - least;
    } else {
        view.view_high = new_high;
        view.view_low = new_low;
    }
}

void zoom_auto(plot_view& view, bool percent_t) {
    view.zoomed = true;
    double largest = view.screen_curve[0];
    double smallest = view.screen_curve[0];
    for (double v : view.screen_curve) {
        largest = std::max(largest, v);
        smallest = std::min(smallest, v);
    }
    const double least = narrowest_range(percent_t);
    if (largest - smallest < least) {
        largest += least / 2;
        smallest -= least / 2;
    }
    const double margin = (largest - smallest) / 100;
    view.view_high = largest + margin;
    view.view_low = smallest - margin;
}

double column_to_x(const plot_view& view, int x) {
    return view.view_start + (x - plot_left) * view.view_nm_per_pixel;
}

double row_to_value(const plot_view& view, int y) {
    return (plot_bottom - y) * ((view.view_high - view.view_low) / 280) + view.view_low;
}

} // namespace lumora
