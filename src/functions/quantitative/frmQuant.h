#pragma once
// The Quantitative function's window: the calibration plot beside the standards and the samples.
// "Zero" zeroes on the blank at the wavelength, "Read" reads the next standard while standards
// are due and the next sample after that; each sample's Conc. comes from the calibration.
#include "functions/function_window.h"
#include "functions/stats_panel.h"
#include "processing/calibration_stats.h"

#include <QPointer>
#include <array>
#include <cstdint>

class QTabBar;
class QScrollArea;

namespace lumora {

class dlgQuant;
class grid;
class plot_surface;
class stats_panel;

class frmQuant : public function_window {
    Q_OBJECT
public:
    explicit frmQuant(const function_entry& entry, QWidget* parent = nullptr);
    ~frmQuant() override;

    // Routines by name
    void init_data_area();
    void clear_form();
    void set_form_visible(bool visible) override;
    void zero();
    void read_standard();
    void read_sample();
    void show_zero(std::int32_t value);
    void show_data(std::int32_t mean);
    void load_old_data();
    // A click on a sample row up to the count flips its valid flag.
    void fgdSample_Click(int row);

    void run(toolbar_routine routine) override;
    bool batch_check() override;
    bool has_data() const override;
    QDialog* make_setup_dialog(QWidget* parent) override;
    // Stored batches (quant_batches.cpp)
    bool keeps_batches() const override { return true; }
    bool batch_data() const override;
    std::vector<batch_row> result_rows() const override;
    std::vector<batch_row> parameter_rows() const override;
    void load_result(const std::vector<batch_row>& rows) override;
    void read_parameters(const std::vector<batch_row>& rows) override;
    void parameters_loaded() override;

    plot_surface& picQuant() const { return *surface_; }
    grid& fgdData() const { return *tables_[0]; }
    grid& fgdSample() const { return *tables_[1]; }
    QTabBar* tspData() const { return tabs_; }
    stats_panel& Statistics() const { return *stats_; }

    // The statistics of the calibration in force with the weighting chosen on the tab, and a
    // sample's concentration with its prediction interval (row 1..sample_count).
    calibration_stats statistics() const;
    sample_prediction prediction(const calibration_stats& s, int row) const;
    // Every sample's prediction under its row's label, in the order of the table.
    std::vector<labelled_prediction> sample_predictions(const calibration_stats& s) const;
    // The tab and the sample table's statistics columns, after anything that changes either.
    void update_statistics();

private:
    // The step after a reading: the toolbar back, and after the last standard the calibration.
    void advance_run();
    // The fit of `fit_type` on the set; "Invalid input!" when it fails.
    bool fit(int fit_type);
    // Limits from the standards table, curve, crosses and equation.
    void draw_calibration(bool from_table);
    void draw_frame();
    void sample_headers();
    void show_table(int index);
    void tell_next_step();
    void describe_plot();

    plot_surface* surface_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    std::array<grid*, 2> tables_{};
    std::array<QWidget*, 3> frames_{}; // the two tables and the statistics
    stats_panel* stats_ = nullptr;
    QTabBar* tabs_ = nullptr;
    QPointer<dlgQuant> setup_;
};

} // namespace lumora
