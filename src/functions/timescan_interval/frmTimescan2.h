#pragma once
// "Timescan-Fixed interval": the reading at one wavelength every interval until a stop time. The
// grid "Read data" is the store, a row a sample; the plot shows it by pages of 280 steps, paged by
// "Prev. screen" and "Next screen".
#include "functions/function_window.h"

#include <array>
#include <cstdint>

class QLabel;
class QPushButton;
class QScrollArea;
class QTabBar;

namespace lumora {

class grid;
class plot_surface;

class frmTimescan2 : public function_window {
    Q_OBJECT
public:
    explicit frmTimescan2(const function_entry& entry, QWidget* parent = nullptr);
    ~frmTimescan2() override;

    void init();
    void init_data_area();
    void clear_form();
    void set_form_visible(bool visible) override;
    void read();
    void zero();
    void show_zero();
    void show_data(std::int32_t raw);
    void draw_data(int k);
    void draw_data_page(int column);
    void stop_now();
    void set_track(bool visible);
    void zoom_auto();
    void zoom_data();
    void cmdPage_Click(int index);
    void draw_frame();
    void table_row_click(int row);
    void picTimescan_MouseMove(QPoint pos);

    void run(toolbar_routine routine) override;
    bool has_data() const override;
    QDialog* make_setup_dialog(QWidget* parent) override;
    // Stored batches (timescan_interval_batches.cpp)
    bool keeps_batches() const override { return true; }
    std::vector<batch_row> result_rows() const override;
    std::vector<batch_row> parameter_rows() const override;
    void load_result(const std::vector<batch_row>& rows) override;
    void read_parameters(const std::vector<batch_row>& rows) override;
    void parameters_loaded() override;

    plot_surface& picTimescan() const { return *surface_; }
    grid& fgdTrack() const { return *table_; }
    QLabel* lblValue() const { return label_; }
    QPushButton* cmdPage(int index) const { return pages_[static_cast<std::size_t>(index)]; }
    QTabBar* tspData() const { return tabs_; }
    int page_shown() const { return page_shown_; }

private:
    // The value of sample `k` as its cell holds it.
    double cell_value(int k) const;
    void describe_plot();

    plot_surface* surface_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    QLabel* label_ = nullptr;
    grid* table_ = nullptr;
    QTabBar* tabs_ = nullptr;
    std::array<QPushButton*, 2> pages_{};
    std::int16_t page_shown_ = 0;
    QString time_text_, value_text_;
};

} // namespace lumora
