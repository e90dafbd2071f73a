#pragma once
// The Protein function's window: the calibration plot above the difference plot, beside the
// standards and the samples. Every standard and every sample is read a set number of times; each
// group gets an average row, and from three replicates on its spread as %CV.
#include "functions/function_window.h"
#include "functions/stats_panel.h"
#include "processing/calibration_stats.h"

#include <QPointer>
#include <array>
#include <cstdint>

class QTabBar;
class QScrollArea;

namespace lumora {

class dlgProtein;
class grid;
class plot_surface;
class stats_panel;

class frmProtein : public function_window {
    Q_OBJECT
public:
    explicit frmProtein(const function_entry& entry, QWidget* parent = nullptr);
    ~frmProtein() override;

    // Routines by name
    void init_data_area();
    void clear_form();
    void set_form_visible(bool visible) override;
    void zero();
    void read_standard();
    void read_sample();
    void show_zero(std::int32_t value);
    void show_data(std::int32_t mean);
    // Both plot frames, then the curve, the marks and the equation as the calibration stands.
    void DiffDrawWindow();

    enum class refit_result { done, invalid_input, fault };
    // The fit of what stands in the standards table and its follow-up: Cal-Conc., Diff and %CV,
    // the limits and both plots. "Invalid input!" when the fit fails; a fault (a standard of Conc.
    // 0 meeting its %CV) ends it with the columns written so far.
    refit_result refit_standards();

    void run(toolbar_routine routine) override;
    bool batch_check() override { return true; }
    bool has_data() const override;
    QDialog* make_setup_dialog(QWidget* parent) override;
    // Stored batches (protein_batches.cpp)
    bool keeps_batches() const override { return true; }
    bool batch_data() const override;
    std::vector<batch_row> result_rows() const override;
    std::vector<batch_row> parameter_rows() const override;
    void load_result(const std::vector<batch_row>& rows) override;
    void read_parameters(const std::vector<batch_row>& rows) override;
    void parameters_loaded() override;

    plot_surface& picProtein() const { return *surface_; }
    QScrollArea* PicScroll() const { return scroll_; }
    grid& fgdData() const { return *tables_[0]; }
    grid& fgdSample() const { return *tables_[1]; }
    QTabBar* tspData() const { return tabs_; }
    stats_panel& Statistics() const { return *stats_; }

    // The statistics of the calibration over every replicate reading of the standards, with the
    // weighting chosen on the tab; a sample's concentration from the mean of its replicates with
    // its prediction interval, on the sample's average row.
    calibration_stats statistics() const;
    sample_prediction prediction(const calibration_stats& s, int average_row) const;
    // Every sample's prediction under its row's label, in the order of the table.
    std::vector<labelled_prediction> sample_predictions(const calibration_stats& s) const;
    // The tab and the sample table's statistics columns, after anything that changes either.
    void update_statistics();

private:
    void advance_run();
    void draw_marks();
    void show_table(int index);
    void describe_plot();

    plot_surface* surface_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    std::array<grid*, 2> tables_{};
    std::array<QWidget*, 3> frames_{}; // the two tables and the statistics
    stats_panel* stats_ = nullptr;
    QTabBar* tabs_ = nullptr;
    QPointer<dlgProtein> setup_;
    bool fitted_ = false; // the calibration's curve is drawn by DiffDrawWindow
};

} // namespace lumora
