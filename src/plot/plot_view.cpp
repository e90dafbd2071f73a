#include "plot_view.h"

#include "platform/numeric_text.h"

#include <QWidget>

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

void describe_plot(QWidget& plot, const plot_view& view, const plot_legend& legend) {
    QString text = QStringLiteral("%1 to %2 %3, %4 to %5 %6.")
                       .arg(view.view_start)
                       .arg(view.view_stop)
                       .arg(legend.x_unit, format_text(view.view_low, legend.y_format),
                            format_text(view.view_high, legend.y_format), legend.y_unit);
    if (legend.curves < 1) {
        text += QStringLiteral(" No curves.");
    } else {
        text +=
            legend.curves == 1 ? QStringLiteral(" 1 curve") : QStringLiteral(" %1 curves").arg(legend.curves);
        if (legend.shown != legend.curves) text += QStringLiteral(", %1 shown").arg(legend.shown);
        if (legend.active >= 1) text += QStringLiteral(", curve %1 active").arg(legend.active);
        text += QLatin1Char('.');
    }
    static const char* const orders[4] = {"1st", "2nd", "3rd", "4th"};
    if (legend.derivative_order >= 1 && legend.derivative_order <= 4)
        text +=
            QStringLiteral(" %1 derivative below.").arg(QLatin1String(orders[legend.derivative_order - 1]));
    const QString name = legend.function + QStringLiteral(" plot");
    if (plot.accessibleName() != name) plot.setAccessibleName(name);
    if (plot.accessibleDescription() != text) plot.setAccessibleDescription(text);
}

} // namespace lumora
