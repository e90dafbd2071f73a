#include "timescan_plot.h"

#include "platform/numeric_text.h"
#include "plot/plot_surface.h"

namespace lumora {

axes_text timescan_axes(bool percent_t) {
    axes_text t;
    t.y_caption = percent_t ? QStringLiteral("(%T)") : QStringLiteral("(ABS)");
    t.x_caption = QStringLiteral("Time(sec)");
    t.y_format = percent_t ? "#0.000" : "#0.0000";
    t.x_format = "###0.0";
    t.round_x_labels = false;
    return t;
}

tracking_config timescan_tracking(bool percent_t) {
    tracking_config c;
    c.x_name = QStringLiteral("Time= ");
    c.idle_x_name = QStringLiteral("Time= ");
    c.idle_data = QStringLiteral("Data= ");
    c.x_readout = "###0.00sec  ";
    c.x_cell = "###0.00sec";
    c.band_value = percent_t ? "##0.000" : "#0.0000";
    c.data_value = percent_t ? "##0.00" : "#0.000";
    c.cell_value = percent_t ? "##0.00" : "#0.000";
    c.cell_suffix = percent_t ? QStringLiteral("%T") : QStringLiteral("A");
    c.number_first = true;
    c.heads = {QStringLiteral("No."), QStringLiteral("Time"), QStringLiteral("Value")};
    c.input_prompt = QStringLiteral("Input the time(sec):\nExample:35.0");
    return c;
}

void draw_stretch(plot_surface& surface, int c, int y0, int y1, const QColor& color) {
    static const QColor black(Qt::black), white(Qt::white);
    const QColor* pen = &color;
    if (y0 == plot_top && y1 == plot_top) pen = &black;
    if (y0 == plot_bottom && y1 == plot_bottom) pen = &white;
    const QLine l(c + plot_left - 1, y0, c + plot_left, y1);
    surface.lines(std::span(&l, 1), *pen);
}

void timed_value_text(QString& out, double value, bool percent_t) {
    format_text(out, value, percent_t ? "##0.00" : "#0.000");
    out += percent_t ? QStringLiteral("%T") : QStringLiteral("A");
}

QString range_problem(double low, double high, bool percent_t) {
    if (percent_t && high - low < 0.01) return QStringLiteral("High vaule - low value must >=0.01!");
    if (!percent_t && high - low < 0.001) return QStringLiteral("High vaule - low value must >=0.001!");
    return {};
}

} // namespace lumora
