#pragma once
// "Timescan-Fixed span": the reading at one wavelength over a span of time, 281 samples a run,
// one per plot column; up to 20 runs overlay. The frames of the instrument are the clock.
#include "functions/function_window.h"

#include <array>
#include <cstdint>

class QLabel;
class QScrollArea;
class QTabBar;

namespace lumora {

class grid;
class plot_surface;
class plot_tracking;

class frmTimescan : public function_window {
    Q_OBJECT
public:
    explicit frmTimescan(const function_entry& entry, QWidget* parent = nullptr);
    ~frmTimescan() override;

    void init();
    void init_data_area();
    void clear_form();
    void set_form_visible(bool visible) override;
    void read();
    void zero();
    void show_zero();
    void show_data(std::int32_t raw);
    void draw_data(int k);
    void stop_ok();
    void stop_now();
    void set_track(bool visible);
    void zoom_auto();
    void zoom_data();
    void smooth_data();
    void search_peak();
    void search_valley();
    void draw_frame();
    void table_row_click(int table, int row);

    void run(toolbar_routine routine) override;
    void curve_check() override;
    bool has_data() const override;
    QDialog* make_setup_dialog(QWidget* parent) override;
    // Stored batches (timescan_batches.cpp)
    bool keeps_batches() const override { return true; }
    std::vector<batch_row> result_rows() const override;
    std::vector<batch_row> parameter_rows() const override;
    void load_result(const std::vector<batch_row>& rows) override;
    void read_parameters(const std::vector<batch_row>& rows) override;
    void parameters_loaded() override;

    plot_surface& picTimescan() const { return *surface_; }
    grid& fgdTrack() const { return *tables_[0]; }
    grid& fgdPeak() const { return *tables_[1]; }
    grid& fgdValley() const { return *tables_[2]; }
    QLabel* lblValue(int index) const { return labels_[static_cast<std::size_t>(index)]; }
    QTabBar* tspData() const { return tabs_; }
    plot_tracking& tracking() const { return *tracking_; }

private:
    void show_table(int index);
    void describe_plot();

    plot_surface* surface_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    std::array<QLabel*, 2> labels_{};
    std::array<grid*, 3> tables_{};
    std::array<QWidget*, 3> frames_{};
    QTabBar* tabs_ = nullptr;
    plot_tracking* tracking_ = nullptr;
    QString time_text_, value_text_; // panels 1 and 2, rewritten in place each sample
};

} // namespace lumora
