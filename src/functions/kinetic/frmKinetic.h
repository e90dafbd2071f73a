#pragma once
// "Kinetic": the absorbance at one wavelength through a reaction, 281 samples on the frame clock
// around the rate stretch, a straight line through the fit points and the rate per minute under
// the plot. Each finished run adds a row to the output table, which later Reads keep.
#include "functions/function_window.h"
#include "processing/rate_stats.h"

#include <array>
#include <cstdint>

class QLabel;
class QPushButton;
class QScrollArea;
class QTabBar;

namespace lumora {

class grid;
class plot_surface;

class frmKinetic : public function_window {
    Q_OBJECT
public:
    explicit frmKinetic(const function_entry& entry, QWidget* parent = nullptr);
    ~frmKinetic() override;

    void init();
    void init_data_area();
    void clear_form();
    void set_form_visible(bool visible) override;
    void read();
    void zero();
    void show_zero();
    void show_data(std::int32_t raw);
    void draw_data(int k);
    void draw_cross(int n);
    void calculate();
    void draw_linear_fit();
    void set_track(bool visible);
    void zoom_auto();
    void zoom_data();
    void stop_ok();
    void stop_kinetic();
    void draw_frame();
    void table_row_click(int table, int row);
    // The mouse on the plot: a right click tracks the sample under it, a move reads it out.
    void plot_pressed(QPoint pos, Qt::MouseButton button);
    void plot_moved(QPoint pos);
    // How straight the rate window was, beside the rate: its standard error and R^2.
    const processing::rate_stats& rate_statistics() const { return rate_stats_; }
    // "Linear range": the longest straight stretch of the finished run, offered as the rate
    // window of the next Read.
    void linear_range();

    void run(toolbar_routine routine) override;
    bool has_data() const override;
    QDialog* make_setup_dialog(QWidget* parent) override;

    // Stored batches (kinetic_batches.cpp)
    bool keeps_batches() const override { return true; }
    bool batch_data() const override;
    std::vector<batch_row> result_rows() const override;
    std::vector<batch_row> parameter_rows() const override;
    void load_result(const std::vector<batch_row>& rows) override;
    void read_parameters(const std::vector<batch_row>& rows) override;
    void parameters_loaded() override;

    plot_surface& picKinetic() const { return *surface_; }
    grid& fgdTrack() const { return *tables_[0]; }
    grid& fgdPeak() const { return *tables_[1]; }
    grid& fgdValley() const { return *tables_[2]; }
    QLabel* lblValue(int index) const { return labels_[static_cast<std::size_t>(index)]; }
    QTabBar* tspData() const { return tabs_; }
    QLabel* lblRateStats() const { return rate_label_; }
    QPushButton* cmdLinearRange() const { return linear_range_; }

private:
    void show_table(int index);
    void write_outputs();
    void describe_plot();

    plot_surface* surface_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    std::array<QLabel*, 2> labels_{};
    std::array<grid*, 3> tables_{};
    std::array<QWidget*, 3> frames_{};
    QTabBar* tabs_ = nullptr;
    bool tracking_ = false;
    QLabel* rate_label_ = nullptr;
    QPushButton* linear_range_ = nullptr;
    processing::rate_stats rate_stats_;
    void show_rate_stats();
    QString time_text_, value_text_; // panels 1 and 2, rewritten in place each sample
};

} // namespace lumora
