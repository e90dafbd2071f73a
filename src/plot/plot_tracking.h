#pragma once
// The mouse on a curve window's plot: the rubber band that zooms, the cross-hair that reads the
// active curve, and track points (a right click, or a wavelength typed after a click on the
// read-out) written to the window's track table with a small mark on the curve.
//
// The window owns the surface, the view, the table, the two read-out labels and the track
// records; this class only works on them. Units and formats come in through tracking_config,
// so the time-based windows can use it with their own captions.
#include "plot_view.h"

#include "processing/peak_search.h"
#include <QObject>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>
#include <functional>

class QLabel;

namespace lumora {

class grid;
class plot_surface;

// A table row's record (flag -1 selected, the plot column 0..280, the Y pixel), shared with the
// peak and valley marks.
using mark = processing::mark;

constexpr int track_limit = 100;

struct track_state {
    std::int16_t track_count = 0; // filled rows of the track table, held at 100
    // Index track_count is written before the count is held, so a typed point at 100 rows
    // takes record 100.
    std::array<mark, track_limit + 1> track_marks{};
    std::array<mark, track_limit + 1> derivative_track_marks{};
};

// What the derivative window shows, when it shows anything (order 1 or more).
struct derivative_display {
    std::int16_t order = 0;
    const std::array<double, plot_columns>* screen_derivative = nullptr;
    double high = 0, low = 0; // the derivative window's Y range
};

struct tracking_config {
    QString x_name = QStringLiteral("WL= ");     // the cross-hair's X read-out
    QString idle_x_name = QStringLiteral("WL="); // the read-out when the axes are redrawn
    QString idle_data = QStringLiteral("Data=0.0000");
    const char* x_readout = "###0.00nm  "; // X1=, X2=, and the cross-hair
    const char* x_cell = "###0.00nm";      // X in the track table
    const char* band_value = "#0.0000";    // Y1=, Y2=
    const char* data_value = "#0.0000";    // Data= and Derivative Data=
    const char* cell_value = "#0.0000";    // the value columns of the track table
    QString cell_suffix;                   // after the value in the table
    bool number_first = false;             // row label "1  V" rather than "  V1"
    QStringList heads{QStringLiteral("No."), QStringLiteral("Lambda"), QStringLiteral("Value")};
    QString derivative_head = QStringLiteral("D-Value");
    QString input_prompt = QStringLiteral("Input the wavelength(nm):\nExample:450.0");
    QString input_title = QStringLiteral("Lumora");
};

// Spectrum's read-outs in ABS or %T.
tracking_config spectrum_tracking(bool percent_t);

struct tracking_hooks {
    std::function<bool()> locked;                   // the toolbar is in its running state
    std::function<void()> zoom;                     // zoom_cursor, then zoom_data
    std::function<derivative_display()> derivative; // empty: no derivative window
    std::function<void()> track_restart;            // after "restart from 1" was answered OK
};

class plot_tracking : public QObject {
    Q_OBJECT
public:
    plot_tracking(plot_surface& surface, plot_view& view, grid& fgdTrack, QLabel& value0, QLabel& value1,
                  track_state& tracks, tracking_config config, QObject* parent = nullptr);

    tracking_hooks hooks;
    void set_config(tracking_config config) { config_ = std::move(config); }
    const tracking_config& config() const { return config_; }

    // Shows or hides the cross-hair: white lines at column 200 and row 160, and the derivative
    // window's line only while a derivative is shown.
    void set_track(bool visible);
    // A derivative has just been drawn: the derivative window's line shows, in the column of the
    // cross-hair, which itself does not move.
    void show_derivative_line();
    // lblValue(0) back to its text of an empty view ("WL=" the start and "Data=" the idle value),
    // lblValue(1) emptied; the window calls this with each redraw of the axes.
    void reset_readout(double start_x);

    // The mouse on the plot, in logical pixels. The surface's signals come here.
    void mouse_down(QPoint pos, Qt::MouseButton button);
    void mouse_move(QPoint pos);
    void mouse_up(QPoint pos, Qt::MouseButton button);
    // A click on lblValue(0), or Enter or Space while it has the focus: asks for a wavelength and
    // tracks it.
    void lblValue_Click();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool is_locked() const { return hooks.locked && hooks.locked(); }
    derivative_display derivative() const;
    void move_cross_hair(int x);
    void add_track_row(int x, bool ask_at_limit);
    void band_readout(QLabel& label, const char* x_name, const char* y_name, QPoint pos);

    plot_surface& surface_;
    plot_view& view_;
    grid& table_;
    QLabel& value0_;
    QLabel& value1_;
    track_state& tracks_;
    tracking_config config_;
};

} // namespace lumora
