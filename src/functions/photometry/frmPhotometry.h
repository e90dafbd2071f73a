#pragma once
// The Photometry function's window: one grid, a row per cycle and a column per wavelength, and
// column R when the equation is on. Zero takes one reading per wavelength as the new references;
// Read takes ph_cycle_number cycles, continuing where the grid stands.
#include "functions/function_window.h"

#include <QTimer>
#include <cstdint>

namespace lumora {

class grid;

class frmPhotometry : public function_window {
    Q_OBJECT
public:
    explicit frmPhotometry(const function_entry& entry, QWidget* parent = nullptr);
    ~frmPhotometry() override;

    // Routines by name
    void set_form_visible(bool visible) override;
    void clear_form();
    void read();
    void zero();
    void show_data(std::int32_t value);
    bool show_now_abs(std::int32_t value);
    void check_complete();
    void stop_now();
    // A click on grid row r flips the selection of a full row.
    void fgdData_Click(int row);

    void run(toolbar_routine routine) override;
    void set_zero_flag(bool zeroing) override;
    bool has_data() const override;
    QDialog* make_setup_dialog(QWidget* parent) override;
    // Stored batches (photometry_batches.cpp)
    bool keeps_batches() const override { return true; }
    std::vector<batch_row> result_rows() const override;
    std::vector<batch_row> parameter_rows() const override;
    void load_result(const std::vector<batch_row>& rows) override;
    void read_parameters(const std::vector<batch_row>& rows) override;
    void parameters_loaded() override;

    grid& fgdData() const { return *grid_; }
    // The wait between two cycles: frames that come meanwhile are ignored. cycle_wait_end is what
    // the single-shot timer runs; the window's owner may run it early (tests on a virtual clock).
    bool cycle_waiting() const { return cycle_timer_.isActive(); }
    void cycle_wait_end();

private:
    // Steps 3 and 4 of a reading's start: the row's mark and the move to its wavelength.
    void start_reading();
    void move_to_column(int column);
    // A reading's cell, right aligned as its column.
    void set_number(int row, int col, const QString& text);

    grid* grid_ = nullptr;
    QTimer cycle_timer_;
};

} // namespace lumora
