#pragma once
// "Verify Bandwidth": the instrument scans the lamp's 656.1 nm emission line in 79 points 0.36 nm
// apart; the window plots them and measures the line's width at half height, which is the
// spectral bandwidth of the instrument.
#include "functions/function_window.h"
#include "plot/plot_view.h"
#include "system_rules.h"

#include <array>
#include <cstdint>
#include <optional>

class QScrollArea;

namespace lumora {

class plot_surface;

constexpr int verify_curve_size = 281;

class frmVerify : public function_window {
    Q_OBJECT
public:
    explicit frmVerify(const function_entry& entry, QWidget* parent = nullptr);
    ~frmVerify() override;

    void read_656();
    // One point of the scan; the 79th and any after it start the evaluation. A point past the
    // array's end, and an evaluation that cannot be done, are run-time faults (run_fault): they end
    // that point's handling, and the decoder takes them.
    void show_data(std::int32_t intensity);
    void show_bandwidth();
    void init_verify();
    void draw_data();

    void run(toolbar_routine routine) override;

    plot_surface& picVerify() const { return *surface_; }
    const verify_points_array& verify_raw() const { return verify_raw_; }
    const std::array<double, verify_curve_size>& verify_curve() const { return verify_curve_; }
    std::int16_t verify_points() const { return verify_points_; }
    double lambda_before() const { return lambda_before_; }
    // The last evaluation that came through, empty before one or after a fault.
    const std::optional<bandwidth_result>& bandwidth() const { return result_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void set_plot_limits();
    void Form_Unload();

    plot_surface* surface_ = nullptr;
    QScrollArea* scroll_ = nullptr;
    plot_view view_;
    verify_points_array verify_raw_{};
    std::array<double, verify_curve_size> verify_curve_{};
    std::int16_t verify_points_ = 0;
    double lambda_before_ = 0;
    std::optional<bandwidth_result> result_;
};

} // namespace lumora
