#include "plot_view.h"

#include "platform/numeric_text.h"

namespace lumora {

void update_span(plot_view& view) {
    view.view_span = static_cast<std::int16_t>(view.view_stop - view.view_start);
    view.view_nm_per_pixel = view.view_span / 280.0;
}

void init_view(plot_view& view, double start, double stop, double high, double low) {
    view.plot_column = 0;
    view.draw_position = 0;
    view.view_start = static_cast<std::int16_t>(cint(start));
    view.view_stop = static_cast<std::int16_t>(cint(stop));
    update_span(view);
    view.view_high = high;
    view.view_low = low;
    view.zoom_rect = QRect(QPoint(plot_left, plot_top), QPoint(plot_right, plot_bottom));
}

} // namespace lumora
