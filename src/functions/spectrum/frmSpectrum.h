#pragma once
// The Spectrum function's window: the plot square, the read-outs and the three result tables.
// A baseline is scanned with "Zero", each "Read" scans a sample; up to 20 curves stay in memory.
#include "functions/function_window.h"
#include "plot/curve_drawing.h"

#include <array>
#include <cstdint>

class QLabel;
class QScrollArea;
class QTabBar;

namespace lumora {

class grid;
class plot_surface;
class plot_tracking;

class frmSpectrum : public function_window {
    Q_OBJECT
public:
    explicit frmSpectrum(const function_entry& entry, QWidget* parent = nullptr);
    ~frmSpectrum() override;

    // Routines by name
    void init();
    void init_data_area();
    void clear_form();
    void set_form_visible(bool visible) override;
    void read();
    void read_base_line();
    void show_base_line(std::int32_t raw);
    void show_data(std::int32_t raw);
    void finish_scan();
    void stop_now() {}
    void stop_ok() {}
    void zoom_data();
    void draw_frame();
    // Peak and valley search on the active curve as shown; marks on the plot, rows in the tables.
    void search_peak();
    void search_valley();
    // The tool windows' work on the active curve.
    void smooth(int points);
    void derivative(int order);
    void DerivateDrawData();
    // A click on a table row flips its selection ("  V" selected, "  X" not).
    void table_row_click(int table, int row);

    void run(toolbar_routine routine) override;
    void curve_check() override;
    bool has_data() const override;
    QDialog* make_setup_dialog(QWidget* parent) override;
    // Stored batches (spectrum_batches.cpp)
    bool keeps_batches() const override { return true; }
    std::vector<batch_row> result_rows() const override;
    std::vector<batch_row> parameter_rows() const override;
    void load_result(const std::vector<batch_row>& rows) override;
    void read_parameters(const std::vector<batch_row>& rows) override;
    void parameters_loaded() override;

    plot_surface& picSpectrum() const { return *surface_; }
    grid& fgdTrack() const { return *tables_[0]; }
    grid& fgdPeak() const { return *tables_[1]; }
    grid& fgdValley() const { return *tables_[2]; }
    QLabel* lblValue(int index) const { return labels_[static_cast<std::size_t>(index)]; }
    QTabBar* tspData() const { return tabs_; }

    plot_tracking& tracking() const { return *tracking_; }
    void set_track(bool visible);

private:
    axes_text axes() const;
    void show_table(int index);
    void hide_tracks();
    // The plot's accessible name and description, after each change of the picture.
    void describe_plot();

    plot_surface* surface_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    std::array<QLabel*, 2> labels_{};
    std::array<grid*, 3> tables_{};
    std::array<QWidget*, 3> frames_{};
    QTabBar* tabs_ = nullptr;
    plot_tracking* tracking_ = nullptr;
    int derivative_shown_ = 0; // the order the derivative window shows; 0 once a redraw cleared it
};

} // namespace lumora
